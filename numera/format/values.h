#pragma once

/// \file
/// The host values that encoded values consist of: making them, telling them apart, and describing
/// them in messages.

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>

#include "numera/host/array.h"

namespace numera::format {

/// \name Making. Each returns a new array of the caller and throws what the host throws.
/// @{

/// Column of `length` elements. The caller writes every one of them.
hxArrayPtr make_column(hxClassID class_id, size_t length);
/// Column of `length` zeros.
hxArrayPtr make_zero_column(hxClassID class_id, size_t length);
/// uint8 column of a copy of these bytes.
hxArrayPtr make_byte_column(std::span<const std::uint8_t> bytes);
/// 1-by-1 arrays.
hxArrayPtr make_double(double value);
hxArrayPtr make_int64(std::int64_t value);
hxArrayPtr make_logical(bool value);
/// Char row of UTF-16 text.
hxArrayPtr make_char_row(std::u16string_view text);
/// Char row of ASCII text: a word of the encoded form.
hxArrayPtr make_word(std::string_view ascii);
/// Char row of UTF-8 text. Throws the codec's error where it is not UTF-8.
hxArrayPtr make_char_row_from_utf8(std::string_view utf8);
/// Cell array of rows-by-columns empty slots.
hxArrayPtr make_cell(size_t rows, size_t columns);
/// Struct array of length-by-1 elements with empty slots.
hxArrayPtr make_struct(size_t length, std::span<const char* const> fields);
/// @}

/// Elements of an array that this library made.
template <class T>
T* elements(const hxArrayPtr& array) {
  return static_cast<T*>(hxGetData(array.get()));
}

/// Elements of any array.
template <class T>
const T* elements(const hxArray* array) {
  return static_cast<const T*>(hxGetData(array));
}

/// A struct or an object, string arrays among them. Null is neither.
bool is_struct(const hxArray* value);

/// Neither complex nor sparse.
bool is_plain(const hxArray* value);

/// "a complex 2-by-3 double array"; "no value" for null.
std::string describe(const hxArray* value);

}  // namespace numera::format
