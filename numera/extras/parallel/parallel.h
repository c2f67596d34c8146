#pragma once

/// \file
/// Tables to the host with their columns spread over threads.
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

/// `to_numera` of a table: the same value, field for field, and the same errors. So many threads
/// convert its columns, one column each at a time, but never more threads than there are columns; 0
/// stands for as many as the processors that this process may use. What lies within a column stays
/// on one thread. The host must allow arrays to be made on one thread and used on another (the
/// in-memory one does).
///
/// The calling thread hands the columns out, in order and only as fast as they are taken, and calls
/// `hxThrowIfInterruptPending` before each; no other thread calls it. With 1 thread it converts
/// them, too, and no thread is started; nor where the system gives none.
///
/// Errors: of the columns that fail, by a status or by an exception, the one of the lowest index
/// comes out, on the calling thread, as it would come out of `to_numera`; an interrupt counts as a
/// failure of the column that would have been next. After a failure no further column is handed
/// out. Whatever comes out, every thread has ended by then and what was made is destroyed.
///
/// The result belongs to the caller. Several threads may call this at a time, each call with
/// threads of its own.
///
/// Cost: that of `to_numera`, divided by the threads as far as the columns are of even size, and
/// the start of the threads. Tables of many short columns gain little.
NUMERA_EXPORT ::arrow::Result<hxArrayPtr> parallel_to_numera(std::shared_ptr<::arrow::Table> table,
                                                             size_t threads);

}  // namespace numera::extras
