#include "numera/core/to_arrow_table.h"

#include <arrow/type.h>

#include <algorithm>
#include <utility>

#include "numera/core/dispatch.h"
#include "numera/core/host_values.h"
#include "numera/core/messages.h"
#include "numera/core/util/text.h"
#include "numera/core/util/verify_struct.h"
#include "numera/format/bitmap.h"
#include "numera/format/names.h"

namespace numera::io::arrow::core {

::arrow::Status check_table_column(const ::arrow::Array& array) {
  const ::arrow::ArrayData& column = *array.data();
  if (column.buffers.empty() || column.buffers[0] == nullptr) return ::arrow::Status::OK();
  if (column.length < 0) return messages::wrong_extent(column.offset, column.length);
  const std::int64_t size = column.buffers[0]->size();
  if (format::bitmap_bytes(column.length) <= size) return ::arrow::Status::OK();
  return messages::short_buffer("Field 'Valid'", size, column.length);
}

::arrow::Result<std::shared_ptr<::arrow::Table>> to_arrow_table(const hxArray* encoded) {
  ARROW_RETURN_NOT_OK(
      util::VerifyHxStructContains(encoded, format::kArrowType, hxClassID::Char, false));
  ARROW_ASSIGN_OR_RAISE(const hxArray* names,
                        checked_field(encoded, format::kNames, hxClassID::Cell));
  ARROW_ASSIGN_OR_RAISE(const hxArray* columns,
                        checked_field(encoded, format::kColumns, hxClassID::Struct));
  const size_t count = hxGetDimensions(columns)[0];
  ::arrow::FieldVector fields;
  ::arrow::ArrayVector arrays;
  // `count` is the first dimension. It can be above 0 although the array has no elements, for
  // example 2-by-0. Then nothing is reserved, and the first access throws.
  const size_t stored = std::min(count, hxGetNumberOfElements(columns));
  fields.reserve(stored);
  arrays.reserve(stored);
  for (size_t i = 0; i < count; ++i) {
    hxThrowIfInterruptPending();
    std::string name = util::HxArrayToString(hxGetCellChecked(names, i));
    // The classes of the fields are checked in element 0 only.
    ARROW_ASSIGN_OR_RAISE(
        auto array, i == 0 ? element_to_arrow(columns, i) : later_element_to_arrow(columns, i));
    ARROW_RETURN_NOT_OK(check_table_column(*array));
    fields.push_back(::arrow::field(std::move(name), array->type()));
    arrays.push_back(std::move(array));
  }
  return ::arrow::Table::Make(::arrow::schema(std::move(fields)), arrays, -1);
}

}  // namespace numera::io::arrow::core
