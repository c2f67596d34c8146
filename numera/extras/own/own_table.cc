#include <arrow/array/util.h>
#include <arrow/type.h>

#include <cstddef>
#include <cstdint>
#include <exception>
#include <new>
#include <string>
#include <utility>

#include "numera/core/to_arrow.h"
#include "numera/core/to_arrow_table.h"
#include "numera/core/util/text.h"
#include "numera/core/util/verify_struct.h"
#include "numera/extras/column_status.h"
#include "numera/extras/own/own.h"
#include "numera/extras/own/owned_memory.h"
#include "numera/format/names.h"

namespace numera::extras {
namespace {

namespace core = io::arrow::core;
using core::util::VerifyHxStructContains;

/// Reads the name and the borrowed array of a column.
::arrow::Status read_column(const hxArray* names, const hxArray* columns, size_t index,
                            std::string* name, std::shared_ptr<::arrow::Array>* array) {
  *name = core::util::HxArrayToString(hxGetCellChecked(names, index));
  ARROW_ASSIGN_OR_RAISE(*array, core::to_arrow(columns, index));
  return core::check_table_column(**array);
}

/// The same, but a failure names the column. `std::bad_alloc` passes through: lack of memory is not
/// the column's fault.
::arrow::Status read_named_column(const hxArray* names, const hxArray* columns, size_t index,
                                  std::string* name, std::shared_ptr<::arrow::Array>* array) {
  try {
    const ::arrow::Status status = read_column(names, columns, index, name, array);
    return status.ok() ? status : status_of_column(status, *name, static_cast<int>(index));
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& error) {
    return status_of_column(::arrow::Status::Invalid(error.what()), *name, static_cast<int>(index));
  }
}

}  // namespace

::arrow::Result<std::shared_ptr<::arrow::Table>> own_to_arrow_table(hxArrayPtr encoded) {
  const own::Owner owner = std::move(encoded);
  ARROW_RETURN_NOT_OK(
      VerifyHxStructContains(owner.get(), format::kArrowType, hxClassID::Char, false));
  ARROW_RETURN_NOT_OK(VerifyHxStructContains(owner.get(), format::kNames, hxClassID::Cell, false));
  ARROW_RETURN_NOT_OK(
      VerifyHxStructContains(owner.get(), format::kColumns, hxClassID::Struct, false));
  const hxArray* names = hxGetFieldChecked(owner.get(), 0, format::kNames);
  const hxArray* columns = hxGetFieldChecked(owner.get(), 0, format::kColumns);
  const size_t count = hxGetDimensions(columns)[0];
  ::arrow::FieldVector fields;
  ::arrow::ArrayVector arrays;
  for (size_t i = 0; i < count; ++i) {
    hxThrowIfInterruptPending();
    std::string name;
    std::shared_ptr<::arrow::Array> borrowed;
    ARROW_RETURN_NOT_OK(read_named_column(names, columns, i, &name, &borrowed));
    fields.push_back(::arrow::field(std::move(name), borrowed->type()));
    arrays.push_back(::arrow::MakeArray(own::owned(*borrowed->data(), owner)));
  }
  return ::arrow::Table::Make(::arrow::schema(std::move(fields)), arrays, -1);
}

}  // namespace numera::extras
