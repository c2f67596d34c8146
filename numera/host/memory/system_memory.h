#pragma once

/// \file
/// Maps large blocks from the system and unmaps them.

#include <cstddef>

namespace numera::host::memory {

inline constexpr size_t kHugePage = size_t{2} * 1024 * 1024;

/// Blocks of at least this size are mapped separately; smaller blocks come from the heap.
inline constexpr size_t kMappedBytes = size_t{128} * 1024;

/// A block of zeros, or null on failure. A block of at least one huge page starts at a huge page
/// boundary. A block of at least two huge pages asks the system for huge pages, because the first
/// write to each page costs a page fault. This is only advice: a system without huge pages uses
/// small pages. The end of a block that does not fill a huge page uses small pages, so that a block
/// takes no more memory than requested.
void* map_block(size_t bytes) noexcept;
void unmap_block(void* block, size_t bytes) noexcept;
/// Resizes a block of `map_block`. Pages are moved, not copied. Returns null on failure and then
/// leaves `block` unchanged.
void* remap_block(void* block, size_t old_bytes, size_t bytes) noexcept;
/// Requests huge pages where they lie entirely inside the block. Does nothing if none does.
void advise_huge_pages(void* block, size_t bytes) noexcept;

}  // namespace numera::host::memory
