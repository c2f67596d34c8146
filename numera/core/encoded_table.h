#pragma once

/// \file
/// Builds an encoded table from columns that are converted one by one, on any thread, in any order.
///
/// `to_numera` of a table does the same, plus the host's interrupt check before each column:
///
/// \code
///   ARROW_ASSIGN_OR_RAISE(EncodedTable encoded, begin_encoded_table(table.get()));
///   for (int i = 0; i < table->num_columns(); ++i) {
///     ARROW_ASSIGN_OR_RAISE(EncodedColumn column, encode_column(*table, i));
///     put_column(encoded, i, std::move(column));
///   }
///   return std::move(encoded.envelope);
/// \endcode

#include <arrow/result.h>
#include <arrow/table.h>

#include "numera/arrow_version.h"
#include "numera/export.h"
#include "numera/host/array.h"

namespace numera::io::arrow::core {

/// The encoded array of a column without the struct around it. It owns the values of the four
/// fields, which `to_numera` of a chunked array describes.
struct EncodedColumn {
  hxArrayPtr arrow_type;  ///< "ArrowType"
  hxArrayPtr type;        ///< "Type"
  hxArrayPtr data;        ///< "Data"
  hxArrayPtr valid;       ///< "Valid"
};

/// An encoded table under construction. It is complete when every column has been put in.
struct EncodedTable {
  hxArrayPtr envelope;  ///< owns everything; the finished table
  hxArray* columns;     ///< "Columns" of the envelope, borrowed from it
};

/// Starts the encoded table of `table`. It has all names but no columns yet: the four fields of
/// every element of "Columns" are empty.
///
/// `table` is only read, and the result does not refer to it.
///
/// Errors:
/// - null pointer: Invalid "Received null pointer in arrow::Table conversion"
/// - no schema: Invalid "Table: found no schema, expected one."
/// - number of columns differs from number of fields: Invalid "Table: found N columns, expected M,
///   one for each field of the schema."
/// - a name that is not UTF-8: the host's `hxCodecError`
///
/// Cost: one host allocation per column, for its name.
NUMERA_EXPORT ::arrow::Result<EncodedTable> begin_encoded_table(const ::arrow::Table* table);

/// Converts column `i` of a table that `begin_encoded_table` has accepted, 0 <= `i` < number of
/// columns. The result belongs to the caller. On failure everything made so far is destroyed.
/// Several threads may convert columns of the same table at the same time.
///
/// Errors: those of `to_numera` of a chunked array, with a `util::TableErrorStatusDetail` that
/// names the column. Exceptions of the host pass through as they are.
NUMERA_EXPORT ::arrow::Result<EncodedColumn> encode_column(const ::arrow::Table& table, int i);

/// Moves a column that `encode_column` made with the same `i` into element `i` of "Columns".
/// Nothing is copied, and the previous contents of the element are destroyed. Call it from one
/// thread at a time. Throws `std::out_of_range` "Struct index is out of range." if the table has no
/// column `i`.
NUMERA_EXPORT void put_column(EncodedTable& table, int i, EncodedColumn column);

}  // namespace numera::io::arrow::core
