#include "numera/core/host_values.h"

#include <array>
#include <span>

#include "numera/core/messages.h"
#include "numera/core/utf8_to_utf16.h"

namespace numera::io::arrow::core {
namespace {

using Dimensions = std::array<size_t, 2>;

template <class T>
hxArrayPtr make_scalar(hxClassID class_id, T value) {
  hxArrayPtr scalar = make_column(class_id, 1);
  *elements<T>(scalar) = value;
  return scalar;
}

}  // namespace

bool is_struct(const hxArray* value) {
  if (value == nullptr) return false;
  const hxClassID class_id = hxGetClassID(value);
  return class_id == hxClassID::Struct || class_id == hxClassID::Object;
}

::arrow::Status check_struct(const hxArray* value) {
  if (is_struct(value)) return ::arrow::Status::OK();
  return ::arrow::Status::TypeError("Struct array required for input");
}

::arrow::Status check_field(const hxArray* value, const char* field, hxClassID class_id) {
  if (value == nullptr) {
    return ::arrow::Status::TypeError("Missing field '", field, "' in input struct array");
  }
  if (class_id == hxClassID::Unknown || class_id == hxGetClassID(value)) {
    return ::arrow::Status::OK();
  }
  return ::arrow::Status::TypeError("Incorrect type '", hxGetClassName(value),
                                    "' for struct array field '", field, "'");
}

::arrow::Result<const hxArray*> checked_field(const hxArray* s, const char* field,
                                              hxClassID class_id) {
  ARROW_RETURN_NOT_OK(check_struct(s));
  const hxArray* value = hxGetFieldChecked(s, 0, field);
  ARROW_RETURN_NOT_OK(check_field(value, field, class_id));
  return value;
}

::arrow::Status check_plain(const hxArray* value, std::string_view field) {
  if (hxIsComplex(value) || hxIsSparse(value)) return messages::not_plain(field, value);
  return ::arrow::Status::OK();
}

std::shared_ptr<::arrow::Buffer> borrow_elements(const hxArray* value) {
  const size_t size = hxGetElementSize(value) * hxGetNumberOfElements(value);
  return std::make_shared<::arrow::Buffer>(static_cast<const std::uint8_t*>(hxGetData(value)),
                                           static_cast<std::int64_t>(size));
}

hxArrayPtr make_column(hxClassID class_id, size_t length) {
  return hxCreateUninitNumericArray(Dimensions{length, 1}, class_id, hxComplexity::Real);
}

hxArrayPtr make_double(double value) { return make_scalar(hxClassID::Double, value); }

hxArrayPtr make_int64(std::int64_t value) { return make_scalar(hxClassID::Int64, value); }

hxArrayPtr make_logical(bool value) {
  return make_scalar(hxClassID::Logical, static_cast<std::uint8_t>(value ? 1 : 0));
}

hxArrayPtr make_char_row(std::u16string_view text) {
  return hxCreateCharArray(text.data(), text.size());
}

hxArrayPtr make_char_row_from_utf8(const std::string& utf8) {
  return make_char_row(Utf8ToUtf16(utf8));
}

hxArrayPtr make_cell(size_t rows, size_t columns) {
  return hxCreateCellArray(Dimensions{rows, columns});
}

hxArrayPtr make_struct(size_t length, std::initializer_list<const char*> fields) {
  return hxCreateStructArray(Dimensions{length, 1}, std::span(fields.begin(), fields.size()));
}

}  // namespace numera::io::arrow::core
