#include "numera/core/encoded_table.h"

#include <arrow/type.h>

#include <utility>

#include "numera/core/dispatch.h"
#include "numera/core/messages.h"
#include "numera/core/util/table_error.h"
#include "numera/format/records.h"

namespace numera::io::arrow::core {
namespace {

hxArrayPtr field_names(const ::arrow::Schema& schema) {
  hxArrayPtr names = format::make_cell(1, static_cast<size_t>(schema.num_fields()));
  size_t i = 0;
  for (const auto& field : schema.fields()) {
    hxSetCell(names.get(), i++, format::make_char_row_from_utf8(field->name()));
  }
  return names;
}

}  // namespace

::arrow::Result<EncodedTable> begin_encoded_table(const ::arrow::Table* table) {
  if (table == nullptr) {
    return ::arrow::Status::Invalid("Received null pointer in arrow::Table conversion");
  }
  if (table->schema() == nullptr) return messages::no_schema();
  const ::arrow::Schema& schema = *table->schema();
  const size_t count = table->columns().size();
  if (std::cmp_not_equal(count, schema.num_fields())) {
    return messages::wrong_column_count(static_cast<std::int64_t>(count), schema.num_fields());
  }
  hxArrayPtr envelope = format::make_struct(1, format::kTable);
  hxSetField(envelope.get(), 0, format::kArrowType, format::make_word(format::kTableKind));
  hxSetField(envelope.get(), 0, format::kNames, field_names(schema));
  hxArrayPtr columns = format::make_struct(count, format::kTableColumns);
  EncodedTable encoded{std::move(envelope), columns.get()};
  hxSetField(encoded.envelope.get(), 0, format::kColumns, std::move(columns));
  return encoded;
}

::arrow::Result<EncodedColumn> encode_column(const ::arrow::Table& table, int i) {
  auto column = encode_checked(table.columns()[static_cast<size_t>(i)].get());
  if (!column.ok()) return util::in_column(column.status(), table.schema()->field(i)->name(), i);
  return column;
}

void put_column(EncodedTable& table, int i, EncodedColumn column) {
  put_fields(table.columns, static_cast<size_t>(i), std::move(column));
}

}  // namespace numera::io::arrow::core
