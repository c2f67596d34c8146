#include "numera/host/memory/blocks.h"

#include <stdlib.h>
#include <sys/mman.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <optional>

#include "numera/host/memory.h"

#ifdef NUMERA_HOST_CHECKED_MEMORY
#include <sanitizer/asan_interface.h>
#endif

namespace numera::host::memory {
namespace {

// From here on a zeroed block is mapped: the system hands out pages that are zero already.
constexpr size_t kMappedBytes = size_t{256} * 1024;

thread_local constinit std::optional<size_t> allocations_until_failure;

void count_allocation_of(size_t bytes) {
  count_allocation();
  if (bytes > static_cast<size_t>(PTRDIFF_MAX)) throw std::bad_alloc();
}

// Blocks of several huge pages ask for them, since the first write to fresh memory costs a fault a
// page. It is advice: a system without huge pages goes on with small ones. Ends that fill no huge
// page keep small ones, so that no block takes more memory than it asked for.
constexpr size_t kHugePage = size_t{2} * 1024 * 1024;
constexpr size_t kHugeBytes = 2 * kHugePage;

void advise_huge_pages(void* block, size_t bytes) {
  if (bytes < kHugeBytes || kSeparateBlocks) return;
  const size_t before = -reinterpret_cast<std::uintptr_t>(block) % kHugePage;
  madvise(static_cast<std::byte*>(block) + before, (bytes - before) / kHugePage * kHugePage,
          MADV_HUGEPAGE);
}

void* checked(void* block, size_t bytes) {
  if (block == nullptr) throw std::bad_alloc();
  advise_huge_pages(block, bytes);
  return block;
}

ElementBlock map_zeroed(size_t bytes) {
  void* const data =
      mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (data == MAP_FAILED) throw std::bad_alloc();
  advise_huge_pages(data, bytes);
  return {data, bytes};
}

// An allocator rounds an empty block up to one byte; nobody may read that one either.
void guard_empty_block([[maybe_unused]] void* data, [[maybe_unused]] size_t bytes) {
#ifdef NUMERA_HOST_CHECKED_MEMORY
  if (bytes == 0) ASAN_POISON_MEMORY_REGION(data, 1);
#endif
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

void* allocate(size_t bytes) {
  count_allocation_of(bytes);
  return checked(std::malloc(bytes == 0 ? 1 : bytes), bytes);
}

void* reallocate(void* block, size_t bytes) {
  count_allocation_of(bytes);
  return checked(std::realloc(block, bytes == 0 ? 1 : bytes), bytes);
}

void release(void* block) noexcept { std::free(block); }

ElementBlock allocate_elements(size_t bytes, Fill fill) {
  count_allocation_of(bytes);
  if (fill == Fill::Zero && bytes >= kMappedBytes && !kSeparateBlocks) return map_zeroed(bytes);
  const bool huge = bytes >= kHugeBytes && !kSeparateBlocks;
  const size_t alignment = huge ? kHugePage : kElementAlignment;
  void* data = nullptr;
  if (posix_memalign(&data, alignment, bytes == 0 ? 1 : bytes) != 0) throw std::bad_alloc();
  advise_huge_pages(data, bytes);
  if (fill == Fill::Zero) std::memset(data, 0, bytes);
  guard_empty_block(data, bytes);
  return {data, 0};
}

void release(ElementBlock block) noexcept {
  if (block.mapped_bytes != 0) {
    munmap(block.data, block.mapped_bytes);
  } else {
    std::free(block.data);
  }
}

size_t checked_product(size_t a, size_t b) {
  size_t product = 0;
  if (__builtin_mul_overflow(a, b, &product) || product > static_cast<size_t>(PTRDIFF_MAX)) {
    throw std::bad_alloc();
  }
  return product;
}

}  // namespace numera::host::memory
