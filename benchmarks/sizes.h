#pragma once

/// \file
/// The size of the values of an input in bytes.

#include <arrow/array.h>
#include <arrow/chunked_array.h>
#include <arrow/table.h>

#include <cstdint>
#include <memory>

#include "numera/host/array.h"

namespace numera::benchmarks {

using ArrayPtr = std::shared_ptr<::arrow::Array>;
using ColumnPtr = std::shared_ptr<::arrow::ChunkedArray>;
using TablePtr = std::shared_ptr<::arrow::Table>;

std::int64_t bytes_of(const ArrayPtr& array);
std::int64_t bytes_of(const ColumnPtr& column);
std::int64_t bytes_of(const TablePtr& table);

std::int64_t elements_of(const TablePtr& table);  ///< of all columns

/// The bytes of all numbers, booleans, characters and code units of string arrays, at every depth.
std::int64_t bytes_of(const hxArrayPtr& value);

}  // namespace numera::benchmarks
