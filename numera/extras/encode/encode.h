#pragma once

/// \file
/// Makes host values readable: turns them into envelopes that the conversions to Arrow accept.
///
/// \code
///   using numera::extras::make_readable;
///
///   ARROW_ASSIGN_OR_RAISE(const hxArrayPtr written, core::to_numera(column));
///   ARROW_ASSIGN_OR_RAISE(const hxArrayPtr readable, make_readable(written.get()));
///   ARROW_ASSIGN_OR_RAISE(auto back, core::to_arrow<arrow::Array>(readable.get()));
///   // back is valid and has the values of column. Its type is returned_type(*column->type()).
///   // It borrows memory from readable.
/// \endcode
///
/// The core reads and writes different forms:
/// - It writes text as string arrays, bytes as cells, and nested values with one element per chunk.
/// - It reads text as packed UTF-8, bytes in packed form, and nested values of one chunk.
///
/// `make_readable` converts written values and ordinary values to the form that the core reads.
///
/// Any number of threads may call it at the same time, even with the same value, as long as no
/// thread writes that value.

#include <arrow/result.h>
#include <arrow/type_fwd.h>

#include <cstddef>
#include <memory>
#include <optional>

#include "numera/arrow_version.h"
#include "numera/export.h"
#include "numera/host/array.h"

namespace numera::extras {

/// Returns the readable form of one host value, as a new array that the caller owns: an encoded
/// array or a buffer envelope for `to_arrow`, or an encoded table for `to_arrow_table`.
///
/// Ordinary values of any shape, read in storage order:
/// - real numbers that are not sparse: unchanged
/// - logical arrays: packed
/// - string arrays, char arrays and cells of char rows: text. Missing texts become nulls. A char
///   array has two dimensions, and each row is one text. A cell array without cells is text
/// - cells of uint8 arrays: bytes
///
/// Written values. They have a field "ArrowType" ("array", "list_array", "struct", "map", "table"
/// or "buffer"). Each part of such a value may be in written or in readable form:
/// - numbers, times of day, timestamps and parts in readable form: unchanged
/// - "Data" that is an ordinary value: converted as above. "Valid" is kept, and missing texts
///   become nulls in addition
/// - categories: packed text; the codes do not change
/// - dates: timestamps without time zone. Days become seconds, milliseconds do not change
/// - time zones: the core writes one character per byte. If these bytes are valid UTF-8, they are
///   decoded; otherwise the time zone does not change
/// - values of the null type: doubles that are all null
/// - maps: lists of structs of "key" and "value"
/// - lists, structs and maps of several chunks: one chunk with one validity bitmap
///
/// A value without a readable form is an error. The message states the path and the reason:
/// `.Data: found a complex 2-by-3 double array, expected real numbers that are not
/// sparse.` The path of the outermost value is "Value". Inside a column of a table it begins with
/// the column, as in `Column 'price' (index 2).Data`.
///
/// TypeError:
/// - complex or sparse numbers; function handles and other classes
/// - objects that are neither string arrays nor encoded values; structs that are not encoded
/// - cells whose values are not all char rows or all uint8 arrays
/// - encoded values with a missing or empty field, or with a field of a wrong class
///
/// Invalid:
/// - a null pointer
/// - texts that are not UTF-16; categories with a missing text
/// - bitmaps, codes, offsets and lengths that do not fit, and columns of different lengths
/// - lists, structs and maps without chunks, and structs without fields: their type is not known
/// - everything that Arrow's full validation rejects
/// - nesting deeper than `kMaxNestingLevels`, where a map counts as two levels
///
/// If a column of a table fails, the status carries a `TableErrorStatusDetail` with the column's
/// name and 0-based index. The name is empty if it is not a text. If several columns fail, the call
/// reports the failure with the lowest column index.
///
/// The result always converts to Arrow, and the Arrow value passes `ValidateFull`. The result stays
/// valid after `value` is destroyed. Before each column of a table, `hxThrowIfInterruptPending` is
/// called. Exceptions of the host pass through.
///
/// `threads` threads make the columns of a table readable, one column per thread at a time; 0 means
/// one thread per processor that this process may use. The host must allow arrays to be made on one
/// thread and used on another.
///
/// Cost: parts that are already readable are not copied (they become shared copies). Parts
/// that could be invalid (packed texts and bytes, codes, offsets, times of day) are read once to
/// check them. Text is converted once. If a nested value has several chunks, Arrow
/// concatenates them, and the result is copied once more, to host memory.
NUMERA_EXPORT ::arrow::Result<hxArrayPtr> make_readable(const hxArray* value, size_t threads = 1);

/// The former name of `make_readable`.
[[deprecated("call make_readable")]] inline ::arrow::Result<hxArrayPtr> encode(
    const hxArray* value) {
  return make_readable(value);
}

/// The type of a value of `type` after a round trip: `to_numera`, `make_readable`, `to_arrow`. None
/// if such values cannot be written or have no readable form, or if `type` contains a null pointer
/// in place of a type. Nullability, metadata and the field names of lists are those that the core
/// sets, not those of `type`.
///
/// `type` must be owned by a `std::shared_ptr`, like all types that Arrow's factory functions make.
///
/// If a dictionary column has several chunks, their dictionaries are merged. The written column is
/// then unordered and has the index type that the merged dictionary needs. This function ignores
/// that case; `returns_as` accepts it.
NUMERA_EXPORT std::optional<std::shared_ptr<::arrow::DataType>> returned_type(
    const ::arrow::DataType& type);

/// Whether a column of type `from` may have type `to` after the round trip. True if `to` is
/// `returned_type(from)`. If `from` is itself a dictionary, also true if `to` is an unordered
/// dictionary of large utf8 with any index type. False if the round trip is not possible.
///
/// `from` must be owned by a `std::shared_ptr`. Cost of both functions: one step per node of the
/// type.
NUMERA_EXPORT bool returns_as(const ::arrow::DataType& from, const ::arrow::DataType& to);

}  // namespace numera::extras
