#include "numera/format/values.h"

#include <array>
#include <cstring>

#include "numera/host/string_array.h"

namespace numera::format {
namespace {

using Dimensions = std::array<size_t, 2>;

template <class T>
hxArrayPtr make_scalar(hxClassID class_id, T value) {
  hxArrayPtr scalar = make_column(class_id, 1);
  *elements<T>(scalar) = value;
  return scalar;
}

}  // namespace

hxArrayPtr make_column(hxClassID class_id, size_t length) {
  return hxCreateUninitNumericArray(Dimensions{length, 1}, class_id, hxComplexity::Real);
}

hxArrayPtr make_zero_column(hxClassID class_id, size_t length) {
  return hxCreateNumericArray(Dimensions{length, 1}, class_id, hxComplexity::Real);
}

hxArrayPtr make_byte_column(std::span<const std::uint8_t> bytes) {
  hxArrayPtr column = make_column(hxClassID::UInt8, bytes.size());
  if (!bytes.empty()) std::memcpy(elements<std::uint8_t>(column), bytes.data(), bytes.size());
  return column;
}

hxArrayPtr make_double(double value) { return make_scalar(hxClassID::Double, value); }

hxArrayPtr make_int64(std::int64_t value) { return make_scalar(hxClassID::Int64, value); }

hxArrayPtr make_logical(bool value) {
  return make_scalar(hxClassID::Logical, static_cast<std::uint8_t>(value ? 1 : 0));
}

hxArrayPtr make_char_row(std::u16string_view text) {
  return hxCreateCharArray(text.data(), text.size());
}

hxArrayPtr make_word(std::string_view ascii) {
  return make_char_row(std::u16string(ascii.begin(), ascii.end()));
}

hxArrayPtr make_char_row_from_utf8(std::string_view utf8) {
  return make_char_row(hxUTF8Decoder().convert(utf8));
}

hxArrayPtr make_cell(size_t rows, size_t columns) {
  return hxCreateCellArray(Dimensions{rows, columns});
}

hxArrayPtr make_struct(size_t length, std::span<const char* const> fields) {
  return hxCreateStructArray(Dimensions{length, 1}, fields);
}

bool is_struct(const hxArray* value) {
  if (value == nullptr) return false;
  const hxClassID class_id = hxGetClassID(value);
  return class_id == hxClassID::Struct || class_id == hxClassID::Object;
}

bool is_plain(const hxArray* value) { return !hxIsComplex(value) && !hxIsSparse(value); }

std::string describe(const hxArray* value) {
  if (value == nullptr) return "no value";
  std::string text = "a ";
  if (hxIsComplex(value)) text += "complex ";
  if (hxIsSparse(value)) text += "sparse ";
  const char* by = "";
  for (const size_t extent : hxGetDimensions(value)) {
    text += by + std::to_string(extent);
    by = "-by-";
  }
  const char* const name = hxGetClassName(value);
  if (name != nullptr && *name != '\0') return text + " " + name + " array";
  // Classes that the interface gives no access to have no name.
  return text + " array of class " + std::to_string(static_cast<std::int32_t>(hxGetClassID(value)));
}

}  // namespace numera::format
