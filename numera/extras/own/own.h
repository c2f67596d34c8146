#pragma once

/// \file
/// Host arrays to Arrow values that own them.
///
/// `to_arrow` borrows: its caller keeps the host value alive. Here the Arrow value keeps it alive.
/// Every buffer of the result shares in the ownership of the whole host value, so it lives until
/// the last one goes: that of a slice, a child, a dictionary, or an export through the C data
/// interface. No byte is copied; the addresses are those of `to_arrow`.
///
/// The last release destroys the host value, on whichever thread it happens: the host must allow
/// that (the in-memory one does). To go on using a value, give `hxSharedCopy` of it away: it shares
/// the memory, and a later write to either leaves the other as it is.
///
/// Threads as in to_arrow.h; the Arrow values may be used and released on any thread.
///
/// \code
///   auto column = numera::extras::own_to_arrow<arrow::Array>(std::move(envelope));
///   return column;  // nothing else to keep
/// \endcode

#include <arrow/array/array_base.h>
#include <arrow/buffer.h>
#include <arrow/result.h>
#include <arrow/table.h>

#include <concepts>
#include <memory>

#include "numera/arrow_version.h"
#include "numera/export.h"
#include "numera/host/array.h"

namespace numera::extras {

/// `to_arrow<T>` of a value that is given away, with its errors and exceptions unchanged. Either
/// destroys the value. A null pointer is refused like any value that is no struct.
///
/// Cost: that of `to_arrow` and one small allocation a buffer.
template <class T>
  requires std::same_as<T, ::arrow::Array> || std::same_as<T, ::arrow::Buffer>
NUMERA_EXPORT ::arrow::Result<std::shared_ptr<T>> own_to_arrow(hxArrayPtr encoded);

/// The conversion to arrays that is described above; the library holds it.
template <>
NUMERA_EXPORT ::arrow::Result<std::shared_ptr<::arrow::Array>> own_to_arrow<::arrow::Array>(
    hxArrayPtr encoded);
/// The conversion to buffers that is described above; the library holds it.
template <>
NUMERA_EXPORT ::arrow::Result<std::shared_ptr<::arrow::Buffer>> own_to_arrow<::arrow::Buffer>(
    hxArrayPtr encoded);

/// `to_arrow_table` of a value that is given away, and the failing column named: the status carries
/// a `TableErrorStatusDetail` with its name and 0-based index. Any failure destroys the value.
///
/// Errors:
/// - of the table's own fields: as `to_arrow_table`, without detail
/// - a column that fails: its status as `to_arrow_table` gives it, with the detail
/// - a `std::exception` that the host throws while the name or the values of a column are read:
///   Invalid with the text of its `what()`, and the detail (an empty name where the name is what
///   cannot be read)
/// - `std::bad_alloc`, exceptions of other kinds, and what `hxThrowIfInterruptPending` throws pass
///   through; it is called before every column.
///
/// Cost: that of `to_arrow_table` and one small allocation a buffer.
NUMERA_EXPORT ::arrow::Result<std::shared_ptr<::arrow::Table>> own_to_arrow_table(
    hxArrayPtr encoded);

}  // namespace numera::extras
