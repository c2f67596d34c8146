#pragma once

/// \file
/// Host arrays to Arrow arrays and buffers.
///
/// Nothing is copied if that can be avoided: numeric values, text bytes, offsets and bitmaps become
/// Arrow buffers over the memory of the host arrays. The result borrows this memory: keep `encoded`
/// alive and unchanged while the Arrow value or any buffer of it is in use.
///
/// Threads: any number of threads may convert at the same time, even the same host value, as long
/// as no thread writes to it. The result may be used and released on any thread.
///
/// \code
///   auto column = numera::io::arrow::core::to_arrow<arrow::Array>(envelope.get());
///   if (!column.ok()) return column.status();
///   // Use *column only while envelope is alive.
/// \endcode

#include <arrow/array/array_base.h>
#include <arrow/buffer.h>
#include <arrow/result.h>

#include <concepts>
#include <cstddef>
#include <memory>

#include "numera/arrow_version.h"
#include "numera/export.h"
#include "numera/host/array.h"

namespace numera::io::arrow::core {

/// Converts element 0 of an encoded value.
///
/// `::arrow::Array`: `encoded` is a struct with the fields "ArrowType" (char: "array", "list_array"
/// or "struct"), "Type" (char), "Valid" (struct: a buffer envelope) and "Data". The array has null
/// count -1 (unknown) and offset 0. It is not validated: codes and offsets are not checked. Call
/// `ValidateFull` before use if the input is not trusted.
///
/// `::arrow::Buffer`: `encoded` is a struct with the fields "ArrowType" (char: "buffer") and
/// "Values" (uint8, any shape). The buffer covers the bytes of "Values"; "Length" is not read.
///
/// Errors:
/// - not a struct, or null: TypeError "Struct array required for input"
/// - an empty field: TypeError "Missing field 'F' in input struct array"
/// - a field of another class: TypeError "Incorrect type 'C' for struct array field 'F'"
/// - another "ArrowType": TypeError "Expected 'array' input type, received 'K' instead." ('buffer'
///   for buffers)
/// - no converter for "Data" and "Type": Invalid "Invalid type for NUMERA to Arrow conversion."
/// - complex or sparse numbers: TypeError in the form "Field 'F': found a complex 2-by-3 double
///   array, expected a real array that is not sparse."
/// - lists and structs nested deeper than `kMaxNestingLevels`: Invalid "Nested value: found more
///   than 1024 levels, expected at most 1024."
/// - fields of "Data" that do not fit its type: TypeError or Invalid; the message states what was
///   found and what was expected
/// - a field that the struct does not have: the host's `std::invalid_argument` "Wrong field name."
/// - a struct without elements: the host's `std::out_of_range` "Struct index is out of range."
///
/// Cost: O(1) for any number of elements. Nested values cost O(number of envelopes).
template <class T>
  requires std::same_as<T, ::arrow::Array> || std::same_as<T, ::arrow::Buffer>
NUMERA_EXPORT ::arrow::Result<std::shared_ptr<T>> to_arrow(const hxArray* encoded);

/// The conversion to arrays described above. It is compiled into the library.
template <>
NUMERA_EXPORT ::arrow::Result<std::shared_ptr<::arrow::Array>> to_arrow<::arrow::Array>(
    const hxArray* encoded);
/// The conversion to buffers described above. It is compiled into the library.
template <>
NUMERA_EXPORT ::arrow::Result<std::shared_ptr<::arrow::Buffer>> to_arrow<::arrow::Buffer>(
    const hxArray* encoded);

/// Converts element `index` of a struct array of encoded arrays, like `to_arrow<::arrow::Array>`.
/// The classes of the fields are checked in element 0 only. An empty slot in a later element reads
/// as empty text or fails with an error from the list above. An index past the end gives the host's
/// `std::out_of_range` "Struct index is out of range."
NUMERA_EXPORT ::arrow::Result<std::shared_ptr<::arrow::Array>> to_arrow(const hxArray* encoded,
                                                                        size_t index);

}  // namespace numera::io::arrow::core
