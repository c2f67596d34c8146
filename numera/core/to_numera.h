#pragma once

/// \file
/// Arrow arrays, chunked arrays, buffers and tables to host arrays.
///
/// Everything is copied into new host arrays, which the caller owns. The input is only read; a null
/// count that was unknown may be known afterwards, as Arrow's own functions keep it. On failure, by
/// status or by exception, every host array made so far is destroyed.
///
/// Threads: any number of threads may convert at a time, the same input too. A call works on the
/// calling thread alone; numera/extras/parallel/ spreads the columns of a table over several.

#include <arrow/array/array_base.h>
#include <arrow/buffer.h>
#include <arrow/chunked_array.h>
#include <arrow/result.h>
#include <arrow/table.h>

#include <memory>

#include "numera/arrow_version.h"
#include "numera/export.h"
#include "numera/host/array.h"

namespace numera::io::arrow::core {

/// The encoded array of one Arrow array: as of a chunked array with this one chunk.
/// A null pointer is Invalid "Received null pointer in arrow::Array conversion".
NUMERA_EXPORT ::arrow::Result<hxArrayPtr> to_numera(std::shared_ptr<::arrow::Array> array);

/// The encoded array of a chunked array: a 1-by-1 struct with the fields "ArrowType" (char row:
/// "array", "list_array", "struct" or "map"), "Type" (char row), "Valid" and "Data".
///
/// "Data" holds the values of all chunks one after another (nested types: one element a chunk);
/// values at null slots are copied as they stand. "Valid" of an "array" is one buffer envelope:
/// "Length" the number of elements, "Values" the bits (least significant first, 1 = valid) as a
/// uint8 column, or 0-by-1 where there is no null; for the other kinds, and where there are no
/// chunks, a struct array with one such envelope a chunk. Bits of a sliced chunk are read from the
/// start of its bitmap: remove offsets first where slices have nulls.
///
/// Errors:
/// - null pointer: Invalid "Received null pointer in arrow::Column conversion"
/// - a type that has no host form: TypeError "Unsupported type for Arrrow-NUMERA conversion: T"
/// - types nested deeper than `kMaxNestingLevels`: Invalid "Nested value: found more than 1024
///   levels, expected at most 1024."
/// - a type that is null, or that lacks the type of a field or of dictionary values: Invalid "Type:
///   found a null pointer, expected a type, with the types of all its fields and values."
/// - text that is not UTF-8, or that the host cannot store: Invalid "Could not convert string in
///   row R to UTF-16 string.\n", R counted from 0 in each chunk
/// - dictionaries of anything but text: Invalid "Invalid dictionary value type: T"
/// - memory of another device: Invalid "Buffer: found bytes that cannot be read here, expected main
///   memory."
/// - chunks that are not what their column says (structs may differ in the names, nullability and
///   metadata of their fields; each chunk is written with its own names), buffers that end before
///   their elements do, codes outside of their dictionary: Invalid that says what was found and
///   what was expected, such as "Values buffer: found 8 bytes, expected enough for 2 elements."
/// - dictionaries that cannot be merged: Arrow's status
/// - memory ends: the host's `std::bad_alloc`
///
/// Cost: one host allocation a result array (bytes: one an element), one block copy a chunk (text:
/// one pass). Peak memory is the result; the codes of several dictionary chunks, and the merged
/// dictionary, lie beside it for a while.
NUMERA_EXPORT ::arrow::Result<hxArrayPtr> to_numera(std::shared_ptr<::arrow::ChunkedArray> column);

/// The buffer envelope of a buffer: a 1-by-1 struct with the fields "ArrowType" ("buffer"),
/// "Values" (uint8 column of all its bytes) and "Length" (empty). A null buffer is an empty one.
/// Memory of another device is Invalid "Buffer: found bytes that cannot be read here, expected main
/// memory." Cost: one block copy.
NUMERA_EXPORT ::arrow::Result<hxArrayPtr> to_numera(std::shared_ptr<::arrow::Buffer> buffer);

/// The encoded table: a 1-by-1 struct with the fields "ArrowType" ("table"), "Columns" (n-by-1
/// struct array with the fields "ArrowType", "Type", "Data", "Valid") and "Names" (1-by-n cell of
/// char rows).
///
/// Before every column `hxThrowIfInterruptPending` is called; its exception passes through. Errors
/// of the table are those of `begin_encoded_table`, and a column that fails gives its status with a
/// `util::TableErrorStatusDetail` that names it. Cost: that of the columns.
NUMERA_EXPORT ::arrow::Result<hxArrayPtr> to_numera(std::shared_ptr<::arrow::Table> table);

}  // namespace numera::io::arrow::core
