#include <arrow/buffer.h>

#include <array>
#include <iostream>

#include "numera/extras/own/own.h"
#include "numera/numera.h"

// Right: a shared copy of the envelope is given away, so the memory of the buffer has an owner that
// nobody writes to. The writer takes memory of its own and the buffer keeps its bytes.
int main() {
  const std::array<size_t, 2> dims = {3, 1};
  hxArrayPtr bytes = hxCreateNumericArray(dims, hxClassID::UInt8, hxComplexity::Real);
  const std::array<const char*, 2> names = {"ArrowType", "Values"};
  const std::array<size_t, 2> one = {1, 1};
  const hxArrayPtr envelope = hxCreateStructArray(one, names);
  hxSetField(envelope.get(), 0, "ArrowType", hxCreateCharArray("buffer", 6));
  hxSetField(envelope.get(), 0, "Values", hxSharedCopy(bytes.get()));

  const auto buffer =
      numera::extras::own_to_arrow<arrow::Buffer>(hxSharedCopy(envelope.get())).ValueOrDie();
  static_cast<unsigned char*>(hxGetData(bytes.get()))[0] = 7;
  bytes.reset();
  std::cout << int{buffer->data()[0]} << '\n';
}
