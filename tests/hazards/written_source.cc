#include <arrow/buffer.h>

#include <array>
#include <iostream>
#include <utility>

#include "numera/numera.h"

// Wrong: a writable hxGetData gives a shared array memory of its own. The buffer stays with the old
// memory, which goes with the last array that shared it.
int main() {
  const std::array<size_t, 2> dims = {3, 1};
  hxArrayPtr bytes = hxCreateNumericArray(dims, hxClassID::UInt8, hxComplexity::Real);
  hxArrayPtr copy = hxSharedCopy(bytes.get());
  const std::array<const char*, 2> names = {"ArrowType", "Values"};
  const std::array<size_t, 2> one = {1, 1};
  const hxArrayPtr envelope = hxCreateStructArray(one, names);
  hxArray* const source = bytes.get();  // storing an array keeps its address
  hxSetField(envelope.get(), 0, "ArrowType", hxCreateCharArray("buffer", 6));
  hxSetField(envelope.get(), 0, "Values", std::move(bytes));

  const auto buffer = numera::io::arrow::core::to_arrow<arrow::Buffer>(envelope.get()).ValueOrDie();
  static_cast<unsigned char*>(hxGetData(source))[0] = 7;
  copy.reset();
  std::cout << int{buffer->data()[0]} << '\n';
}
