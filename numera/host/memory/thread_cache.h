#pragma once

/// \file
/// Thread-local data: a cache of small blocks, so that few requests take a lock, and the thread's
/// part of the counts of live arrays and bytes.
///
/// A block may be taken on one thread and given back on another. A thread that ends returns its
/// blocks and adds its counts to the shared ones. Destructors that run later on this thread use the
/// shared slabs and counts directly.

#include <cstddef>

namespace numera::host::memory {

/// A block of at least `bytes`, at most `kLargestSmallBlock`, aligned to 64 bytes. Throws
/// `std::bad_alloc`. O(1).
void* take_small_block(size_t bytes);
void give_small_block(void* block, size_t bytes) noexcept;

/// Returns the cached blocks of this thread to the slabs.
void return_blocks_at_hand() noexcept;

/// Adds to the counts of live arrays and bytes.
void count_live(std::ptrdiff_t arrays, std::ptrdiff_t bytes) noexcept;

struct LiveCounts {
  std::ptrdiff_t arrays = 0;
  std::ptrdiff_t bytes = 0;
};
/// The sums over all threads. They are exact if no other thread creates or destroys arrays.
LiveCounts live_counts() noexcept;

}  // namespace numera::host::memory
