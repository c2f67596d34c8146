#pragma once

/// \file
/// Values in readable form and the host arrays that they are made of.

#include <arrow/array/array_base.h>
#include <arrow/result.h>

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string_view>

#include "numera/extras/encode/located.h"
#include "numera/host/array.h"

namespace numera::extras::encoding {

/// What the fields of a readable envelope hold.
struct ReadableValue {
  std::u16string_view kind;  ///< "ArrowType"
  std::u16string_view type;  ///< "Type", of static life
  hxArrayPtr data;
  size_t length = 0;
  hxArrayPtr valid = nullptr;  ///< a uint8 array of bits; null: every element is valid
};

/// Whether it is a list or a struct.
bool is_nested(const ReadableValue& readable);

/// An envelope, or a cell of envelopes, with the number of its elements.
struct Envelope {
  hxArrayPtr value;
  size_t length = 0;
};

/// Puts the fields into element `index` of a struct array that has them.
void store(hxArray* envelopes, size_t index, ReadableValue readable);
/// The 1-by-1 envelope of the value.
Envelope make_envelope(ReadableValue readable);

/// Element `index` of readable envelopes as the core reads it, fully validated; a failure names
/// `origin`.
::arrow::Result<std::shared_ptr<::arrow::Array>> read_back(const hxArray* envelopes, size_t index,
                                                           const Located& origin);

/// \name Host arrays
/// @{
hxArrayPtr make_char(std::u16string_view text);
/// A column whose elements are all to be written.
hxArrayPtr make_column(hxClassID class_id, size_t length);
hxArrayPtr make_zero_column(hxClassID class_id, size_t length);
hxArrayPtr make_double(double value);
hxArrayPtr make_logical(bool value);
hxArrayPtr make_cell(size_t rows, size_t columns);
hxArrayPtr make_struct(size_t length, std::initializer_list<const char*> fields);

template <class T>
T* elements(const hxArrayPtr& array) {
  return static_cast<T*>(hxGetData(array.get()));
}
template <class T>
const T* elements(const hxArray* array) {
  return static_cast<const T*>(hxGetData(array));
}
/// @}

/// Bytes that so many bits take.
constexpr size_t bitmap_bytes(size_t bits) { return bits / 8 + (bits % 8 != 0 ? 1 : 0); }

/// Packed logical values: the struct that the reader takes.
hxArrayPtr make_packed_logical(hxArrayPtr bits, size_t length);

}  // namespace numera::extras::encoding
