#pragma once

/// \file
/// The slabs that small blocks are cut from. They serve the caches of all threads
/// (thread_cache.h), which take and return many blocks at a time under the one lock of the slabs.
///
/// A chunk of memory is the size of a huge page and divided into slabs of 64 KiB; all blocks of a
/// slab have one size, a multiple of 64 bytes, so that a block is at most 63 bytes larger than
/// asked for. A slab whose blocks have all come back may take another size; a chunk whose slabs
/// have all come back joins the kept blocks (large_blocks.h), but for the last chunk, which stays.

#include <cstddef>
#include <span>

namespace numera::host::memory {

inline constexpr size_t kBlockStep = 64;
inline constexpr size_t kBlockSizes = 32;
inline constexpr size_t kLargestSmallBlock = kBlockStep * kBlockSizes;

/// Where blocks of up to `kLargestSmallBlock` bytes stand among the sizes.
constexpr size_t block_size_index(size_t bytes) {
  return bytes == 0 ? 0 : (bytes - 1) / kBlockStep;
}
constexpr size_t block_size(size_t index) { return (index + 1) * kBlockStep; }

/// Fills the front of `blocks` with blocks of a size, in descending order of their addresses, and
/// returns how many there are: at least one. Throws `std::bad_alloc`.
size_t take_small_blocks(size_t size_index, std::span<void*> blocks);
void return_small_blocks(std::span<void* const> blocks) noexcept;

}  // namespace numera::host::memory
