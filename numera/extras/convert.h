#pragma once

/// \file
/// Arrow data to host values and back, each in one call. Begin here.
///
/// \code
///   ARROW_ASSIGN_OR_RAISE(auto host, numera::extras::convert_to_host(table));
///   ARROW_ASSIGN_OR_RAISE(auto back, numera::extras::convert_to_arrow_table(std::move(host)));
/// \endcode
///
/// These calls check what they are given, and what they return keeps its memory alive. The
/// conversions of core/ do neither: they trust their input, and read slices and lifetimes as their
/// headers say.

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

struct ToHostOptions {
  /// What may be cast on the way.
  IntakeOptions intake = {};
  /// Threads that convert the columns of a table; 0 means one per processor.
  size_t threads = 1;
  /// Receives what was cast, behind what it holds already. May be null.
  std::vector<IntakeCast>* casts = nullptr;
};

/// \name Towards the host
/// The encoded value of Arrow data from anywhere: `take_in`, then `to_numera`. Slices, offsets and
/// null counts are handled; the data is validated in full. The result is a new host value of the
/// caller. The data is only read, and not needed by the result.
///
/// Errors and exceptions: those of `take_in` and `to_numera`. The status of a column that fails
/// carries a `TableErrorStatusDetail` with its name and index.
///
/// Cost: that of `to_numera`, and one pass over the data to validate it.
/// @{
NUMERA_EXPORT ::arrow::Result<hxArrayPtr> convert_to_host(
    const std::shared_ptr<::arrow::Array>& array, const ToHostOptions& options = {});
NUMERA_EXPORT ::arrow::Result<hxArrayPtr> convert_to_host(
    const std::shared_ptr<::arrow::ChunkedArray>& column, const ToHostOptions& options = {});
NUMERA_EXPORT ::arrow::Result<hxArrayPtr> convert_to_host(
    const std::shared_ptr<::arrow::RecordBatch>& batch, const ToHostOptions& options = {});
NUMERA_EXPORT ::arrow::Result<hxArrayPtr> convert_to_host(
    const std::shared_ptr<::arrow::Table>& table, const ToHostOptions& options = {});
/// @}

/// \name Towards Arrow
/// The Arrow value of any host value that `make_readable` takes: ordinary values, and encoded ones
/// in written or readable form. The value is given away, also where the call fails. What is
/// returned passes `ValidateFull` and keeps the host value alive. To go on using the value, give
/// `hxSharedCopy` of it away.
///
/// With a type or a schema the result has exactly that one: names, nullability and metadata too.
/// Only casts that lose nothing are made: text, bytes and lists to 32-bit offsets, bytes to a fixed
/// width, whole days to dates, int64 to durations, lists of keys and values to maps, dictionaries
/// to another index type, doubles that are all null to the null type, and all of this within lists
/// and structs. A null type or schema asks for nothing.
///
/// Errors: those of `make_readable` and `own_to_arrow`, and for a type that no such cast leads to
/// TypeError "Column: found type X, expected Y, to which no cast leads without loss." The path
/// names the field: "Column.a[].b". Values that a cast would change are Invalid. A failing column
/// of a table carries a `TableErrorStatusDetail`.
///
/// Cost: that of `make_readable`, one small allocation per buffer, and a copy of what is cast.
/// @{
NUMERA_EXPORT ::arrow::Result<std::shared_ptr<::arrow::Array>> convert_to_arrow(
    hxArrayPtr value, const std::shared_ptr<::arrow::DataType>& type = nullptr);

/// `threads` threads convert the columns; 0 means one per processor.
NUMERA_EXPORT ::arrow::Result<std::shared_ptr<::arrow::Table>> convert_to_arrow_table(
    hxArrayPtr value, const std::shared_ptr<::arrow::Schema>& schema = nullptr, size_t threads = 1);
/// @}

}  // namespace numera::extras
