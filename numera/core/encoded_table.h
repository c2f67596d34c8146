#pragma once

/// \file
/// An encoded table from columns that were converted one by one, on any thread and in any order.
///
/// `to_numera` of a table is no more than this, with the host's interrupt check before each column:
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

/// The encoded array of a column without the struct around it: the values of its four fields, as
/// `to_numera` of a chunked array describes them. It owns them.
struct EncodedColumn {
  hxArrayPtr arrow_type;  ///< "ArrowType"
  hxArrayPtr type;        ///< "Type"
  hxArrayPtr data;        ///< "Data"
  hxArrayPtr valid;       ///< "Valid"
};

/// An encoded table on its way. It is whole when every column has been put in.
struct EncodedTable {
  hxArrayPtr envelope;  ///< owns all; what the caller keeps in the end
  hxArray* columns;     ///< "Columns" of the envelope, borrowed from it
};

/// The encoded table of `table` with all its names and no columns yet: the four fields of every
/// element of "Columns" are empty.
///
/// The table is only read, and not needed by the result.
///
/// Errors:
/// - null pointer: Invalid "Received null pointer in arrow::Table conversion"
/// - no schema: Invalid "Table: found no schema, expected one."
/// - another number of columns than fields: Invalid "Table: found N columns, expected M, one for
///   each field of the schema."
/// - a name that is not UTF-8: the host's `hxCodecError`
///
/// Cost: one host allocation a column, for its name.
NUMERA_EXPORT ::arrow::Result<EncodedTable> begin_encoded_table(const ::arrow::Table* table);

/// Column `i` of a table that `begin_encoded_table` has accepted, 0 <= `i` < number of columns.
/// The result belongs to the caller; on failure everything made so far is destroyed. Several
/// threads may convert columns of one table at a time.
///
/// Errors: those of `to_numera` of a chunked array, with a `util::TableErrorStatusDetail` that
/// names the column. Exceptions of the host pass through as they are.
NUMERA_EXPORT ::arrow::Result<EncodedColumn> encode_column(const ::arrow::Table& table, int i);

/// Moves a column into element `i` of "Columns", as `encode_column` of the same `i` gave it:
/// nothing is copied, and what stood there before is destroyed. One thread at a time. Throws
/// `std::out_of_range` "Struct index is out of range." for an `i` that the table does not have.
NUMERA_EXPORT void put_column(EncodedTable& table, int i, EncodedColumn column);

}  // namespace numera::io::arrow::core
