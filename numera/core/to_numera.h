#pragma once

/// \file
/// Arrow arrays, chunked arrays, buffers and tables to host arrays.
///
/// Everything is copied into new host arrays, which the caller owns. The input is only read, except
/// that an unknown null count may be filled in, as Arrow's own functions do. On failure, by status
/// or by exception, every host array made so far is destroyed.
///
/// Threads: any number of threads may convert at the same time, even the same input. A call uses
/// only the calling thread. numera/extras/parallel/ spreads the columns of a table over several
/// threads.

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

/// The encoded array of one Arrow array, the same as for a chunked array with this one chunk. A
/// null pointer is Invalid "Received null pointer in arrow::Array conversion".
NUMERA_EXPORT ::arrow::Result<hxArrayPtr> to_numera(std::shared_ptr<::arrow::Array> array);

/// The encoded array of a chunked array: a 1-by-1 struct with the fields "ArrowType" (char row:
/// "array", "list_array", "struct" or "map"), "Type" (char row), "Valid" and "Data".
///
/// - "Data" holds the values of all chunks one after another (nested types: one element per chunk).
///   Values at null slots are copied unchanged.
/// - "Valid" of an "array" with at least one chunk is one buffer envelope. "Length" is the number
///   of elements. "Values" has the bits (least significant first, 1 = valid) as a uint8 column, or
///   is 0-by-1 if there is no null.
/// - "Valid" of all other columns is a struct array with one such envelope per chunk.
///
/// The offset of a sliced chunk is not applied to bits: its validity bitmap and its boolean values
/// are read from the start of their buffers. Copy slices of booleans and slices with nulls to an
/// array of offset 0 first, or call `convert_to_host` (numera/extras/convert.h), which does so.
///
/// Errors:
/// - null pointer: Invalid "Received null pointer in arrow::Column conversion"
/// - a type without a host form: TypeError "Unsupported type for Arrrow-NUMERA conversion: T"
/// - types nested deeper than `kMaxNestingLevels`: Invalid "Nested value: found more than 1024
///   levels, expected at most 1024."
/// - a null pointer in place of the type of the column, of a field or of dictionary values: Invalid
///   "Type: found a null pointer, expected a type, with the types of all its fields and values."
/// - text that is not UTF-8, or that the host cannot store: Invalid "Could not convert string in
///   row R to UTF-16 string.\n", where R counts from 0 in each chunk
/// - dictionaries of anything but text: Invalid "Invalid dictionary value type: T"
/// - memory of another device: Invalid "Buffer: found bytes that cannot be read here, expected main
///   memory."
/// - chunks that do not match their column, buffers too short for their elements, codes outside
///   their dictionary: Invalid; the message states what was found and what was expected, such as
///   "Values buffer: found 8 bytes, expected enough for 2 elements." Struct chunks may differ in
///   the names, nullability and metadata of their fields; each chunk is written with its own names.
/// - dictionaries that cannot be merged: Arrow's status
/// - out of memory: the host's `std::bad_alloc`
///
/// Cost: one host allocation per result array (byte strings: one per element) and one block copy
/// per chunk (text: one pass). Peak memory is the size of the result. A dictionary column of
/// several chunks also needs temporary memory for its new codes and the merged dictionary.
NUMERA_EXPORT ::arrow::Result<hxArrayPtr> to_numera(std::shared_ptr<::arrow::ChunkedArray> column);

/// The buffer envelope of a buffer: a 1-by-1 struct with the fields "ArrowType" ("buffer"),
/// "Values" (uint8 column of all its bytes) and "Length" (empty). A null pointer counts as an empty
/// buffer. Memory of another device, no memory although the size is not 0, or a negative size is
/// Invalid "Buffer: found bytes that cannot be read here, expected main memory." Cost: one block
/// copy.
NUMERA_EXPORT ::arrow::Result<hxArrayPtr> to_numera(std::shared_ptr<::arrow::Buffer> buffer);

/// The encoded table: a 1-by-1 struct with the fields "ArrowType" ("table"), "Columns" (n-by-1
/// struct array with the fields "ArrowType", "Type", "Data", "Valid") and "Names" (1-by-n cell of
/// char rows).
///
/// Calls `hxThrowIfInterruptPending` before each column; its exception passes through. Errors of
/// the table are those of `begin_encoded_table`. A column that fails gives its status, with a
/// `util::TableErrorStatusDetail` that names the column. Cost: that of the columns.
NUMERA_EXPORT ::arrow::Result<hxArrayPtr> to_numera(std::shared_ptr<::arrow::Table> table);

}  // namespace numera::io::arrow::core
