#include "numera/host/memory/slabs.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <mutex>
#include <new>

#include "numera/host/memory/intrusive_list.h"
#include "numera/host/memory/large_blocks.h"
#include "numera/host/memory/system_memory.h"

namespace numera::host::memory {
namespace {

constexpr size_t kSlabBytes = size_t{64} * 1024;
constexpr size_t kChunkBytes = kHugePage;
constexpr std::uint32_t kAllSlabs = 0xFFFFFFFF;
static_assert(kChunkBytes / kSlabBytes == 32);

constexpr size_t kBitsPerWord = 64;

/// The header of each slab.
struct Slab {
  Slab* previous;
  Slab* next;
  size_t size_index;
  size_t block_count;
  size_t free_count;
  size_t first_word;  ///< all words before this one are 0
  /// Bit i: the block at offset 64 * i of the slab is free.
  std::array<std::uint64_t, kSlabBytes / kBlockStep / kBitsPerWord> free;
};

struct Chunk {
  Chunk* previous;
  Chunk* next;
  std::uint32_t free_slabs;  ///< one bit per slab
};

// Only the first slab of a chunk uses `chunk`. All slabs reserve space for it.
struct Head {
  Slab slab;
  Chunk chunk;
};
constexpr size_t kHeadBytes = (sizeof(Head) + kBlockStep - 1) / kBlockStep * kBlockStep;

constinit std::mutex mutex;
constinit std::array<IntrusiveList<Slab>, kBlockSizes> slabs_with_room;
constinit IntrusiveList<Chunk> chunks_with_room;
constinit size_t chunk_count = 0;

Head* head_at(void* inside, size_t alignment) {
  const size_t offset = reinterpret_cast<std::uintptr_t>(inside) % alignment;
  return reinterpret_cast<Head*>(static_cast<std::byte*>(inside) - offset);
}
Slab* slab_of(void* block) { return &head_at(block, kSlabBytes)->slab; }
Chunk* chunk_of(void* block) { return &head_at(block, kChunkBytes)->chunk; }
std::byte* start_of(Chunk* chunk) {
  return reinterpret_cast<std::byte*>(head_at(chunk, kChunkBytes));
}

Chunk* new_chunk() {
  void* const memory = take_large_block(kChunkBytes).data;
  // Not for the first chunk: a program with a few small arrays should touch only a few small pages.
  if (chunk_count > 0) advise_huge_pages(memory, kChunkBytes);
  ++chunk_count;
  Chunk* const chunk = &(::new (memory) Head)->chunk;
  chunk->free_slabs = kAllSlabs;
  chunks_with_room.push_front(chunk);
  return chunk;
}

Slab* new_slab(size_t size_index) {
  Chunk* const chunk = chunks_with_room.first != nullptr ? chunks_with_room.first : new_chunk();
  const auto number = static_cast<size_t>(std::countr_zero(chunk->free_slabs));
  chunk->free_slabs &= chunk->free_slabs - 1;
  if (chunk->free_slabs == 0) chunks_with_room.remove(chunk);

  const size_t count = (kSlabBytes - kHeadBytes) / block_size(size_index);
  auto* const slab = ::new (start_of(chunk) + number * kSlabBytes) Slab{
      .previous = nullptr,
      .next = nullptr,
      .size_index = size_index,
      .block_count = count,
      .free_count = count,
      .first_word = 0,
      .free = {},
  };
  for (size_t i = 0; i < count; ++i) {
    const size_t place = kHeadBytes / kBlockStep + i * (size_index + 1);
    slab->free[place / kBitsPerWord] |= std::uint64_t{1} << place % kBitsPerWord;
  }
  slabs_with_room[size_index].push_front(slab);
  return slab;
}

void free_slab(Slab* slab) {
  slabs_with_room[slab->size_index].remove(slab);
  Chunk* const chunk = chunk_of(slab);
  if (chunk->free_slabs == 0) chunks_with_room.push_front(chunk);
  const std::byte* const start = start_of(chunk);
  const auto number = static_cast<size_t>(reinterpret_cast<std::byte*>(slab) - start) / kSlabBytes;
  chunk->free_slabs |= std::uint32_t{1} << number;
  if (chunk->free_slabs != kAllSlabs || chunk_count == 1) return;
  chunks_with_room.remove(chunk);
  --chunk_count;
  give_large_block(start_of(chunk), kChunkBytes);
}

void return_block(void* block) {
  Slab* const slab = slab_of(block);
  const auto offset =
      static_cast<size_t>(static_cast<std::byte*>(block) - reinterpret_cast<std::byte*>(slab));
  const size_t place = offset / kBlockStep;
  const size_t word = place / kBitsPerWord;
  slab->free[word] |= std::uint64_t{1} << place % kBitsPerWord;
  slab->first_word = std::min(slab->first_word, word);
  if (slab->free_count++ == 0) slabs_with_room[slab->size_index].push_front(slab);
  if (slab->free_count == slab->block_count) free_slab(slab);
}

}  // namespace

size_t take_small_blocks(size_t size_index, std::span<void*> blocks) {
  const std::lock_guard lock(mutex);
  Slab* slab = slabs_with_room[size_index].first;
  if (slab == nullptr) slab = new_slab(size_index);
  const size_t count = std::min(blocks.size(), slab->free_count);
  for (size_t left = count; left > 0;) {
    std::uint64_t& word = slab->free[slab->first_word];
    if (word == 0) {
      ++slab->first_word;
      continue;
    }
    const size_t place =
        slab->first_word * kBitsPerWord + static_cast<size_t>(std::countr_zero(word));
    word &= word - 1;
    blocks[--left] = reinterpret_cast<std::byte*>(slab) + place * kBlockStep;
  }
  slab->free_count -= count;
  if (slab->free_count == 0) slabs_with_room[size_index].remove(slab);
  return count;
}

void return_small_blocks(std::span<void* const> blocks) noexcept {
  const std::lock_guard lock(mutex);
  for (void* const block : blocks) return_block(block);
}

}  // namespace numera::host::memory
