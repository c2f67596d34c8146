#include "numera/host/memory/thread_cache.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <mutex>
#include <span>

#include "numera/host/memory/intrusive_list.h"
#include "numera/host/memory/slabs.h"

namespace numera::host::memory {
namespace {

// Blocks of a size at hand, at most; half of them are taken or returned at a time. Sizes are small:
// a thread holds 2 MiB back at the very most.
constexpr size_t kAtHand = 64;

struct Shelf {
  size_t count;
  std::array<void*, kAtHand> blocks;
};

// A count of one thread that others may read: no need for an operation that locks it.
using ThreadCount = std::atomic<std::ptrdiff_t>;

void add(ThreadCount& count, std::ptrdiff_t step) {
  count.store(count.load(std::memory_order_relaxed) + step, std::memory_order_relaxed);
}

struct ThreadCache {
  ThreadCache* previous;
  ThreadCache* next;
  bool active;  ///< known to the others; not so before the first use and after the end
  bool ended;
  ThreadCount arrays;
  ThreadCount bytes;
  std::array<Shelf, kBlockSizes> shelves;
};

constinit std::mutex mutex;
constinit IntrusiveList<ThreadCache> active_caches;
constinit ThreadCount arrays_of_ended{0};
constinit ThreadCount bytes_of_ended{0};

thread_local constinit ThreadCache cache{};

void return_last(Shelf& shelf, size_t count) {
  shelf.count -= count;
  return_small_blocks(std::span(shelf.blocks).subspan(shelf.count, count));
}

struct EndOfThread {
  ~EndOfThread() {
    return_blocks_at_hand();
    const std::lock_guard lock(mutex);
    cache.active = false;
    cache.ended = true;
    active_caches.remove(&cache);
    arrays_of_ended.fetch_add(cache.arrays.load());
    bytes_of_ended.fetch_add(cache.bytes.load());
  }
};

// Whether this thread has a cache from now on.
bool activate() {
  if (cache.ended) return false;
  if (!cache.active) {
    thread_local const EndOfThread end;
    static_cast<void>(&end);
    const std::lock_guard lock(mutex);
    active_caches.push_front(&cache);
    cache.active = true;
  }
  return true;
}

void* take_from_slabs(Shelf& shelf, size_t size_index) {
  if (!activate()) {
    void* block = nullptr;
    take_small_blocks(size_index, {&block, 1});
    return block;
  }
  shelf.count = take_small_blocks(size_index, std::span(shelf.blocks).first(kAtHand / 2));
  return shelf.blocks[--shelf.count];
}

}  // namespace

void* take_small_block(size_t bytes) {
  const size_t size_index = block_size_index(bytes);
  Shelf& shelf = cache.shelves[size_index];
  if (shelf.count == 0) return take_from_slabs(shelf, size_index);
  return shelf.blocks[--shelf.count];
}

void give_small_block(void* block, size_t bytes) noexcept {
  if (!cache.active && !activate()) return return_small_blocks({&block, 1});
  Shelf& shelf = cache.shelves[block_size_index(bytes)];
  if (shelf.count == kAtHand) {
    // The half given longest ago.
    return_small_blocks(std::span(shelf.blocks).first(kAtHand / 2));
    std::copy_n(shelf.blocks.begin() + kAtHand / 2, kAtHand / 2, shelf.blocks.begin());
    shelf.count = kAtHand / 2;
  }
  shelf.blocks[shelf.count++] = block;
}

void return_blocks_at_hand() noexcept {
  for (Shelf& shelf : cache.shelves) {
    if (shelf.count > 0) return_last(shelf, shelf.count);
  }
}

void count_live(std::ptrdiff_t arrays, std::ptrdiff_t bytes) noexcept {
  if (!cache.active && !activate()) {
    arrays_of_ended.fetch_add(arrays, std::memory_order_relaxed);
    bytes_of_ended.fetch_add(bytes, std::memory_order_relaxed);
    return;
  }
  add(cache.arrays, arrays);
  add(cache.bytes, bytes);
}

LiveCounts live_counts() noexcept {
  const std::lock_guard lock(mutex);
  LiveCounts sum{arrays_of_ended.load(), bytes_of_ended.load()};
  for (const ThreadCache* one = active_caches.first; one != nullptr; one = one->next) {
    sum.arrays += one->arrays.load(std::memory_order_relaxed);
    sum.bytes += one->bytes.load(std::memory_order_relaxed);
  }
  return sum;
}

}  // namespace numera::host::memory
