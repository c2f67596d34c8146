#include "tests/faults/failing_heap.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <limits>
#include <new>

namespace numera::testing {
namespace {

constexpr size_t kNever = std::numeric_limits<size_t>::max();

thread_local size_t until_failure = kNever;
thread_local bool has_failed = false;
std::atomic<size_t> live_blocks = 0;

bool fails_now() noexcept {
  if (until_failure == kNever || until_failure-- != 0) return false;
  until_failure = kNever;
  has_failed = true;
  return true;
}

void* allocate(size_t bytes, size_t alignment) noexcept {
  if (fails_now()) return nullptr;
  void* block = nullptr;
  if (alignment <= __STDCPP_DEFAULT_NEW_ALIGNMENT__) {
    block = std::malloc(std::max<size_t>(bytes, 1));
  } else {
    block = std::aligned_alloc(alignment, (bytes + alignment - 1) / alignment * alignment);
  }
  if (block != nullptr) ++live_blocks;
  return block;
}

void* allocate_or_throw(size_t bytes, size_t alignment) {
  void* const block = allocate(bytes, alignment);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

void release(void* block) noexcept {
  if (block == nullptr) return;
  --live_blocks;
  std::free(block);
}

}  // namespace

void FailHeapAfter(size_t count) noexcept {
  has_failed = false;
  until_failure = count;
}

bool EndHeapFailure() noexcept {
  until_failure = kNever;
  return has_failed;
}

size_t LiveBlocks() noexcept { return live_blocks; }

}  // namespace numera::testing

using numera::testing::allocate;
using numera::testing::allocate_or_throw;
using numera::testing::release;

constexpr size_t kUnaligned = 1;

void* operator new(size_t bytes) { return allocate_or_throw(bytes, kUnaligned); }
void* operator new[](size_t bytes) { return allocate_or_throw(bytes, kUnaligned); }
void* operator new(size_t bytes, std::align_val_t alignment) {
  return allocate_or_throw(bytes, static_cast<size_t>(alignment));
}
void* operator new[](size_t bytes, std::align_val_t alignment) {
  return allocate_or_throw(bytes, static_cast<size_t>(alignment));
}
void* operator new(size_t bytes, const std::nothrow_t&) noexcept {
  return allocate(bytes, kUnaligned);
}
void* operator new[](size_t bytes, const std::nothrow_t&) noexcept {
  return allocate(bytes, kUnaligned);
}
void* operator new(size_t bytes, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  return allocate(bytes, static_cast<size_t>(alignment));
}
void* operator new[](size_t bytes, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  return allocate(bytes, static_cast<size_t>(alignment));
}

void operator delete(void* block) noexcept { release(block); }
void operator delete[](void* block) noexcept { release(block); }
void operator delete(void* block, size_t) noexcept { release(block); }
void operator delete[](void* block, size_t) noexcept { release(block); }
void operator delete(void* block, std::align_val_t) noexcept { release(block); }
void operator delete[](void* block, std::align_val_t) noexcept { release(block); }
void operator delete(void* block, size_t, std::align_val_t) noexcept { release(block); }
void operator delete[](void* block, size_t, std::align_val_t) noexcept { release(block); }
void operator delete(void* block, const std::nothrow_t&) noexcept { release(block); }
void operator delete[](void* block, const std::nothrow_t&) noexcept { release(block); }
void operator delete(void* block, std::align_val_t, const std::nothrow_t&) noexcept {
  release(block);
}
void operator delete[](void* block, std::align_val_t, const std::nothrow_t&) noexcept {
  release(block);
}
