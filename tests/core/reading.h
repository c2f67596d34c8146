#pragma once

#include <arrow/api.h>

#include <memory>

#include "numera/core/to_arrow.h"
#include "numera/host/array.h"

namespace numera::testing {

/// The Arrow array over the memory of an encoded column.
inline ::arrow::Result<std::shared_ptr<::arrow::Array>> Reading(const hxArrayPtr& encoded) {
  return io::arrow::core::to_arrow<::arrow::Array>(encoded.get());
}

inline ::arrow::Status StatusOfReading(const hxArrayPtr& encoded) {
  return Reading(encoded).status();
}

}  // namespace numera::testing
