#include "numera/extras/intake/intake.h"

#include <string>
#include <string_view>
#include <utility>

#include "numera/extras/column_status.h"
#include "numera/extras/intake/column.h"
#include "numera/host/array.h"

namespace numera::extras {
namespace {

::arrow::Status null_pointer(std::string_view what) {
  return ::arrow::Status::Invalid(what, ": found a null pointer, expected a value.");
}

intake::Work work_of(const IntakeOptions& options) {
  intake::Work work;
  work.cast = options.cast;
  work.views = options.views || options.cast;
  return work;
}

::arrow::Result<intake::TakenColumn> take_in_column_of(const ::arrow::Table& table, int index,
                                                       const IntakeOptions& options) {
  const auto& column = table.column(index);
  const std::string& name = table.field(index)->name();
  const std::string path = column_text(name, index);
  if (column == nullptr) return status_of_column(null_pointer(path), name, index);
  if (column->length() != table.num_rows()) {
    const auto status =
        ::arrow::Status::Invalid("found ", column->length(), " elements, expected ",
                                 table.num_rows(), ", the number of rows of the table.");
    return status_of_column(status, name, index);
  }
  auto taken = intake::take_in_column(path, column->type(), column->chunks(), work_of(options));
  if (!taken.ok()) return status_of_column(taken.status(), name, index);
  for (IntakeCast& cast : taken->casts) cast.path.replace(0, path.size(), name);
  return taken;
}

}  // namespace

std::string to_string(const IntakeCast& cast) {
  const std::string place = cast.path.empty() ? "" : cast.path + ": ";
  return place + cast.from->ToString() + " to " + cast.to->ToString();
}

::arrow::Result<Intake<::arrow::Array>> take_in(const std::shared_ptr<::arrow::Array>& array,
                                                const IntakeOptions& options) {
  if (array == nullptr) return null_pointer("Array");
  ARROW_ASSIGN_OR_RAISE(auto taken,
                        intake::take_in_column("", array->type(), {array}, work_of(options)));
  return Intake<::arrow::Array>{std::move(taken.chunks[0]), std::move(taken.casts)};
}

::arrow::Result<Intake<::arrow::ChunkedArray>> take_in(
    const std::shared_ptr<::arrow::ChunkedArray>& column, const IntakeOptions& options) {
  if (column == nullptr) return null_pointer("Column");
  ARROW_ASSIGN_OR_RAISE(
      auto taken, intake::take_in_column("", column->type(), column->chunks(), work_of(options)));
  return Intake<::arrow::ChunkedArray>{
      std::make_shared<::arrow::ChunkedArray>(std::move(taken.chunks), std::move(taken.type)),
      std::move(taken.casts)};
}

::arrow::Result<Intake<::arrow::Table>> take_in(const std::shared_ptr<::arrow::Table>& table,
                                                const IntakeOptions& options) {
  if (table == nullptr) return null_pointer("Table");
  if (table->schema() == nullptr) return null_pointer("Schema");
  const size_t columns_found = table->columns().size();
  if (std::cmp_not_equal(columns_found, table->num_columns())) {
    return ::arrow::Status::Invalid("Table: found ", columns_found, " columns, expected ",
                                    table->num_columns(), ", one for each field of the schema.");
  }
  Intake<::arrow::Table> result;
  ::arrow::FieldVector fields;
  ::arrow::ChunkedArrayVector columns;
  for (int i = 0; i < table->num_columns(); ++i) {
    hxThrowIfInterruptPending();
    ARROW_ASSIGN_OR_RAISE(auto taken, take_in_column_of(*table, i, options));
    fields.push_back(table->field(i)->WithType(taken.type));
    columns.push_back(
        std::make_shared<::arrow::ChunkedArray>(std::move(taken.chunks), std::move(taken.type)));
    for (auto& cast : taken.casts) result.casts.push_back(std::move(cast));
  }
  result.value =
      ::arrow::Table::Make(::arrow::schema(std::move(fields), table->schema()->metadata()),
                           std::move(columns), table->num_rows());
  return result;
}

}  // namespace numera::extras
