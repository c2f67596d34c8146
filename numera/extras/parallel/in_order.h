#pragma once

/// \file
/// Runs independent pieces of work on several threads, with the outcome of a loop over them.

#include <arrow/status.h>

#include <cstddef>
#include <functional>

namespace numera::extras::parallel {

/// Returns `threads`, or the number of processors that this process may use if `threads` is 0.
size_t thread_count(size_t threads);

/// `for (i = 0; i < count; ++i) { before(i); work(i); }` on several threads. Up to `threads` other
/// threads call `work`. The calling thread calls `before(i)` for each piece before it hands the
/// piece out. At most `ahead` pieces that were handed out wait for a thread. `work(i)` may begin
/// before the work of a lower index has ended. A failure, by status or by exception, ends the loop.
/// When all threads have ended, the failure with the lowest index is returned or thrown. If
/// `threads` or `count` is at most 1, or no thread can be started, the calling thread does
/// everything.
::arrow::Status in_order(size_t count, size_t threads, size_t ahead,
                         const std::function<void(size_t)>& before,
                         const std::function<::arrow::Status(size_t)>& work);

}  // namespace numera::extras::parallel
