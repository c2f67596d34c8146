#pragma once

/// \file
/// Helpers for the tests of text columns that go to the host.

#include <arrow/array/array_base.h>
#include <arrow/chunked_array.h>
#include <arrow/status.h>
#include <arrow/type.h>

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "numera/core/to_numera.h"
#include "tests/support/offset_arrays.h"
#include "tests/support/results.h"

namespace numera::testing {

inline const std::shared_ptr<::arrow::DataType> kTextTypes[] = {::arrow::utf8(),
                                                                ::arrow::large_utf8()};

inline ::arrow::Status RowFailure(int row) {
  return ::arrow::Status::Invalid("Could not convert string in row ", row, " to UTF-16 string.\n");
}

/// A text array of the given type over these bytes and offsets.
inline std::shared_ptr<::arrow::Array> Texts(const std::shared_ptr<::arrow::DataType>& type,
                                             std::string_view bytes,
                                             const std::vector<std::int32_t>& offsets) {
  return type->id() == ::arrow::Type::STRING
             ? NarrowArray(type, bytes, offsets)
             : LargeArray(type, bytes, {offsets.begin(), offsets.end()});
}

}  // namespace numera::testing
