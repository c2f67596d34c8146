#include "numera/host/memory/system_memory.h"

#include <sys/mman.h>

#include <cstdint>

namespace numera::host::memory {
namespace {

constexpr size_t kHugeBytes = 2 * kHugePage;

size_t beyond_huge_page(const void* address) {
  return reinterpret_cast<std::uintptr_t>(address) % kHugePage;
}

std::byte* map_anywhere_near(void* wanted, size_t bytes) {
  void* const block =
      mmap(wanted, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  return block == MAP_FAILED ? nullptr : static_cast<std::byte*>(block);
}

// Maps more than needed and unmaps the excess, so that the block starts at a huge page boundary.
std::byte* map_and_cut(size_t bytes) {
  std::byte* const room = map_anywhere_near(nullptr, bytes + kHugePage);
  if (room == nullptr) return nullptr;
  const size_t before = (kHugePage - beyond_huge_page(room)) % kHugePage;
  if (before != 0) munmap(room, before);
  munmap(room + before + bytes, kHugePage - before);
  return room + before;
}

// The system maps each block below the previous one, so the addresses just below are usually free.
std::byte* map_aligned(size_t bytes) {
  std::byte* block = map_anywhere_near(nullptr, bytes);
  for (int attempt = 0; attempt < 2; ++attempt) {
    if (block == nullptr || beyond_huge_page(block) == 0) return block;
    munmap(block, bytes);
    if (attempt == 0) block = map_anywhere_near(block - beyond_huge_page(block), bytes);
  }
  return map_and_cut(bytes);
}

}  // namespace

void* map_block(size_t bytes) noexcept {
  std::byte* const block =
      bytes < kHugePage ? map_anywhere_near(nullptr, bytes) : map_aligned(bytes);
  if (block != nullptr && bytes >= kHugeBytes) advise_huge_pages(block, bytes);
  return block;
}

void unmap_block(void* block, size_t bytes) noexcept { munmap(block, bytes); }

void* remap_block(void* block, size_t old_bytes, size_t bytes) noexcept {
  if (bytes <= old_bytes) {
    munmap(static_cast<std::byte*>(block) + bytes, old_bytes - bytes);
    return block;
  }
  void* const place = map_block(bytes);
  if (place == nullptr) return nullptr;
  // Moves the pages over the fresh mapping, so that the block starts at a huge page boundary.
  if (mremap(block, old_bytes, bytes, MREMAP_MAYMOVE | MREMAP_FIXED, place) != MAP_FAILED) {
    if (bytes >= kHugeBytes) advise_huge_pages(place, bytes);
    return place;
  }
  munmap(place, bytes);
  return nullptr;
}

void advise_huge_pages(void* block, size_t bytes) noexcept {
  const size_t before = (kHugePage - beyond_huge_page(block)) % kHugePage;
  if (bytes < before + kHugePage) return;
  if (before == 0) {
    // Advises the whole block: advice for a part splits the mapping, and mremap then fails.
    madvise(block, bytes, MADV_HUGEPAGE);
    return;
  }
  madvise(static_cast<std::byte*>(block) + before, (bytes - before) / kHugePage * kHugePage,
          MADV_HUGEPAGE);
}

}  // namespace numera::host::memory
