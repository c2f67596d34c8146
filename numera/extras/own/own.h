#pragma once

/// \file
/// Converts host arrays to Arrow values that own them.
///
/// `to_arrow` borrows: the caller must keep the host value alive. Here the Arrow value keeps it
/// alive. Every buffer of the result shares ownership of the whole host value. The host value lives
/// until the last buffer is released, including buffers of slices, children, dictionaries and
/// exports through the C data interface. No byte is copied; the addresses are those of `to_arrow`.
///
/// The last release destroys the host value, on whatever thread it happens. The host must allow
/// that (the in-memory host does). To keep using a value, pass `hxSharedCopy` of it: the copy
/// shares the memory, and a later write to either one does not change the other.
///
/// Thread safety is as in to_arrow.h. The Arrow values may be used and released on any thread.
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

/// `to_arrow<T>` that takes ownership of the value. Errors and exceptions are the same, and each of
/// them destroys the value. A null pointer is refused like any value that is not a struct.
///
/// Cost: that of `to_arrow` plus one small allocation per buffer.
template <class T>
  requires std::same_as<T, ::arrow::Array> || std::same_as<T, ::arrow::Buffer>
NUMERA_EXPORT ::arrow::Result<std::shared_ptr<T>> own_to_arrow(hxArrayPtr encoded);

/// `own_to_arrow` for arrays, defined in the library.
template <>
NUMERA_EXPORT ::arrow::Result<std::shared_ptr<::arrow::Array>> own_to_arrow<::arrow::Array>(
    hxArrayPtr encoded);
/// `own_to_arrow` for buffers, defined in the library.
template <>
NUMERA_EXPORT ::arrow::Result<std::shared_ptr<::arrow::Buffer>> own_to_arrow<::arrow::Buffer>(
    hxArrayPtr encoded);

/// `to_arrow_table` that takes ownership of the value and names the failing column: the message
/// begins with "Column 'price' (index 1)", and the status carries a `TableErrorStatusDetail` with
/// the column's name and 0-based index. Any failure destroys the value.
///
/// Errors:
/// - the table's own fields are wrong: as `to_arrow_table`, without detail
/// - a column fails: its status as `to_arrow_table` gives it, with the column and the detail
/// - the host throws a `std::exception` while the name or the values of a column are read: Invalid
///   with the text of its `what()`, and the detail (with an empty name if the name cannot be read)
/// - `std::bad_alloc`, exceptions of other kinds, and exceptions of `hxThrowIfInterruptPending`
///   pass through. `hxThrowIfInterruptPending` is called before every column.
///
/// Cost: that of `to_arrow_table` plus one small allocation per buffer.
NUMERA_EXPORT ::arrow::Result<std::shared_ptr<::arrow::Table>> own_to_arrow_table(
    hxArrayPtr encoded);

}  // namespace numera::extras
