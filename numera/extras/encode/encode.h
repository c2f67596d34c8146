#pragma once

/// \file
/// Host values made readable: envelopes that the conversions towards Arrow read.
///
/// \code
///   ARROW_ASSIGN_OR_RAISE(const hxArrayPtr written, core::to_numera(column));
///   ARROW_ASSIGN_OR_RAISE(const hxArrayPtr readable,
///   numera::extras::make_readable(written.get())); ARROW_ASSIGN_OR_RAISE(auto back,
///   core::to_arrow<arrow::Array>(readable.get()));
///   // back is valid, equals column up to returned_type(*column->type()), and lives on readable.
/// \endcode
///
/// The core reads and writes different forms. It writes text as string arrays, bytes as cells, and
/// nested values chunk by chunk. It reads packed UTF-8, packed bytes, and one chunk.
/// `make_readable` turns what is written, and ordinary values, into what is read.
///
/// Any number of threads may call it at a time, with the same value too, as long as no thread
/// writes that value.

#include <arrow/result.h>
#include <arrow/type_fwd.h>

#include <cstddef>
#include <memory>
#include <optional>

#include "numera/arrow_version.h"
#include "numera/export.h"
#include "numera/host/array.h"

namespace numera::extras {

/// The readable form of one host value, a new array of the caller: an encoded array for
/// `to_arrow`, or for an encoded table an encoded table for `to_arrow_table`.
///
/// Ordinary values, of any shape and read in storage order:
/// - real numbers that are not sparse: as they are;
/// - logical arrays: packed;
/// - string arrays (missing texts are nulls), char arrays (a row is one text, a matrix of two
///   dimensions one text a row) and cells of char rows: text. A cell array without cells is text;
/// - cells of uint8 arrays: bytes.
///
/// Written values, recognised by their field "ArrowType" ("array", "list_array", "struct", "map",
/// "table", "buffer"), and parts of them in any mixture of written and readable form:
/// - numbers, times of day and timestamps as they are; values in readable form keep that form;
/// - "Data" that is an ordinary value becomes what is said above, "Valid" kept; missing texts are
///   nulls too;
/// - categories become packed text, codes stay;
/// - dates become timestamps without time zone: days as seconds, milliseconds as milliseconds;
/// - a time zone that stands one character a byte, as it is written, becomes the text of these
///   bytes where they are UTF-8;
/// - nulls without type become doubles that are all null;
/// - maps become lists of structs of "key" and "value";
/// - lists, structs and maps of several chunks become one chunk, their "Valid" one bitmap.
///
/// What has no readable form is refused with its path and the reason, in the form
/// `.Columns(2).Data: found a complex 2-by-3 double array, expected real numbers that are not
/// sparse.`; the path of the value itself is "Value":
/// - TypeError: complex and sparse numbers; function handles and other classes; objects but string
///   arrays and encoded values; structs that are not encoded; cells of anything else, or of mixed
///   content; encoded values that lack a field or have one of a wrong class;
/// - Invalid: a null pointer; texts that are not UTF-16; bitmaps, codes, offsets and
///   lengths that do not fit; categories with a missing text; lists, structs and maps without
///   chunks and structs without fields, whose type is not known; what Arrow's full validation
///   refuses; nesting deeper than `kMaxNestingLevels`, a map taking two levels.
///
/// What is wrong with a column of a table carries a `TableErrorStatusDetail` with the column's
/// name, empty where that is no text, and its 0-based index.
///
/// A value that is returned converts without failure and passes `ValidateFull`. It owns itself:
/// `value` is not needed any more. Before each column of a table `hxThrowIfInterruptPending` is
/// called. Exceptions of the host pass through.
///
/// `threads` threads make the columns of a table readable, one column each at a time; 0 means one
/// thread per processor that this process may use. The host must allow arrays to be made on one
/// thread and used on another. The failure of the lowest column comes out.
///
/// Cost: nothing is copied that is readable as it stands (shared copies), and every part is read
/// once to check it. Text is converted once. Several chunks of a nested value are joined in Arrow
/// and copied once more to the host.
NUMERA_EXPORT ::arrow::Result<hxArrayPtr> make_readable(const hxArray* value, size_t threads = 1);

/// The former name of `make_readable`.
[[deprecated("call make_readable")]] inline ::arrow::Result<hxArrayPtr> encode(
    const hxArray* value) {
  return make_readable(value);
}

/// The type of what `to_arrow` gives for `make_readable` of a written value of `type`; none where
/// such a value cannot be written or has no readable form, or a type within is a null pointer.
/// Field names of lists, nullability and metadata are those that the core gives.
///
/// `type` is one that a `std::shared_ptr` holds, as all types of Arrow's factories are.
///
/// A dictionary column of several chunks is written with the index type that its merged dictionary
/// needs, and unordered: `returns_as` allows for it.
NUMERA_EXPORT std::optional<std::shared_ptr<::arrow::DataType>> returned_type(
    const ::arrow::DataType& type);

/// Whether a column of type `from` may return as `to`: as `returned_type` says or, for a
/// dictionary, with any index type and unordered. False where it cannot return at all. Takes `from`
/// as `returned_type` takes its type. Cost of both: one step a node of the type.
NUMERA_EXPORT bool returns_as(const ::arrow::DataType& from, const ::arrow::DataType& to);

}  // namespace numera::extras
