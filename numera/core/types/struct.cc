#include "numera/core/types/struct.h"

#include <arrow/array/array_nested.h>
#include <arrow/type.h>

#include <string>
#include <utility>
#include <vector>

#include "numera/core/chunk_memory.h"
#include "numera/core/host_values.h"
#include "numera/core/types/nested.h"
#include "numera/core/util/text.h"

namespace numera::io::arrow::core {
namespace {

size_t count_cells(const hxArray* cells) {
  return cells == nullptr ? 0 : hxGetNumberOfElements(cells);
}

[[gnu::noinline]] hxArrayPtr write_field_names(const ::arrow::DataType& type) {
  hxArrayPtr names = make_cell(1, static_cast<size_t>(type.num_fields()));
  size_t i = 0;
  for (const auto& field : type.fields()) {
    hxSetCell(names.get(), i++, make_char_row_from_utf8(field->name()));
  }
  return names;
}

}  // namespace

ArrayResult StructToArrow(const EnvelopeFields& envelope, int level) {
  ARROW_ASSIGN_OR_RAISE(auto validity, validity_to_arrow(envelope.valid));
  const hxArray* names = hxGetFieldChecked(envelope.data, 0, "FieldName");
  const hxArray* children = hxGetFieldChecked(envelope.data, 0, "FieldData");
  const size_t count = count_cells(names);
  if (count != count_cells(children)) {
    return ::arrow::Status::Invalid(
        "Expect FieldData and FieldName to have the same number of elements");
  }
  ::arrow::ArrayVector arrays;
  std::vector<std::string> field_names;
  arrays.reserve(count);
  field_names.reserve(count);
  for (size_t i = 0; i < count; ++i) {
    ARROW_ASSIGN_OR_RAISE(auto child, element_to_arrow(hxGetCellChecked(children, i), 0, level));
    arrays.push_back(std::move(child));
    field_names.push_back(util::HxArrayToString(hxGetCellChecked(names, i)));
  }
  return ::arrow::StructArray::Make(arrays, field_names, std::move(validity));
}

::arrow::Result<hxArrayPtr> StructToHost(const ColumnView& chunked) {
  const auto write = [](hxArray* data, size_t index, const ArrayView& chunk) {
    hxArrayPtr names = write_field_names(*chunk.data->type);
    const size_t count = chunk.data->child_data.size();
    hxArrayPtr children = make_cell(1, count);
    for (size_t i = 0; i < count; ++i) {
      ARROW_RETURN_NOT_OK(store_child({children.get(), i}, chunk.struct_child(i)));
    }
    hxSetField(data, index, "FieldName", std::move(names));
    hxSetField(data, index, "FieldData", std::move(children));
    return ::arrow::Status::OK();
  };
  return write_chunks(chunked, {"FieldName", "FieldData"}, write);
}

}  // namespace numera::io::arrow::core
