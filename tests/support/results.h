#pragma once

#include <arrow/result.h>
#include <arrow/status.h>

#include <stdexcept>
#include <utility>

namespace numera::testing {

/// The value of a result. Throws `std::runtime_error` with the status text if there is none.
template <class T>
T ValueOf(::arrow::Result<T> result) {
  if (!result.ok()) throw std::runtime_error(result.status().ToString());
  return std::move(result).ValueUnsafe();
}

}  // namespace numera::testing
