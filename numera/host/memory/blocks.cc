#include "numera/host/memory/blocks.h"

#include <malloc.h>
#include <stdlib.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <optional>

#include "numera/host/memory.h"
#include "numera/host/memory/large_blocks.h"
#include "numera/host/memory/slabs.h"
#include "numera/host/memory/thread_cache.h"

#ifdef NUMERA_HOST_CHECKED_MEMORY
#include <sanitizer/asan_interface.h>
#endif

namespace numera::host::memory {
namespace {

// Read at every allocation, so its TLS model avoids a function call (see thread_cache.cc).
[[gnu::tls_model(
    "initial-exec")]] thread_local constinit std::optional<size_t> allocations_until_failure;

// Bytes in front of a block of `allocate`. They store its size and keep the block aligned.
constexpr size_t kPrefix = alignof(std::max_align_t);
static_assert(sizeof(size_t) <= kPrefix);

void count_allocation_of(size_t bytes) {
  count_allocation();
  if (bytes > static_cast<size_t>(PTRDIFF_MAX) - kPrefix) throw std::bad_alloc();
}

std::byte* whole(void* block) { return static_cast<std::byte*>(block) - kPrefix; }

size_t size_of_whole(void* block) {
  size_t bytes = 0;
  std::memcpy(&bytes, whole(block), sizeof bytes);
  return bytes;
}

void* with_prefix(void* whole_block, size_t bytes) {
  std::memcpy(whole_block, &bytes, sizeof bytes);
  return static_cast<std::byte*>(whole_block) + kPrefix;
}

// An empty block takes one byte; it is poisoned, so that reading it is an error too.
void* checked_block(size_t bytes) {
  void* block = nullptr;
  const size_t at_least_one = std::max<size_t>(bytes, 1);
  if (posix_memalign(&block, kElementAlignment, at_least_one) != 0) throw std::bad_alloc();
#ifdef NUMERA_HOST_CHECKED_MEMORY
  if (bytes == 0) ASAN_POISON_MEMORY_REGION(block, 1);
#endif
  return block;
}

// For use under a memory checker: blocks have no prefix, and the heap knows their sizes.
void* heap_resized(void* block, size_t bytes) {
  const auto old_bytes = static_cast<std::ptrdiff_t>(malloc_usable_size(block));
  void* const resized = std::realloc(block, std::max<size_t>(bytes, 1));
  if (resized == nullptr) throw std::bad_alloc();
  count_live(0, static_cast<std::ptrdiff_t>(malloc_usable_size(resized)) - old_bytes);
  return resized;
}

void heap_release(void* block) {
  count_live(0, -static_cast<std::ptrdiff_t>(malloc_usable_size(block)));
  std::free(block);
}

// Null if the old or the new block is a small one, which `resize_large_block` does not handle.
void* resized_large(void* block, size_t bytes) {
  const size_t old_whole = size_of_whole(block);
  const size_t new_whole = bytes + kPrefix;
  if (std::min(old_whole, new_whole) <= kLargestSmallBlock) return nullptr;
  void* const resized = resize_large_block(whole(block), old_whole, new_whole);
  count_live(0, block_bytes(new_whole) - block_bytes(old_whole));
  return with_prefix(resized, new_whole);
}

}  // namespace

void FailAllocationAfter(size_t count) noexcept { allocations_until_failure = count; }
void ClearAllocationFailure() noexcept { allocations_until_failure.reset(); }

void count_allocation() {
  if (!allocations_until_failure) return;
  if (*allocations_until_failure == 0) {
    allocations_until_failure.reset();
    throw std::bad_alloc();
  }
  --*allocations_until_failure;
}

void* take_block(size_t bytes) {
  if (kSeparateBlocks) return checked_block(bytes);
  return bytes <= kLargestSmallBlock ? take_small_block(bytes) : take_large_block(bytes).data;
}

void give_block(void* block, size_t bytes) noexcept {
  if (kSeparateBlocks) {
    std::free(block);
  } else if (bytes <= kLargestSmallBlock) {
    give_small_block(block, bytes);
  } else {
    give_large_block(block, bytes);
  }
}

std::ptrdiff_t block_bytes(size_t bytes) noexcept {
  const size_t taken = kSeparateBlocks              ? bytes
                       : bytes > kLargestSmallBlock ? large_block_bytes(bytes)
                                                    : block_size(block_size_index(bytes));
  return static_cast<std::ptrdiff_t>(taken);
}

void* allocate(size_t bytes) {
  count_allocation_of(bytes);
  if (kSeparateBlocks) return heap_resized(nullptr, bytes);
  const size_t whole_bytes = bytes + kPrefix;
  void* const block = with_prefix(take_block(whole_bytes), whole_bytes);
  count_live(0, block_bytes(whole_bytes));
  return block;
}

void* reallocate(void* block, size_t bytes) {
  if (block == nullptr) return allocate(bytes);
  count_allocation_of(bytes);
  if (kSeparateBlocks) return heap_resized(block, bytes);
  if (void* const resized = resized_large(block, bytes)) return resized;
  const size_t old_bytes = size_of_whole(block) - kPrefix;
  const size_t new_whole = bytes + kPrefix;
  void* const copy = with_prefix(take_block(new_whole), new_whole);
  std::memcpy(copy, block, std::min(old_bytes, bytes));
  count_live(0, block_bytes(new_whole));
  release(block);
  return copy;
}

void release(void* block) noexcept {
  if (block == nullptr) return;
  if (kSeparateBlocks) return heap_release(block);
  const size_t bytes = size_of_whole(block);
  count_live(0, -block_bytes(bytes));
  give_block(whole(block), bytes);
}

ElementBlock allocate_elements(size_t bytes, Fill fill) {
  count_allocation_of(bytes);
  ElementBlock block{nullptr, bytes};
  bool zeroed = false;
  if (kSeparateBlocks || bytes <= kLargestSmallBlock) {
    block.data = take_block(bytes);
  } else {
    const LargeBlock large = take_large_block(bytes);
    block.data = large.data;
    zeroed = large.zeroed;
  }
  if (fill == Fill::Zero && !zeroed) std::memset(block.data, 0, bytes);
  count_live(0, block_bytes(bytes));
  return block;
}

void release(ElementBlock block) noexcept {
  count_live(0, -block_bytes(block.bytes));
  give_block(block.data, block.bytes);
}

size_t LiveBytes() noexcept { return static_cast<size_t>(live_counts().bytes); }

size_t checked_product(size_t a, size_t b) {
  size_t product = 0;
  if (__builtin_mul_overflow(a, b, &product) || product > static_cast<size_t>(PTRDIFF_MAX)) {
    throw std::bad_alloc();
  }
  return product;
}

}  // namespace numera::host::memory
