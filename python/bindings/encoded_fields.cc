#include "python/bindings/encoded_fields.h"

#include <cstddef>

#include "numera/core/util/table_error.h"

namespace numera::python {
namespace {

using io::arrow::core::util::TableErrorStatusDetail;

constexpr const char* kRefusedColumnNote =
    "change the value at that place to what was expected there, or leave the column out of the "
    "table.";

/// The text of a field of element `index`; empty if it cannot be read.
std::string text_in(const hxArray* value, size_t index, const char* name) {
  constexpr size_t kLongerThanAnyName = 64;
  if (!has_fields(value) || index >= hxGetNumberOfElements(value)) return {};
  const hxArray* field = hxGetField(value, index, name);
  if (field == nullptr || hxGetClassID(field) != hxClassID::Char) return {};
  if (hxGetNumberOfElements(field) > kLongerThanAnyName) return {};
  std::string text;
  const auto* units = static_cast<const char16_t*>(hxGetData(field));
  for (size_t i = 0; i < hxGetNumberOfElements(field); ++i) {
    text.push_back(units[i] < 0x80 ? static_cast<char>(units[i]) : '?');
  }
  return text;
}

bool is_readable_array(const hxArray* encoded, size_t index) {
  if (text_in(encoded, index, "ArrowType") != "array") return false;
  const hxArray* valid = hxGetField(encoded, index, "Valid");
  const hxArray* data = hxGetField(encoded, index, "Data");
  // A column without chunks has an empty "Valid".
  if (valid == nullptr || hxGetNumberOfElements(valid) != 1 || data == nullptr) return false;
  const std::string type = text_in(encoded, index, "Type");
  if (!has_fields(data)) return hxIsNumeric(data) && type != "null";
  return type == "string" || type == "binary" || type == "logical" || type == "duration";
}

}  // namespace

std::string kind_of(const hxArray* value) { return text_in(value, 0, "ArrowType"); }

bool is_other_struct(const hxArray* value) {
  return has_fields(value) && (hxIsEmpty(value) || hxGetFieldNumber(value, "ArrowType") < 0);
}

bool is_known_readable(const hxArray* value) {
  if (kind_of(value) != "table") return is_readable_array(value, 0);
  const hxArray* columns = hxGetField(value, 0, "Columns");
  if (columns == nullptr || !has_fields(columns)) return false;
  for (size_t i = 0; i < hxGetNumberOfElements(columns); ++i) {
    if (!is_readable_array(columns, i)) return false;
  }
  return true;
}

std::string type_of_failed_column(const HostValue& host, const ::arrow::Status& status) {
  const auto* detail = dynamic_cast<const TableErrorStatusDetail*>(status.detail().get());
  const hxArray* columns = hxGetField(host.get(), 0, "Columns");
  if (detail == nullptr || columns == nullptr) return {};
  const std::string type = text_in(columns, static_cast<size_t>(detail->column_index()), "Type");
  return type.empty() ? "" : "the type is '" + type + "': ";
}

std::string refused_column_note(const HostValue& host, const ::arrow::Status& status) {
  if (dynamic_cast<const TableErrorStatusDetail*>(status.detail().get()) == nullptr) return {};
  return type_of_failed_column(host, status) + kRefusedColumnNote;
}

}  // namespace numera::python
