#pragma once

/// \file
/// What a thread has for itself: some small blocks at hand, so that few of its requests take a
/// lock, and its part of the counts of live arrays and bytes.
///
/// A block may be taken on one thread and given back on another. At its end a thread returns its
/// blocks and leaves its counts behind; what it does after that, in destructors that run later,
/// goes to the shared slabs and counts directly.

#include <cstddef>

namespace numera::host::memory {

/// A block of at least `bytes`, at most `kLargestSmallBlock`, aligned to 64 bytes. Throws
/// `std::bad_alloc`. O(1).
void* take_small_block(size_t bytes);
void give_small_block(void* block, size_t bytes) noexcept;

/// Returns the blocks that this thread has at hand.
void return_blocks_at_hand() noexcept;

/// Adds to the counts of all threads.
void count_live(std::ptrdiff_t arrays, std::ptrdiff_t bytes) noexcept;

struct LiveCounts {
  std::ptrdiff_t arrays = 0;
  std::ptrdiff_t bytes = 0;
};
/// The sums over all threads: exact where no other thread makes or destroys an array.
LiveCounts live_counts() noexcept;

}  // namespace numera::host::memory
