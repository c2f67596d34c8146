#pragma once

#include <arrow/array/array_base.h>
#include <arrow/type.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace numera::tools {

/// The values that the elements of a column stand for, and where they lie.
struct ElementRows {
  std::shared_ptr<::arrow::Array> values;  ///< of a type that `resolved_type` returns
  std::vector<std::int64_t> rows;          ///< one row of `values` for each element but nulls
};

/// Follows codes, runs and extension types to the values. The column has passed `check_memory`.
ElementRows element_rows(std::shared_ptr<::arrow::Array> column);

/// The type of the values: neither dictionary nor run-end encoded nor an extension type.
std::shared_ptr<::arrow::DataType> resolved_type(std::shared_ptr<::arrow::DataType> type);

}  // namespace numera::tools
