#pragma once

/// \file
/// Allocates all memory of this host. Tests can thus inject a failure into each allocation, and a
/// memory checker sees each block.

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

/// Under a memory checker, every part of an array is a separate block of exactly the requested
/// size. The checker then catches reads past the end and reads after the block is freed.
#ifdef NUMERA_HOST_CHECKED_MEMORY
inline constexpr bool kSeparateBlocks = true;
#else
inline constexpr bool kSeparateBlocks = false;
#endif

inline constexpr size_t kElementAlignment = 64;

/// Counts one allocation. The host also calls this for allocations that the standard library makes
/// for it. Throws `std::bad_alloc` if a failure was requested.
void count_allocation();

/// A block aligned for every scalar type. Throws `std::bad_alloc`.
void* allocate(size_t bytes);
/// Resizes a block of `allocate`; allocates a new one if `block` is null. If the old and the new
/// block are both mapped from the system (128 KiB or more), pages are moved, not copied. Throws
/// `std::bad_alloc` and then leaves the block unchanged.
void* reallocate(void* block, size_t bytes);
void release(void* block) noexcept;

/// A block of elements, aligned to `kElementAlignment`.
struct ElementBlock {
  void* data = nullptr;
  size_t bytes = 0;  ///< as requested
};
enum class Fill { None, Zero };
ElementBlock allocate_elements(size_t bytes, Fill fill);
void release(ElementBlock block) noexcept;

/// The lowest level: a block aligned to `kElementAlignment`. It counts neither as an allocation nor
/// in the live bytes. Throws `std::bad_alloc`.
void* take_block(size_t bytes);
void give_block(void* block, size_t bytes) noexcept;
/// The size of a block of `take_block(bytes)`, for the count of live bytes.
std::ptrdiff_t block_bytes(size_t bytes) noexcept;

/// `a * b`; throws `std::bad_alloc` if the product exceeds `PTRDIFF_MAX`.
size_t checked_product(size_t a, size_t b);

struct BlockDeleter {
  void operator()(void* block) const noexcept { release(block); }
};
using OwnedBlock = std::unique_ptr<void, BlockDeleter>;

/// Lets standard containers use host memory. Elements constructed without a value are left
/// uninitialized.
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
