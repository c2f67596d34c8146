#pragma once

/// \file
/// Tables with a column of every type that the host can hold, plain and nested. A test that
/// includes this header must compile tests/extras/encode/columns.cc.

#include <arrow/api.h>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tests/extras/encode/columns.h"
#include "tests/support/arrow_values.h"

namespace numera::testing {

using Chunks = std::shared_ptr<::arrow::ChunkedArray>;

/// Columns named "c0", "c1" and so on.
inline std::shared_ptr<::arrow::Table> table_of(std::vector<Chunks> columns) {
  ::arrow::FieldVector fields;
  for (const Chunks& column : columns) {
    fields.push_back(::arrow::field("c" + std::to_string(fields.size()), column->type()));
  }
  const std::int64_t rows = columns.empty() ? 0 : columns[0]->length();
  return ::arrow::Table::Make(::arrow::schema(std::move(fields)), std::move(columns), rows);
}

/// A column of two chunks.
inline Chunks plain_column(const ColumnType& one) {
  return ArrowChunks(one.type, {one.json, one.more_json});
}

/// The same column in each nesting.
inline std::vector<Chunks> nested_columns(const ColumnType& one) {
  const Chunks plain = plain_column(one);
  std::vector<Chunks> columns;
  for (const Nest& nest : nestings()) {
    columns.push_back(std::make_shared<::arrow::ChunkedArray>(
        ::arrow::ArrayVector{nest(plain->chunk(0)), nest(plain->chunk(1))}));
  }
  return columns;
}

/// The column, repeated up to `rows` elements.
inline Chunks repeated(const Chunks& column, std::int64_t rows) {
  ::arrow::ArrayVector chunks;
  for (std::int64_t length = 0; length < rows; length += column->length()) {
    chunks.insert(chunks.end(), column->chunks().begin(), column->chunks().end());
  }
  return ::arrow::ChunkedArray(std::move(chunks), column->type()).Slice(0, rows);
}

/// A column of every type, plain and in every nesting. Columns share arrays.
inline std::shared_ptr<::arrow::Table> table_of_every_type() {
  constexpr std::int64_t kRows = 8;  // the length of the longest column
  std::vector<Chunks> columns;
  for (const ColumnType& one : column_types()) {
    columns.push_back(repeated(plain_column(one), kRows));
    for (const Chunks& nested : nested_columns(one)) columns.push_back(repeated(nested, kRows));
  }
  return table_of(std::move(columns));
}

inline bool columns_are_valid(const ::arrow::Table& table) {
  return std::ranges::all_of(table.columns(),
                             [](const Chunks& column) { return column->ValidateFull().ok(); });
}

}  // namespace numera::testing
