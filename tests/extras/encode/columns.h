#pragma once

/// \file
/// Columns of every type that reaches the host and returns.

#include <arrow/api.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace numera::testing {

struct ColumnType {
  std::shared_ptr<::arrow::DataType> type;
  std::string json;       ///< three or more elements, one of them null
  std::string more_json;  ///< other values; a length that leaves the next chunk between two bytes
};

std::vector<ColumnType> column_types();

/// Puts an array into another type.
using Nest = std::function<std::shared_ptr<::arrow::Array>(std::shared_ptr<::arrow::Array>)>;

/// A list, a large list, a struct and a map, each with nulls of its own.
std::vector<Nest> nestings();

}  // namespace numera::testing
