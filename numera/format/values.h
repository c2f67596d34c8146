#pragma once

/// \file
/// The host values that make up encoded values: functions that make them, test their kind and
/// describe them in messages.

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>

#include "numera/host/array.h"

namespace numera::format {

/// \name Functions that make new arrays, which the caller owns. They throw what the host throws.
/// @{

/// Column of `length` uninitialized elements. The caller must write all of them.
hxArrayPtr make_column(hxClassID class_id, size_t length);
/// Column of `length` zeros.
hxArrayPtr make_zero_column(hxClassID class_id, size_t length);
/// uint8 column with a copy of these bytes.
hxArrayPtr make_byte_column(std::span<const std::uint8_t> bytes);
/// 1-by-1 arrays.
hxArrayPtr make_double(double value);
hxArrayPtr make_int64(std::int64_t value);
hxArrayPtr make_logical(bool value);
/// Char row of UTF-16 text.
hxArrayPtr make_char_row(std::u16string_view text);
/// Char row of ASCII text, for the fixed words of the encoded form.
hxArrayPtr make_word(std::string_view ascii);
/// Char row of UTF-8 text. Throws the codec's error if the text is not UTF-8.
hxArrayPtr make_char_row_from_utf8(std::string_view utf8);
/// Cell array of `rows`-by-`columns` empty slots.
hxArrayPtr make_cell(size_t rows, size_t columns);
/// Struct array of `length`-by-1 elements with empty slots.
hxArrayPtr make_struct(size_t length, std::span<const char* const> fields);
/// @}

/// The writable elements of an array that this library made.
template <class T>
T* elements(const hxArrayPtr& array) {
  return static_cast<T*>(hxGetData(array.get()));
}

/// The read-only elements of any array.
template <class T>
const T* elements(const hxArray* array) {
  return static_cast<const T*>(hxGetData(array));
}

/// Whether the value is a struct or an object; string arrays are objects. Null is neither.
bool is_struct(const hxArray* value);

/// Whether the value is neither complex nor sparse.
bool is_plain(const hxArray* value);

/// "a complex 2-by-3 double array"; "no value" for null.
std::string describe(const hxArray* value);

}  // namespace numera::format
