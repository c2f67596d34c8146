#include "tests/support/allocation_meter.h"

#include <malloc.h>
#include <sys/mman.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <new>

// The linker option -Wl,--wrap=malloc redirects the program's calls of `malloc` and similar
// functions to `__wrap_malloc`. `__real_malloc` is the original function. Calls from shared
// libraries are not redirected. They come through operator new, which is replaced below.
extern "C" {
// NOLINTBEGIN(bugprone-reserved-identifier)
void* __real_malloc(size_t bytes);
void* __real_realloc(void* block, size_t bytes);
int __real_posix_memalign(void** block, size_t alignment, size_t bytes);
void __real_free(void* block);
void* __real_mmap(void* address, size_t bytes, int protection, int flags, int file, off_t offset);
int __real_munmap(void* address, size_t bytes);
}

namespace numera::testing {
namespace {

bool running = false;
size_t allocations = 0;
std::ptrdiff_t held = 0;
std::ptrdiff_t peak = 0;

void add(size_t bytes) {
  if (!running) return;
  ++allocations;
  held += static_cast<std::ptrdiff_t>(bytes);
  peak = std::max(peak, held);
}

void remove(size_t bytes) {
  if (running) held -= static_cast<std::ptrdiff_t>(bytes);
}

void* added(void* block) {
  if (block != nullptr) add(malloc_usable_size(block));
  return block;
}

}  // namespace

void StartMeter() {
  allocations = 0;
  held = 0;
  peak = 0;
  running = true;
}

HeapUse StopMeter() {
  running = false;
  return {allocations, static_cast<size_t>(peak),
          static_cast<size_t>(std::max<std::ptrdiff_t>(held, 0))};
}

}  // namespace numera::testing

using numera::testing::add;
using numera::testing::added;
using numera::testing::remove;

extern "C" {
void* __wrap_malloc(size_t bytes) { return added(__real_malloc(bytes)); }

void* __wrap_realloc(void* block, size_t bytes) {
  remove(malloc_usable_size(block));
  return added(__real_realloc(block, bytes));
}

int __wrap_posix_memalign(void** block, size_t alignment, size_t bytes) {
  const int error = __real_posix_memalign(block, alignment, bytes);
  if (error == 0) added(*block);
  return error;
}

void __wrap_free(void* block) {
  remove(malloc_usable_size(block));
  __real_free(block);
}

void* __wrap_mmap(void* address, size_t bytes, int protection, int flags, int file, off_t offset) {
  void* const block = __real_mmap(address, bytes, protection, flags, file, offset);
  if (block != MAP_FAILED) add(bytes);
  return block;
}

int __wrap_munmap(void* address, size_t bytes) {
  remove(bytes);
  return __real_munmap(address, bytes);
}
// NOLINTEND(bugprone-reserved-identifier)
}

void* operator new(size_t bytes) {
  void* const block = added(__real_malloc(std::max<size_t>(bytes, 1)));
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

void* operator new(size_t bytes, std::align_val_t alignment) {
  void* block = nullptr;
  if (__real_posix_memalign(&block, static_cast<size_t>(alignment), bytes) != 0) {
    throw std::bad_alloc();
  }
  return added(block);
}

void operator delete(void* block) noexcept {
  remove(malloc_usable_size(block));
  __real_free(block);
}

void operator delete(void* block, size_t) noexcept { operator delete(block); }
void operator delete(void* block, std::align_val_t) noexcept { operator delete(block); }
void operator delete(void* block, size_t, std::align_val_t) noexcept { operator delete(block); }
