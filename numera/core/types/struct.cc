#include "numera/core/types/struct.h"

#include <arrow/array/array_nested.h>
#include <arrow/array/util.h>
#include <arrow/type.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "numera/core/host_values.h"
#include "numera/core/types/nested.h"
#include "numera/core/util/text.h"
#include "numera/format/records.h"

namespace numera::io::arrow::core {
namespace {

size_t count_cells(const hxArray* cells) {
  return cells == nullptr ? 0 : hxGetNumberOfElements(cells);
}

struct StructParts {
  std::shared_ptr<::arrow::Buffer> validity;
  const hxArray* names = nullptr;  ///< cell array
  const hxArray* cells = nullptr;  ///< cell array of the envelopes of the children
  ::arrow::FieldVector fields;     ///< of the children read so far
  std::vector<DataPtr> children;
};

[[gnu::noinline]] ::arrow::Status read_parts(const EnvelopeFields& envelope, StructParts& parts) {
  ARROW_ASSIGN_OR_RAISE(parts.validity, validity_to_arrow(envelope.valid));
  parts.names = hxGetFieldChecked(envelope.data, 0, format::kFieldName);
  parts.cells = hxGetFieldChecked(envelope.data, 0, format::kFieldData);
  const size_t count = count_cells(parts.names);
  if (count != count_cells(parts.cells)) {
    return ::arrow::Status::Invalid(
        "Expect FieldData and FieldName to have the same number of elements");
  }
  parts.fields.reserve(count);
  parts.children.reserve(count);
  return ::arrow::Status::OK();
}

[[gnu::noinline]] void add_child(StructParts& parts, DataPtr& child) {
  const hxArray* name = hxGetCellChecked(parts.names, parts.children.size());
  parts.fields.push_back(::arrow::field(util::HxArrayToString(name), child->type));
  parts.children.push_back(std::move(child));
}

/// Arrow's error for children that do not make a struct.
::arrow::Status refuse_children(const StructParts& parts) {
  ::arrow::ArrayVector arrays;
  for (const DataPtr& child : parts.children) arrays.push_back(::arrow::MakeArray(child));
  return ::arrow::StructArray::Make(arrays, parts.fields).status();
}

[[gnu::noinline]] ::arrow::Status make_structs(StructParts& parts, DataPtr& structs) {
  const std::int64_t length = parts.children.empty() ? -1 : parts.children[0]->length;
  const auto fits = [length](const DataPtr& child) { return child->length == length; };
  if (length < 0 || !std::ranges::all_of(parts.children, fits)) return refuse_children(parts);
  structs = ::arrow::ArrayData::Make(::arrow::struct_(parts.fields), length,
                                     {std::move(parts.validity)}, std::move(parts.children));
  return ::arrow::Status::OK();
}

[[gnu::noinline]] hxArrayPtr write_field_names(const ::arrow::DataType& type) {
  hxArrayPtr names = format::make_cell(1, static_cast<size_t>(type.num_fields()));
  size_t i = 0;
  for (const auto& field : type.fields()) {
    hxSetCell(names.get(), i++, format::make_char_row_from_utf8(field->name()));
  }
  return names;
}

}  // namespace

::arrow::Status StructToArrow(const EnvelopeFields& envelope, int level, DataPtr& data) {
  StructParts parts;
  ARROW_RETURN_NOT_OK(read_parts(envelope, parts));
  const size_t count = count_cells(parts.cells);
  for (size_t i = 0; i < count; ++i) {
    ARROW_RETURN_NOT_OK(child_to_arrow(hxGetCellChecked(parts.cells, i), level, data));
    add_child(parts, data);
  }
  return make_structs(parts, data);
}

::arrow::Result<hxArrayPtr> StructToHost(const ColumnView& chunked) {
  const auto write = [](hxArray* data, size_t index, const ArrayView& chunk) {
    hxArrayPtr names = write_field_names(*chunk.data->type);
    const auto count = static_cast<size_t>(chunk.data->type->num_fields());
    hxArrayPtr children = format::make_cell(1, count);
    for (size_t i = 0; i < count; ++i) {
      ARROW_RETURN_NOT_OK(store_child({children.get(), i}, chunk.struct_child(i)));
    }
    hxSetField(data, index, format::kFieldName, std::move(names));
    hxSetField(data, index, format::kFieldData, std::move(children));
    return ::arrow::Status::OK();
  };
  return write_chunks(chunked, format::kStructs, write);
}

}  // namespace numera::io::arrow::core
