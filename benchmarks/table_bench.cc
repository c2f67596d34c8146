// Tables of many columns, both ways.

#include <arrow/table.h>

#include <memory>
#include <string>
#include <vector>

#include "benchmarks/arrow_data.h"
#include "benchmarks/limits.h"
#include "benchmarks/rows.h"
#include "numera/numera.h"

namespace numera::benchmarks {
namespace {

namespace core = numera::io::arrow::core;

using TablePtr = std::shared_ptr<::arrow::Table>;

constexpr int kColumns = 1000;
constexpr std::int64_t kRows = 1000;

TablePtr wide_table() {
  ::arrow::FieldVector fields;
  ::arrow::ArrayVector columns;
  for (int i = 0; i < kColumns; ++i) {
    fields.push_back(::arrow::field("column " + std::to_string(i), ::arrow::float64()));
    columns.push_back(doubles(kRows));
  }
  return ::arrow::Table::Make(::arrow::schema(fields), columns);
}

std::vector<hxArrayPtr> copy_columns(const TablePtr& table) {
  std::vector<hxArrayPtr> copies;
  for (const ColumnPtr& column : table->columns()) {
    const auto& numbers = static_cast<const ::arrow::DoubleArray&>(*column->chunk(0));
    copies.push_back(copied(value_bytes(numbers), hxClassID::Double));
  }
  return copies;
}

/// A table over the same memory, whose schema is there already.
struct EncodedTable {
  std::shared_ptr<::arrow::Schema> schema;
  hxArrayPtr encoded;
};

EncodedTable encoded_table() {
  const TablePtr table = wide_table();
  return {table->schema(), core::to_numera(table).ValueOrDie()};
}

TablePtr wrap_columns(const EncodedTable& input) {
  const hxArray* const columns = hxGetField(input.encoded.get(), 0, "Columns");
  ::arrow::ArrayVector arrays;
  for (size_t i = 0; i < size_t{kColumns}; ++i) {
    const hxArray* const data = hxGetField(columns, i, "Data");
    const auto* const values = static_cast<const std::uint8_t*>(hxGetData(data));
    arrays.push_back(std::make_shared<::arrow::DoubleArray>(
        kRows, std::make_shared<::arrow::Buffer>(values, kRows * 8)));
  }
  return ::arrow::Table::Make(input.schema, arrays);
}

}  // namespace

void add_table_rows() {
  add_row(
      "to_host/table_1000_columns", wide_table,
      [](const TablePtr& table) { return core::to_numera(table).ValueOrDie(); }, copy_columns);
  add_row(
      "to_arrow/table_1000_columns", encoded_table,
      [](const EncodedTable& input) {
        return core::to_arrow_table(input.encoded.get()).ValueOrDie();
      },
      wrap_columns);
}

}  // namespace numera::benchmarks
