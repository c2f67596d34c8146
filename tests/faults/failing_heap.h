#pragma once

/// \file
/// A heap that fails on demand. A program that compiles failing_heap.cc has its `operator new`
/// replaced, that of the libraries it loads too.

#include <cstddef>

namespace numera::testing {

/// Lets the next `count` allocations of this thread by `operator new` succeed and the one after
/// them fail, once.
void FailHeapAfter(size_t count) noexcept;
/// Ends that, and tells whether the allocation has failed.
bool EndHeapFailure() noexcept;

/// Blocks from `operator new` that are not yet freed, of all threads.
size_t LiveBlocks() noexcept;

}  // namespace numera::testing
