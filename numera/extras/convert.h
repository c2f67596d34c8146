#pragma once

/// \file
/// Arrow data to host values and back, each in one call. Begin here.
///
/// \code
///   ARROW_ASSIGN_OR_RAISE(auto host, numera::extras::convert_to_host(table));
///   ARROW_ASSIGN_OR_RAISE(auto back, numera::extras::convert_to_arrow_table(std::move(host)));
/// \endcode
///
/// These functions validate their input, and each result keeps alive the memory that it uses. The
/// conversions in core/ do neither: they trust their input, and their headers state how they treat
/// slices and lifetimes.

#include <arrow/array/array_base.h>
#include <arrow/chunked_array.h>
#include <arrow/record_batch.h>
#include <arrow/result.h>
#include <arrow/table.h>
#include <arrow/type_fwd.h>

#include <cstddef>
#include <memory>
#include <vector>

#include "numera/arrow_version.h"
#include "numera/export.h"
#include "numera/extras/intake/intake.h"
#include "numera/host/array.h"

namespace numera::extras {

/// How Arrow data is taken to the host.
struct ToHostOptions {
  /// What `take_in` may cast before the conversion.
  IntakeOptions intake = {};
  /// Number of threads that convert the columns of a table or record batch. 0 means one per
  /// processor that this process may use.
  size_t threads = 1;
  /// If not null, the casts that were made are appended to this vector.
  std::vector<IntakeCast>* casts = nullptr;
};

/// Converts Arrow data from any source to its encoded value: calls `take_in`, then `to_numera`.
/// Slices, array offsets and unknown null counts are allowed. The data is validated completely. The
/// result is a new host value that the caller owns. The data is only read, and the result does not
/// refer to it.
///
/// Errors and exceptions: those of `take_in` and `to_numera`. If a column of a table fails, the
/// message begins with "Column 'price' (index 1)", and the status carries a
/// `TableErrorStatusDetail` with the name and the index. The same holds for every status of a
/// column below.
///
/// Cost: that of `to_numera`, and one pass over the data to validate it.
NUMERA_EXPORT ::arrow::Result<hxArrayPtr> convert_to_host(
    const std::shared_ptr<::arrow::Array>& array, const ToHostOptions& options = {});
/// The same for a column: all chunks.
NUMERA_EXPORT ::arrow::Result<hxArrayPtr> convert_to_host(
    const std::shared_ptr<::arrow::ChunkedArray>& column, const ToHostOptions& options = {});
/// The same for a record batch: an encoded table.
NUMERA_EXPORT ::arrow::Result<hxArrayPtr> convert_to_host(
    const std::shared_ptr<::arrow::RecordBatch>& batch, const ToHostOptions& options = {});
/// The same for a table: an encoded table.
NUMERA_EXPORT ::arrow::Result<hxArrayPtr> convert_to_host(
    const std::shared_ptr<::arrow::Table>& table, const ToHostOptions& options = {});

/// Converts any host value that `make_readable` accepts to an Arrow value: ordinary values, and
/// encoded values in written or readable form. The call takes ownership of the value, even if it
/// fails; to keep using the value, pass `hxSharedCopy` of it. The result passes `ValidateFull` and
/// keeps the host memory that it uses alive.
///
/// If a type or a schema is given, the result has exactly this type or schema, including names,
/// nullability and metadata. If it is null, nothing is cast. Only casts without loss are made, also
/// inside lists, structs and maps:
/// - text, bytes and lists to 32-bit offsets
/// - text and bytes to views
/// - bytes to a fixed width
/// - timestamps of whole days, without time zone, to dates
/// - int64 to durations
/// - lists of structs of key and value to maps
/// - dictionaries to another index type, and their texts as above
/// - doubles that are all null to the null type
///
/// Errors are those of `make_readable` and `own_to_arrow`, and:
/// - TypeError "Value: found an encoded value of the kind 'table', expected an array.", and the
///   other way round
/// - TypeError "Column: found type X, expected Y or a type that can be cast to it without loss."
///   Inside nested types the message starts with the path of the field, such as "Column.a[].b".
///   In a table the path starts with the column, such as "Column 'price' (index 1).a[].b"
/// - Invalid if a cast would change a value
/// - Invalid for nulls in a field that is not nullable, for column names that differ from the
///   schema, and for a type that contains a null pointer or nests too deeply
///
/// If a column of a table fails, the status carries a `TableErrorStatusDetail`.
///
/// Cost: that of `make_readable`, plus one small allocation per buffer and one copy of all values
/// that are cast.
NUMERA_EXPORT ::arrow::Result<std::shared_ptr<::arrow::Array>> convert_to_arrow(
    hxArrayPtr value, const std::shared_ptr<::arrow::DataType>& type = nullptr);

/// The same for an encoded table. `threads` is the number of threads that convert the columns. 0
/// means one per processor that this process may use.
NUMERA_EXPORT ::arrow::Result<std::shared_ptr<::arrow::Table>> convert_to_arrow_table(
    hxArrayPtr value, const std::shared_ptr<::arrow::Schema>& schema = nullptr, size_t threads = 1);

}  // namespace numera::extras
