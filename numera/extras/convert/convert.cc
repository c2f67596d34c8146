#include "numera/extras/convert.h"

#include <arrow/array/util.h>
#include <arrow/array/validate.h>
#include <arrow/type.h>

#include <string>
#include <utility>

#include "numera/core/to_numera.h"
#include "numera/core/util/text.h"
#include "numera/extras/column_status.h"
#include "numera/extras/convert/exact_type.h"
#include "numera/extras/encode/encode.h"
#include "numera/extras/intake/soundness.h"
#include "numera/extras/own/own.h"
#include "numera/extras/parallel/in_order.h"
#include "numera/extras/parallel/parallel.h"
#include "numera/format/names.h"

namespace numera::extras {
namespace {

using ArrayPtr = std::shared_ptr<::arrow::Array>;
using ColumnPtr = std::shared_ptr<::arrow::ChunkedArray>;
using TablePtr = std::shared_ptr<::arrow::Table>;

void note(std::vector<IntakeCast>& casts, const ToHostOptions& options) {
  if (options.casts == nullptr) return;
  for (IntakeCast& cast : casts) options.casts->push_back(std::move(cast));
}

template <class T>
::arrow::Result<std::shared_ptr<T>> taken_in(const std::shared_ptr<T>& value,
                                             const ToHostOptions& options) {
  ARROW_ASSIGN_OR_RAISE(auto taken, take_in(value, options.intake));
  note(taken.casts, options);
  return std::move(taken.value);
}

/// A table of the columns of a batch, checked before Arrow makes arrays of them: it would read
/// through null pointers and end the process at a wrong number of buffers.
::arrow::Result<TablePtr> table_of(const ::arrow::RecordBatch& batch) {
  const auto& schema = batch.schema();
  ::arrow::ChunkedArrayVector columns(batch.column_data().size());
  if (schema == nullptr || std::cmp_not_equal(columns.size(), schema->num_fields())) {
    return ::arrow::Table::Make(schema, std::move(columns), 0);  // the intake refuses it
  }
  for (size_t i = 0; i < columns.size(); ++i) {
    const auto& data = batch.column_data()[i];
    const auto& field = schema->field(static_cast<int>(i));
    ::arrow::Status status = intake::check_soundness(data);
    if (status.ok()) status = ::arrow::internal::ValidateArray(*data);
    if (!status.ok()) return status_of_column(status, field->name(), static_cast<int>(i));
    columns[i] = std::make_shared<::arrow::ChunkedArray>(
        ::arrow::ArrayVector{::arrow::MakeArray(data)}, field->type());
  }
  return ::arrow::Table::Make(schema, std::move(columns), batch.num_rows());
}

/// Refuses a readable value that is no table where one is expected, and the other way round.
::arrow::Status check_kind(const hxArray* readable, bool is_table) {
  const std::string kind =
      io::arrow::core::util::HxArrayToString(hxGetField(readable, 0, format::kArrowType));
  const bool is_array = kind != format::kTableKind && kind != format::kBufferKind;
  if (is_table ? kind == format::kTableKind : is_array) return {};
  return ::arrow::Status::TypeError("Value: found an encoded value of the kind '", kind,
                                    "', expected ", is_table ? "a table." : "an array.");
}

std::string names_of(const ::arrow::FieldVector& fields) {
  std::string names;
  for (const auto& field : fields) names += (names.empty() ? "" : ", ") + field->name();
  return names;
}

/// Casts a table to `schema`. Every column must have exactly one chunk, as in a table converted
/// from a host value.
::arrow::Result<TablePtr> with_schema(const ::arrow::Table& table,
                                      const std::shared_ptr<::arrow::Schema>& schema,
                                      size_t threads) {
  if (!same_names(table.fields(), schema->fields())) {
    return ::arrow::Status::Invalid("Table: found the columns ", names_of(table.fields()),
                                    ", expected ", names_of(schema->fields()), ".");
  }
  const auto count = static_cast<size_t>(table.num_columns());
  ::arrow::ArrayVector columns(count);
  const auto check = [](size_t) { hxThrowIfInterruptPending(); };
  const auto convert = [&](size_t i) -> ::arrow::Status {
    const auto index = static_cast<int>(i);
    const ArrayPtr array = table.column(index)->chunk(0);
    const ::arrow::Field& field = *schema->field(index);
    const std::string path = column_text(field.name(), index);
    const auto status = exact_field(array, field, path).Value(&columns[i]);
    return status.ok() ? status : status_of_column(status, field.name(), index);
  };
  threads = parallel::thread_count(threads);
  ARROW_RETURN_NOT_OK(parallel::in_order(count, threads, threads, check, convert));
  return ::arrow::Table::Make(schema, columns, table.num_rows());
}

}  // namespace

::arrow::Result<hxArrayPtr> convert_to_host(const ArrayPtr& array, const ToHostOptions& options) {
  ARROW_ASSIGN_OR_RAISE(auto taken, taken_in(array, options));
  return io::arrow::core::to_numera(std::move(taken));
}

::arrow::Result<hxArrayPtr> convert_to_host(const ColumnPtr& column, const ToHostOptions& options) {
  ARROW_ASSIGN_OR_RAISE(auto taken, taken_in(column, options));
  return io::arrow::core::to_numera(std::move(taken));
}

::arrow::Result<hxArrayPtr> convert_to_host(const std::shared_ptr<::arrow::RecordBatch>& batch,
                                            const ToHostOptions& options) {
  if (batch == nullptr) return convert_to_host(TablePtr(), options);
  ARROW_ASSIGN_OR_RAISE(const TablePtr table, table_of(*batch));
  return convert_to_host(table, options);
}

::arrow::Result<hxArrayPtr> convert_to_host(const TablePtr& table, const ToHostOptions& options) {
  ARROW_ASSIGN_OR_RAISE(auto taken, taken_in(table, options));
  return parallel_to_numera(std::move(taken), options.threads);
}

::arrow::Result<ArrayPtr> convert_to_arrow(hxArrayPtr value,
                                           const std::shared_ptr<::arrow::DataType>& type) {
  ARROW_ASSIGN_OR_RAISE(hxArrayPtr readable, make_readable(value.get()));
  ARROW_RETURN_NOT_OK(check_kind(readable.get(), /*is_table=*/false));
  ARROW_ASSIGN_OR_RAISE(ArrayPtr array, own_to_arrow<::arrow::Array>(std::move(readable)));
  return type == nullptr ? array : exact_field(array, ::arrow::Field("", type), "Column");
}

::arrow::Result<TablePtr> convert_to_arrow_table(hxArrayPtr value,
                                                 const std::shared_ptr<::arrow::Schema>& schema,
                                                 size_t threads) {
  ARROW_ASSIGN_OR_RAISE(hxArrayPtr readable, make_readable(value.get(), threads));
  ARROW_RETURN_NOT_OK(check_kind(readable.get(), /*is_table=*/true));
  ARROW_ASSIGN_OR_RAISE(TablePtr table, own_to_arrow_table(std::move(readable)));
  return schema == nullptr ? table : with_schema(*table, schema, threads);
}

}  // namespace numera::extras
