#pragma once

/// \file
/// Small blocks are cut from slabs. Slabs serve the caches of all threads (thread_cache.h). A cache
/// takes and returns many blocks at a time; one lock guards all slabs.
///
/// A chunk of memory has the size of a huge page and is divided into slabs of 64 KiB. All blocks of
/// a slab have the same size, a multiple of 64 bytes: a block is at most 63 bytes larger than
/// requested. When all blocks of a slab are free, the slab can be reused for another block size.
/// When all slabs of a chunk are free, the chunk joins the kept blocks (large_blocks.h). The last
/// chunk stays.

#include <cstddef>
#include <span>

namespace numera::host::memory {

inline constexpr size_t kBlockStep = 64;
inline constexpr size_t kBlockSizes = 32;
inline constexpr size_t kLargestSmallBlock = kBlockStep * kBlockSizes;

/// Index of the block size for a request of at most `kLargestSmallBlock` bytes.
constexpr size_t block_size_index(size_t bytes) {
  return bytes == 0 ? 0 : (bytes - 1) / kBlockStep;
}
constexpr size_t block_size(size_t index) { return (index + 1) * kBlockStep; }

/// Fills the front of `blocks` with blocks of one size, in descending order of their addresses.
/// Returns their number, at least one. Throws `std::bad_alloc`.
size_t take_small_blocks(size_t size_index, std::span<void*> blocks);
void return_small_blocks(std::span<void* const> blocks) noexcept;

}  // namespace numera::host::memory
