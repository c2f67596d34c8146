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

/// The encoded array of a column without the struct around it: the values of its four fields.
struct EncodedColumn {
  hxArrayPtr arrow_type;
  hxArrayPtr type;
  hxArrayPtr data;
  hxArrayPtr valid;
};

/// An encoded table on its way. It is whole when every column has been put in.
struct EncodedTable {
  hxArrayPtr envelope;  ///< owns all; what the caller keeps in the end
  hxArray* columns;     ///< "Columns" of the envelope
};

/// The encoded table of `table` with all its names and no columns yet: the four fields of every
/// element of "Columns" are empty.
///
/// Errors: Invalid "Received null pointer in arrow::Table conversion"; Invalid for a table without
/// a schema, or of another number of columns than fields; the host's `hxCodecError` for a name that
/// is not UTF-8.
///
/// Cost: one host allocation a column, for its name.
NUMERA_EXPORT ::arrow::Result<EncodedTable> begin_encoded_table(const ::arrow::Table* table);

/// Column `i` of a table that `begin_encoded_table` has accepted, 0 <= `i` < number of columns.
/// The result belongs to the caller; on failure everything made so far is destroyed. Two threads
/// may convert two columns of one table at a time.
///
/// Errors: those of `to_numera` of a chunked array, with a `util::TableErrorStatusDetail` that
/// names the column. Exceptions of the host pass through as they are.
NUMERA_EXPORT ::arrow::Result<EncodedColumn> encode_column(const ::arrow::Table& table, int i);

/// Moves a column into element `i` of "Columns": nothing is copied. One thread at a time.
NUMERA_EXPORT void put_column(EncodedTable& table, int i, EncodedColumn column);

}  // namespace numera::io::arrow::core
