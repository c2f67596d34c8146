#pragma once

/// \file
/// A heap that fails on demand. Compiling failing_heap.cc into a program replaces `operator new`,
/// also in the libraries that the program loads.

#include <cstddef>

namespace numera::testing {

/// Lets the next `count` allocations of this thread by `operator new` succeed. The one after them
/// fails, once.
void FailHeapAfter(size_t count) noexcept;
/// Cancels that. Returns whether the allocation has failed.
bool EndHeapFailure() noexcept;

/// The number of blocks from `operator new` that are not yet freed, of all threads.
size_t LiveBlocks() noexcept;

}  // namespace numera::testing
