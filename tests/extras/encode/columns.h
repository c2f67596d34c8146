#pragma once

/// \file
/// Columns of every type that converts to the host and back.

#include <arrow/api.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace numera::testing {

struct ColumnType {
  std::shared_ptr<::arrow::DataType> type;
  std::string json;       ///< three or more elements, one of them null
  std::string more_json;  ///< other values; their number is no multiple of 8
};

std::vector<ColumnType> column_types();

/// Wraps an array in another type.
using Nest = std::function<std::shared_ptr<::arrow::Array>(std::shared_ptr<::arrow::Array>)>;

/// Wraps in a list, a large list, a struct and a map; each adds nulls of its own.
std::vector<Nest> nestings();

}  // namespace numera::testing
