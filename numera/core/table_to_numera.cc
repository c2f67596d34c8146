#include <arrow/type.h>

#include <memory>
#include <utility>

#include "numera/core/host_values.h"
#include "numera/core/messages.h"
#include "numera/core/to_numera.h"
#include "numera/core/util/table_error.h"

namespace numera::io::arrow::core {
namespace {

hxArrayPtr field_names(const ::arrow::Schema& schema) {
  const auto count = static_cast<size_t>(schema.num_fields());
  hxArrayPtr names = make_cell(1, count);
  for (size_t i = 0; i < count; ++i) {
    hxSetCell(names.get(), i, make_char_row_from_utf8(schema.field(static_cast<int>(i))->name()));
  }
  return names;
}

::arrow::Status name_column(const ::arrow::Status& status, const ::arrow::Schema& schema, int i) {
  const auto code =
      status.IsTypeError() ? util::TableErrorCode::TypeError : util::TableErrorCode::Internal;
  return status.WithDetail(
      std::make_shared<util::TableErrorStatusDetail>(code, schema.field(i)->name(), i));
}

/// Moves the fields of a column's envelope into element `index` of "Columns".
void store_column(hxArray* columns, size_t index, hxArrayPtr envelope) {
  for (const char* field : {"ArrowType", "Type", "Data", "Valid"}) {
    hxSetField(columns, index, field, hxSharedCopy(hxGetField(envelope.get(), 0, field)));
    const int slot = hxGetFieldNumber(envelope.get(), field);
    hxReplaceCell(envelope.get(), static_cast<size_t>(slot), nullptr);
  }
}

}  // namespace

::arrow::Result<hxArrayPtr> to_numera(std::shared_ptr<::arrow::Table> table) {
  if (table == nullptr) {
    return ::arrow::Status::Invalid("Received null pointer in arrow::Table conversion");
  }
  if (table->schema() == nullptr) return messages::no_schema();
  const ::arrow::Schema& schema = *table->schema();
  const auto& columns = table->columns();
  if (std::cmp_not_equal(columns.size(), schema.num_fields())) {
    return messages::wrong_column_count(static_cast<std::int64_t>(columns.size()),
                                        schema.num_fields());
  }
  hxArrayPtr envelope = make_struct(1, {"ArrowType", "Columns", "Names"});
  hxSetField(envelope.get(), 0, "ArrowType", make_char_row(u"table"));
  hxSetField(envelope.get(), 0, "Names", field_names(schema));
  hxArrayPtr stored = make_struct(columns.size(), {"ArrowType", "Type", "Data", "Valid"});
  hxArray* const encoded = stored.get();
  hxSetField(envelope.get(), 0, "Columns", std::move(stored));
  for (size_t i = 0; i < columns.size(); ++i) {
    hxThrowIfInterruptPending();
    auto column = to_numera(columns[i]);
    if (!column.ok()) return name_column(column.status(), schema, static_cast<int>(i));
    store_column(encoded, i, std::move(column).ValueUnsafe());
  }
  return envelope;
}

}  // namespace numera::io::arrow::core
