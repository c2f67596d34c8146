#pragma once

/// \file
/// The vocabulary that all converters share: reading fields of encoded structs, wrapping host
/// memory as Arrow buffers, and making the host arrays that results consist of.

#include <arrow/buffer.h>
#include <arrow/result.h>
#include <arrow/status.h>

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>

#include "numera/host/array.h"

namespace numera::io::arrow::core {

/// A struct or an object: the two classes that a struct test accepts. Null is neither.
bool is_struct(const hxArray* value);

/// \name Reading
/// @{

/// TypeError where the value is no struct.
::arrow::Status check_struct(const hxArray* value);

/// TypeError where the value of a field is missing or of another class; `hxClassID::Unknown` is
/// any.
::arrow::Status check_field(const hxArray* value, const char* field, hxClassID class_id);

/// The value of the field in element 0, with the errors of `VerifyHxStructContains`. A struct
/// without elements, which passes that check, throws the host's exception here.
::arrow::Result<const hxArray*> checked_field(const hxArray* s, const char* field,
                                              hxClassID class_id);

/// TypeError that names `field` where a numeric or logical value is complex or sparse.
::arrow::Status check_plain(const hxArray* value, std::string_view field);

/// A buffer over the element block of `value`, which must be plain. It owns nothing: the host array
/// must outlive it. This is the one place where host memory becomes Arrow memory.
std::shared_ptr<::arrow::Buffer> borrow_elements(const hxArray* value);
/// @}

/// \name Making
/// @{

/// Column of `length` elements; every one is to be written by the caller.
hxArrayPtr make_column(hxClassID class_id, size_t length);
/// 1-by-1 arrays.
hxArrayPtr make_double(double value);
hxArrayPtr make_int64(std::int64_t value);
hxArrayPtr make_logical(bool value);
/// Char row of UTF-16 text.
hxArrayPtr make_char_row(std::u16string_view text);
/// Char row of UTF-8 text. Throws the codec's error where it is not UTF-8.
hxArrayPtr make_char_row_from_utf8(const std::string& utf8);
/// Cell array of rows-by-columns empty slots.
hxArrayPtr make_cell(size_t rows, size_t columns);
/// Struct array of length-by-1 elements with empty slots.
hxArrayPtr make_struct(size_t length, std::initializer_list<const char*> fields);

/// Elements of an array that this library made.
template <class T>
T* elements(const hxArrayPtr& array) {
  return static_cast<T*>(hxGetData(array.get()));
}
/// @}

}  // namespace numera::io::arrow::core
