#pragma once

/// \file
/// Blocks too large for a slab. Blocks given back are kept for the next request of their size,
/// since the first write to fresh memory costs several times what the write itself does.
///
/// Sizes are rounded up to classes of which 32 lie between two powers of two: a block is at most
/// 1/32 larger than asked for, and fits every request of its class. All of this may be called on
/// any thread; one lock guards what is kept, and no system call is made while it is held.

#include <cstddef>

namespace numera::host::memory {

/// Size of the class that a request of `bytes`, at least 2048, belongs to.
size_t large_block_bytes(size_t bytes) noexcept;

struct LargeBlock {
  void* data;
  bool zeroed;  ///< fresh from the system, and zero therefore
};

/// A block of `large_block_bytes(bytes)`, aligned to 64 bytes, and to a huge page where it is no
/// smaller than one. Throws `std::bad_alloc`. O(1) but for the system's own cost.
LargeBlock take_large_block(size_t bytes);
/// Keeps the block, and gives the oldest kept ones back to the system while more than
/// `kMaxKeptBytes` are kept.
void give_large_block(void* block, size_t bytes) noexcept;

/// A block of another size with the contents of `block`, as far as they fit. Pages of blocks
/// mapped from the system are moved, not copied. Throws `std::bad_alloc`; the block is as before
/// then.
void* resize_large_block(void* block, size_t old_bytes, size_t bytes);

/// Gives all kept blocks back to the system; returns their bytes.
size_t release_kept_blocks() noexcept;

}  // namespace numera::host::memory
