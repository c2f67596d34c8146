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

/// Converts an encoded table: a struct with the fields "ArrowType" (char; its text is not
/// compared), "Names" (cell of char rows; another class gives the empty name) and "Columns"
/// (n-by-1 struct array, element i the encoded array of column i). Fields are nullable and carry
/// no metadata; the lengths of the columns are not compared. The table borrows the memory of
/// `encoded` like `to_arrow`.
///
/// Before every column `hxThrowIfInterruptPending` is called; its exception passes through.
///
/// Errors:
/// - a field empty or of another class: TypeError as in `to_arrow`, the first failing one only
/// - fewer names than columns: the host's `std::out_of_range` "Cell index is out of range."
/// - a column that fails: its status, unchanged
/// - a "Valid" with fewer bits than its column has elements: Invalid "Field 'Valid': found 1 bytes,
///   expected enough for 9 elements.", since Arrow counts the nulls of a table's columns when it is
///   made
///
/// Cost: O(1) a column, and Arrow's count of the nulls of columns that have a bitmap.
NUMERA_EXPORT ::arrow::Result<std::shared_ptr<::arrow::Table>> to_arrow_table(
    const hxArray* encoded);

/// What `to_arrow_table` asks of a converted column before it joins the table, for those who put
/// tables together themselves. Arrow counts the nulls of the column then, and trusts its length and
/// its bitmap.
///
/// Errors:
/// - a negative length with a bitmap: Invalid "Array: found offset 0 and length -1, expected
///   neither negative and their sum within 64 bits."
/// - a bitmap that is too short: Invalid as above
///
/// Cost: O(1).
NUMERA_EXPORT ::arrow::Status check_table_column(const ::arrow::Array& array);

}  // namespace numera::io::arrow::core
