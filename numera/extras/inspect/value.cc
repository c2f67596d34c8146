#include "numera/extras/inspect/value.h"

#include "numera/extras/inspect/text.h"
#include "numera/format/values.h"
#include "numera/host/string_array.h"

namespace numera::extras::inspect {

Content content_of(const hxArray* array) {
  if (hxIsStringArray(array)) return Content::kStrings;
  if (hxIsSparse(array)) return Content::kNothing;
  const hxClassID class_id = hxGetClassID(array);
  if (class_id == hxClassID::Cell) return Content::kCells;
  if (class_id == hxClassID::Char) return Content::kChars;
  if (format::is_struct(array)) return Content::kFields;
  if (class_id == hxClassID::Logical || hxIsNumeric(array)) return Content::kNumbers;
  return Content::kNothing;
}

std::string class_text(const hxArray* array) {
  if (hxIsStringArray(array)) return "string";
  const hxClassID class_id = hxGetClassID(array);
  if (class_id == hxClassID::Object) return "object " + quote(hxGetClassName(array));
  std::string text;
  if (hxIsSparse(array)) text += "sparse ";
  if (hxIsComplex(array)) text += "complex ";
  if (content_of(array) == Content::kNothing && !hxIsSparse(array)) {
    return text + "class " + std::to_string(static_cast<std::int32_t>(class_id));
  }
  return text + hxGetClassName(array);
}

std::string size_text(const hxArray* array) {
  std::string text;
  for (const size_t dim : hxGetDimensions(array)) {
    if (!text.empty()) text += 'x';
    text += std::to_string(dim);
  }
  return text;
}

bool is_vector(std::span<const size_t> dims) {
  return dims.size() == 2 && (dims[0] == 1 || dims[1] == 1);
}

bool is_row(std::span<const size_t> dims) { return dims.size() == 2 && dims[0] == 1; }

std::string index_text(std::span<const size_t> dims, size_t element) {
  if (is_vector(dims)) return std::to_string(element);
  std::string text;
  for (const size_t dim : dims) {
    if (!text.empty()) text += ',';
    text += std::to_string(element % dim);
    element /= dim;
  }
  return text;
}

std::u16string_view code_units(const hxArray* array) {
  const size_t length = hxGetNumberOfElements(array);
  if (length == 0) return {};
  return {static_cast<const char16_t*>(hxGetData(array)), length};
}

size_t field_count(const hxArray* array) {
  const int fields = hxGetNumberOfFields(array);
  return fields > 0 ? static_cast<size_t>(fields) : 0;
}

size_t slot_count(const hxArray* container) {
  const size_t elements = hxGetNumberOfElements(container);
  return content_of(container) == Content::kCells ? elements : elements * field_count(container);
}

const hxArray* slot_value(const hxArray* container, size_t slot) {
  if (content_of(container) == Content::kCells) return hxGetCell(container, slot);
  const size_t fields = field_count(container);
  if (fields == 0) return nullptr;
  const auto field = static_cast<int>(slot % fields);
  const char* const name = hxGetFieldName(container, field);
  if (hxGetFieldNumber(container, name) != field) return nullptr;
  return hxGetField(container, slot / fields, name);
}

}  // namespace numera::extras::inspect
