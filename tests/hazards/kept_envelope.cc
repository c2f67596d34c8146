#include <arrow/array.h>

#include <array>
#include <iostream>
#include <memory>
#include <utility>

#include "numera/extras/encode/encode.h"
#include "numera/extras/own/own.h"
#include "numera/numera.h"

// Right: own_to_arrow takes the envelope, which lives as long as any buffer of the result.
std::shared_ptr<arrow::DoubleArray> numbers() {
  const std::array<size_t, 2> dims = {3, 1};
  const hxArrayPtr column = hxCreateNumericArray(dims, hxClassID::Double, hxComplexity::Real);
  hxArrayPtr envelope = numera::extras::make_readable(column.get()).ValueOrDie();
  const auto array = numera::extras::own_to_arrow<arrow::Array>(std::move(envelope)).ValueOrDie();
  return std::static_pointer_cast<arrow::DoubleArray>(array);
}

int main() { std::cout << numbers()->Value(0) << '\n'; }
