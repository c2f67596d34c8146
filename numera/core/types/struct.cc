#include "numera/core/types/struct.h"

#include <arrow/array/array_nested.h>
#include <arrow/type.h>

#include <string>
#include <utility>
#include <vector>

#include "numera/core/chunk_memory.h"
#include "numera/core/host_values.h"
#include "numera/core/util/text.h"

namespace numera::io::arrow::core {
namespace {

size_t count_cells(const hxArray* cells) {
  return cells == nullptr ? 0 : hxGetNumberOfElements(cells);
}

hxArrayPtr write_field_names(const ::arrow::DataType& type) {
  hxArrayPtr names = make_cell(1, static_cast<size_t>(type.num_fields()));
  size_t i = 0;
  for (const auto& field : type.fields()) {
    hxSetCell(names.get(), i++, make_char_row_from_utf8(field->name()));
  }
  return names;
}

::arrow::Result<hxArrayPtr> write_field_data(const ArrayView& chunk) {
  const size_t count = chunk.data->child_data.size();
  hxArrayPtr data = make_cell(1, count);
  for (size_t i = 0; i < count; ++i) {
    ARROW_ASSIGN_OR_RAISE(hxArrayPtr child, column_to_numera(ColumnView(chunk.struct_child(i))));
    hxSetCell(data.get(), i, std::move(child));
  }
  return data;
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
  hxArrayPtr data = make_struct(chunked.chunks().size(), {"FieldName", "FieldData"});
  size_t c = 0;
  for (const ArrayView& chunk : chunked.chunks()) {
    hxArrayPtr names = write_field_names(*chunk.data->type);
    ARROW_ASSIGN_OR_RAISE(hxArrayPtr children, write_field_data(chunk));
    hxSetField(data.get(), c, "FieldName", std::move(names));
    hxSetField(data.get(), c, "FieldData", std::move(children));
    ++c;
  }
  return data;
}

}  // namespace numera::io::arrow::core
