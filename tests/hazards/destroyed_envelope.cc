#include <arrow/array.h>

#include <array>
#include <iostream>
#include <memory>

#include "numera/extras/encode/encode.h"
#include "numera/numera.h"

// Wrong: the result of to_arrow points into an envelope that is destroyed before the result is
// read.
std::shared_ptr<arrow::DoubleArray> numbers() {
  const std::array<size_t, 2> dims = {3, 1};
  const hxArrayPtr column = hxCreateNumericArray(dims, hxClassID::Double, hxComplexity::Real);
  const hxArrayPtr envelope = numera::extras::make_readable(column.get()).ValueOrDie();
  const auto array = numera::io::arrow::core::to_arrow<arrow::Array>(envelope.get()).ValueOrDie();
  return std::static_pointer_cast<arrow::DoubleArray>(array);
}

int main() { std::cout << numbers()->Value(0) << '\n'; }
