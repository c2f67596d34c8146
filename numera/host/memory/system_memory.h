#pragma once

/// \file
/// Large blocks from the system, and back to it.

#include <cstddef>

namespace numera::host::memory {

inline constexpr size_t kHugePage = size_t{2} * 1024 * 1024;

/// Blocks from this size on are mapped on their own, smaller ones are the heap's.
inline constexpr size_t kMappedBytes = size_t{128} * 1024;

/// A block of zeros, or null. One of at least a huge page begins where a huge page does; one of
/// several asks for huge pages, since the first write to fresh memory costs a fault a page. It is
/// advice: a system without huge pages goes on with small ones. The end that fills no huge page
/// keeps small ones, so that no block takes more memory than it was made for.
void* map_block(size_t bytes) noexcept;
void unmap_block(void* block, size_t bytes) noexcept;
/// A block of another size as `map_block` makes it, with the pages of `block`, which are moved and
/// not copied; null where that fails, and `block` is as before then.
void* remap_block(void* block, size_t old_bytes, size_t bytes) noexcept;
/// Asks for huge pages.
void advise_huge_pages(void* block, size_t bytes) noexcept;

}  // namespace numera::host::memory
