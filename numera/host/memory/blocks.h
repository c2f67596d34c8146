#pragma once

/// \file
/// The one source of this host's memory. Every block comes from here, so that a failure can be
/// injected into each allocation and a memory checker sees each block.

#include <cstddef>
#include <memory>
#include <new>
#include <utility>
#include <vector>

#if defined(__SANITIZE_ADDRESS__)
#define NUMERA_HOST_CHECKED_MEMORY 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define NUMERA_HOST_CHECKED_MEMORY 1
#endif
#endif

namespace numera::host::memory {

/// Under a memory checker every part of an array is a block of its own of exactly the size asked
/// for, so that a read past it, or after its end of life, is caught.
#ifdef NUMERA_HOST_CHECKED_MEMORY
inline constexpr bool kSeparateBlocks = true;
#else
inline constexpr bool kSeparateBlocks = false;
#endif

inline constexpr size_t kElementAlignment = 64;

/// Stands for an allocation that the standard library makes on the host's behalf. Throws
/// `std::bad_alloc` where a failure was asked for.
void count_allocation();

/// A block aligned for every scalar type. Throws `std::bad_alloc`.
void* allocate(size_t bytes);
/// Moves a block of `allocate`, or makes one of null; large blocks move without being copied.
/// Throws `std::bad_alloc`; the block is as before then.
void* reallocate(void* block, size_t bytes);
void release(void* block) noexcept;

/// A block of elements, aligned to `kElementAlignment`.
struct ElementBlock {
  void* data = nullptr;
  size_t bytes = 0;  ///< as asked for
};
enum class Fill { None, Zero };
ElementBlock allocate_elements(size_t bytes, Fill fill);
void release(ElementBlock block) noexcept;

/// The two below them all: a block aligned to `kElementAlignment` that is not counted as an
/// allocation, and neither among the live bytes. Throws `std::bad_alloc`.
void* take_block(size_t bytes);
void give_block(void* block, size_t bytes) noexcept;
/// What a block of `take_block` adds to the live bytes.
std::ptrdiff_t block_bytes(size_t bytes) noexcept;

/// `a * b`; throws `std::bad_alloc` where it is more than any block could hold.
size_t checked_product(size_t a, size_t b);

struct BlockDeleter {
  void operator()(void* block) const noexcept { release(block); }
};
using OwnedBlock = std::unique_ptr<void, BlockDeleter>;

/// Lets standard containers take host memory. Elements made without a value stay unwritten.
template <class T>
struct HostAllocator {
  using value_type = T;
  HostAllocator() = default;
  template <class U>
  HostAllocator(const HostAllocator<U>&) noexcept {}

  T* allocate(size_t count) {
    return static_cast<T*>(memory::allocate(checked_product(count, sizeof(T))));
  }
  void deallocate(T* block, size_t) noexcept { release(block); }

  template <class U>
  void construct(U* place) {
    ::new (static_cast<void*>(place)) U;
  }
  template <class U, class... Arguments>
  void construct(U* place, Arguments&&... arguments) {
    ::new (static_cast<void*>(place)) U(std::forward<Arguments>(arguments)...);
  }

  friend bool operator==(HostAllocator, HostAllocator) { return true; }
};

template <class T>
using HostVector = std::vector<T, HostAllocator<T>>;

}  // namespace numera::host::memory
