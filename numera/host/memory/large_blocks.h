#pragma once

/// \file
/// Blocks too large for a slab. Freed blocks are kept and reused for requests of the same size
/// class, because the first write to fresh memory costs several times as much as a write to used
/// memory.
///
/// Sizes are rounded up to size classes, 32 between each power of two and the next. A block is thus
/// at most 1/32 larger than requested and fits every request of its class. All functions may be
/// called on any thread. One lock guards the kept blocks; no system call is made while it is held.

#include <cstddef>

namespace numera::host::memory {

/// Block size of the class of a request of `bytes`. `bytes` is at least 2048.
size_t large_block_bytes(size_t bytes) noexcept;

struct LargeBlock {
  void* data;
  bool zeroed;  ///< fresh from the system and therefore all zeros
};

/// A block of `large_block_bytes(bytes)`, aligned to 64 bytes; a block of at least one huge page is
/// aligned to a huge page. Throws `std::bad_alloc`. O(1) apart from the cost of system calls.
LargeBlock take_large_block(size_t bytes);
/// Keeps the block for reuse. Gives the oldest kept blocks back to the system so that at most
/// `kMaxKeptBytes` are kept. A block that is larger than this goes back at once.
void give_large_block(void* block, size_t bytes) noexcept;

/// Resizes `block` and keeps its contents as far as they fit. Pages of blocks mapped from the
/// system are moved, not copied. Throws `std::bad_alloc` and then leaves the block unchanged.
void* resize_large_block(void* block, size_t old_bytes, size_t bytes);

/// Gives all kept blocks back to the system; returns their bytes.
size_t release_kept_blocks() noexcept;

}  // namespace numera::host::memory
