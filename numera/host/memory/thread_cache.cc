#include "numera/host/memory/thread_cache.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <mutex>
#include <new>
#include <span>
#include <utility>

#include "numera/host/memory/intrusive_list.h"
#include "numera/host/memory/slabs.h"

namespace numera::host::memory {
namespace {

// Maximum number of cached blocks per size; half of them are taken or returned at a time. Blocks
// are small: a thread caches about 2 MiB at most.
constexpr size_t kAtHand = 64;

struct Shelf {
  size_t count;
  std::array<void*, kAtHand> blocks;
};

// A counter that only one thread writes and others may read. It needs no atomic read-modify-write.
using ThreadCount = std::atomic<std::ptrdiff_t>;

void add(ThreadCount& count, std::ptrdiff_t step) {
  count.store(count.load(std::memory_order_relaxed) + step, std::memory_order_relaxed);
}

struct ThreadCache {
  ThreadCache* previous;
  ThreadCache* next;
  ThreadCount arrays;
  ThreadCount bytes;
  std::array<Shelf, kBlockSizes> shelves;
};

constinit std::mutex mutex;
constinit IntrusiveList<ThreadCache> active_caches;
constinit ThreadCount arrays_of_ended{0};
constinit ThreadCount bytes_of_ended{0};

// Null until this thread first uses it, and again when the thread ends. With this TLS model, access
// needs no function call. The disadvantage: if the library is loaded while the program runs, little
// space is left for all its thread-local variables together. So large data is stored behind a
// pointer.
[[gnu::tls_model("initial-exec")]] thread_local constinit ThreadCache* cache = nullptr;
thread_local constinit bool ended = false;

void return_last(Shelf& shelf, size_t count) {
  shelf.count -= count;
  return_small_blocks(std::span(shelf.blocks).subspan(shelf.count, count));
}

struct EndOfThread {
  ~EndOfThread() {
    return_blocks_at_hand();
    const std::lock_guard lock(mutex);
    ended = true;
    active_caches.remove(cache);
    arrays_of_ended.fetch_add(cache->arrays.load());
    bytes_of_ended.fetch_add(cache->bytes.load());
    delete std::exchange(cache, nullptr);
  }
};

// Creates the cache of this thread. Returns null if the thread is ending and its cache is already
// destroyed, or if there is no memory.
[[gnu::noinline]] ThreadCache* new_cache() noexcept {
  if (ended) return nullptr;
  auto* const made = new (std::nothrow) ThreadCache{};
  if (made == nullptr) return nullptr;
  thread_local const EndOfThread end;
  static_cast<void>(&end);
  const std::lock_guard lock(mutex);
  active_caches.push_front(made);
  return cache = made;
}

// Null if this thread has no cache and cannot create one.
ThreadCache* own_cache() noexcept { return cache != nullptr ? cache : new_cache(); }

void* take_one_from_slabs(size_t size_index) {
  void* block = nullptr;
  take_small_blocks(size_index, {&block, 1});
  return block;
}

void* take_from_slabs(Shelf& shelf, size_t size_index) {
  shelf.count = take_small_blocks(size_index, std::span(shelf.blocks).first(kAtHand / 2));
  return shelf.blocks[--shelf.count];
}

}  // namespace

void* take_small_block(size_t bytes) {
  const size_t size_index = block_size_index(bytes);
  ThreadCache* const own = own_cache();
  if (own == nullptr) return take_one_from_slabs(size_index);
  Shelf& shelf = own->shelves[size_index];
  if (shelf.count == 0) return take_from_slabs(shelf, size_index);
  return shelf.blocks[--shelf.count];
}

void give_small_block(void* block, size_t bytes) noexcept {
  ThreadCache* const own = own_cache();
  if (own == nullptr) return return_small_blocks({&block, 1});
  Shelf& shelf = own->shelves[block_size_index(bytes)];
  if (shelf.count == kAtHand) {
    // Returns the older half.
    return_small_blocks(std::span(shelf.blocks).first(kAtHand / 2));
    std::copy_n(shelf.blocks.begin() + kAtHand / 2, kAtHand / 2, shelf.blocks.begin());
    shelf.count = kAtHand / 2;
  }
  shelf.blocks[shelf.count++] = block;
}

void return_blocks_at_hand() noexcept {
  if (cache == nullptr) return;
  for (Shelf& shelf : cache->shelves) {
    if (shelf.count > 0) return_last(shelf, shelf.count);
  }
}

void count_live(std::ptrdiff_t arrays, std::ptrdiff_t bytes) noexcept {
  ThreadCache* const own = own_cache();
  if (own == nullptr) {
    arrays_of_ended.fetch_add(arrays, std::memory_order_relaxed);
    bytes_of_ended.fetch_add(bytes, std::memory_order_relaxed);
    return;
  }
  add(own->arrays, arrays);
  add(own->bytes, bytes);
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
