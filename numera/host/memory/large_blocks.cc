#include "numera/host/memory/large_blocks.h"

#include <stdlib.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>

#include "numera/host/memory.h"
#include "numera/host/memory/blocks.h"
#include "numera/host/memory/intrusive_list.h"
#include "numera/host/memory/system_memory.h"

namespace numera::host::memory {
namespace {

constexpr size_t kStepsPerDoubling = 32;
constexpr size_t kSmallest = kElementAlignment * kStepsPerDoubling;
constexpr size_t kDoublings = std::bit_width(kMaxKeptBytes / kSmallest);

size_t step_of(size_t bytes) {
  return std::max(std::bit_floor(bytes), kSmallest) / kStepsPerDoubling;
}

// A kept block stores its list links in its own first bytes.
struct ByAge {
  ByAge* previous;
  ByAge* next;
};
struct BySize {
  BySize* previous;
  BySize* next;
};
struct Kept : ByAge, BySize {
  size_t bytes;
};
static_assert(sizeof(Kept) <= kSmallest);

constinit std::mutex mutex;
constinit size_t kept_bytes = 0;
constinit IntrusiveList<ByAge> kept_by_age;
constinit std::array<IntrusiveList<BySize>, kDoublings * kStepsPerDoubling> kept_by_size;

IntrusiveList<BySize>& kept_of_size(size_t class_bytes) {
  const auto doublings = static_cast<size_t>(std::bit_width(class_bytes / kSmallest)) - 1;
  return kept_by_size[doublings * kStepsPerDoubling + class_bytes / step_of(class_bytes) -
                      kStepsPerDoubling];
}

void remove(Kept* kept) {
  kept_by_age.remove(kept);
  kept_of_size(kept->bytes).remove(kept);
  kept_bytes -= kept->bytes;
}

void* take_kept(size_t class_bytes) {
  if (class_bytes > kMaxKeptBytes) return nullptr;
  const std::lock_guard lock(mutex);
  BySize* const youngest = kept_of_size(class_bytes).first;
  if (youngest == nullptr) return nullptr;
  auto* const kept = static_cast<Kept*>(youngest);
  remove(kept);
  return kept;
}

void to_system(void* block, size_t class_bytes) {
  if (class_bytes >= kMappedBytes) {
    unmap_block(block, class_bytes);
  } else {
    std::free(block);
  }
}

// Gives the oldest blocks back to the system until at most `bound` bytes are kept. Returns the
// bytes given back. Releases the lock during system calls; holds it again on return.
size_t keep_at_most(size_t bound, std::unique_lock<std::mutex>& lock) {
  size_t returned = 0;
  while (kept_bytes > bound) {
    auto* const oldest = static_cast<Kept*>(kept_by_age.last);
    const size_t bytes = oldest->bytes;
    remove(oldest);
    lock.unlock();
    to_system(oldest, bytes);
    returned += bytes;
    lock.lock();
  }
  return returned;
}

}  // namespace

size_t large_block_bytes(size_t bytes) noexcept {
  const size_t step = step_of(bytes);
  return (bytes + step - 1) / step * step;
}

LargeBlock take_large_block(size_t bytes) {
  const size_t class_bytes = large_block_bytes(bytes);
  if (void* const kept = take_kept(class_bytes)) return {kept, false};
  const bool mapped = class_bytes >= kMappedBytes;
  void* block = nullptr;
  if (mapped) {
    block = map_block(class_bytes);
  } else if (posix_memalign(&block, kElementAlignment, class_bytes) != 0) {
    block = nullptr;
  }
  if (block == nullptr) throw std::bad_alloc();
  return {block, mapped};
}

void give_large_block(void* block, size_t bytes) noexcept {
  const size_t class_bytes = large_block_bytes(bytes);
  if (class_bytes > kMaxKeptBytes) return to_system(block, class_bytes);
  auto* const kept = ::new (block) Kept;
  kept->bytes = class_bytes;
  std::unique_lock lock(mutex);
  keep_at_most(kMaxKeptBytes - class_bytes, lock);
  kept_by_age.push_front(kept);
  kept_of_size(class_bytes).push_front(kept);
  kept_bytes += class_bytes;
}

void* resize_large_block(void* block, size_t old_bytes, size_t bytes) {
  const size_t old_class = large_block_bytes(old_bytes);
  const size_t new_class = large_block_bytes(bytes);
  if (old_class == new_class) return block;
  if (old_class >= kMappedBytes && new_class >= kMappedBytes) {
    void* const moved = remap_block(block, old_class, new_class);
    if (moved == nullptr) throw std::bad_alloc();
    return moved;
  }
  void* const copy = take_large_block(bytes).data;
  std::memcpy(copy, block, std::min(old_bytes, bytes));
  give_large_block(block, old_bytes);
  return copy;
}

size_t release_kept_blocks() noexcept {
  std::unique_lock lock(mutex);
  return keep_at_most(0, lock);
}

size_t KeptBytes() noexcept {
  const std::lock_guard lock(mutex);
  return kept_bytes;
}

}  // namespace numera::host::memory
