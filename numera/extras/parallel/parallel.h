#pragma once

/// \file
/// Converts tables to the host, with their columns spread over threads.
///
/// \code
///   ARROW_ASSIGN_OR_RAISE(hxArrayPtr encoded, numera::extras::parallel_to_numera(table, 0));
/// \endcode

#include <arrow/result.h>
#include <arrow/table.h>

#include <cstddef>
#include <memory>

#include "numera/arrow_version.h"
#include "numera/export.h"
#include "numera/host/array.h"

namespace numera::extras {

/// `to_numera` of a table: the same value, field for field, and the same errors, but that the
/// message of a column that fails begins with "Column 'price' (index 1)". `threads` threads convert
/// the columns, one column each at a time; 0 means one thread per processor that this process may
/// use. There are never more threads than columns. A column is never split between threads. The
/// host must allow arrays to be made on one thread and used on another (the in-memory host does).
///
/// The calling thread hands out the columns in order, and pauses if too many of them wait for a
/// thread. It calls `hxThrowIfInterruptPending` before each column; no other thread calls it. With
/// 1 thread, or if the system gives none, no thread is started and the calling thread converts the
/// columns too.
///
/// Errors: a column may fail by status or by exception. The call returns or throws the failure with
/// the lowest column index, as `to_numera` would. An interrupt counts as a failure of the next
/// column. After a failure no further column is handed out. Before the call returns or throws a
/// failure, all threads have ended and everything made so far is destroyed.
///
/// The result belongs to the caller. Several threads may call this at the same time. Each call has
/// its own threads.
///
/// Cost: that of `to_numera`, divided by the number of threads if the columns are of similar size,
/// plus the start of the threads. Tables of many short columns gain little.
NUMERA_EXPORT ::arrow::Result<hxArrayPtr> parallel_to_numera(std::shared_ptr<::arrow::Table> table,
                                                             size_t threads);

}  // namespace numera::extras
