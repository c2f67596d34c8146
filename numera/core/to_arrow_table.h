#pragma once

/// \file
/// Encoded host tables to Arrow tables. Threads as in to_arrow.h.

#include <arrow/result.h>
#include <arrow/table.h>

#include <memory>

#include "numera/arrow_version.h"
#include "numera/export.h"
#include "numera/host/array.h"

namespace numera::io::arrow::core {

/// Converts an encoded table: a struct with the fields "ArrowType" (char; its text is not checked),
/// "Names" (cell of char rows; a value of another class gives an empty name) and "Columns" (n-by-1
/// struct array, element i is the encoded array of column i).
///
/// Fields are nullable and have no metadata. The lengths of the columns are not compared. Like the
/// result of `to_arrow`, the table borrows the memory of `encoded`.
///
/// Calls `hxThrowIfInterruptPending` before each column; its exception passes through.
///
/// Errors:
/// - an empty field or one of another class: TypeError as in `to_arrow`, for the first such field
/// - fewer names than columns: the host's `std::out_of_range` "Cell index is out of range."
/// - a column that fails: its status, unchanged
/// - a "Valid" with fewer bits than its column has elements: Invalid "Field 'Valid': found 1 bytes,
///   expected enough for 9 elements." The check is needed because Arrow counts the nulls of columns
///   when it makes a table.
///
/// Cost: O(1) per column, plus Arrow's count of the nulls in columns that have a bitmap.
NUMERA_EXPORT ::arrow::Result<std::shared_ptr<::arrow::Table>> to_arrow_table(
    const hxArray* encoded);

/// The check that `to_arrow_table` runs on each converted column before it makes the table. Call it
/// if you build tables yourself: Arrow counts the nulls of the columns, and trusts their lengths
/// and bitmaps.
///
/// Errors:
/// - a negative length with a bitmap: Invalid "Array: found offset 0 and length -1, expected
///   neither negative and their sum within 64 bits."
/// - a bitmap that is too short: Invalid as above
///
/// Cost: O(1).
NUMERA_EXPORT ::arrow::Status check_table_column(const ::arrow::Array& array);

}  // namespace numera::io::arrow::core
