#pragma once

/// \file
/// Stores many texts in one block of UTF-16 code units.

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "numera/host/memory/blocks.h"

namespace numera::host::memory {

class TextArena {
 public:
  size_t size() const { return size_; }
  std::u16string_view view(size_t begin, size_t length) const { return {units() + begin, length}; }
  char16_t* units() { return static_cast<char16_t*>(block_.get()); }
  const char16_t* units() const { return static_cast<const char16_t*>(block_.get()); }

  /// Ensures a total capacity of `capacity` code units, without extra room. Throws
  /// `std::bad_alloc`, as `extend` and `append` do, and then leaves the arena unchanged.
  void reserve(size_t capacity) {
    if (capacity > capacity_) resize_block(capacity);
  }

  /// If the capacity is below `needed`, grows it to `expected`, which is not less than `needed`, or
  /// by 1/32, whichever is more.
  void grow(size_t needed, size_t expected) {
    if (needed > capacity_) resize_block(std::max(expected, capacity_ + capacity_ / 32));
  }

  /// Grows or shrinks the capacity to `capacity`, which is not less than `size()`. Up to 1/32 of
  /// extra capacity may stay.
  void fit(size_t capacity) {
    if (capacity > capacity_ || capacity_ - capacity > capacity / 32) resize_block(capacity);
  }

  /// Adds `length` uninitialized code units, which the caller must write, and returns a pointer to
  /// the first. Capacity grows by at least half, so that the amortized cost is linear.
  char16_t* extend(size_t length) {
    if (length > capacity_ - size_) {
      const size_t needed = size_ + length;
      const size_t grown = capacity_ + capacity_ / 2;
      resize_block(needed < grown ? grown : needed);
    }
    char16_t* const begin = units() + size_;
    size_ += length;
    return begin;
  }

  /// Adds a text, which may be part of this arena.
  void append(std::u16string_view text);

  void truncate(size_t size) { size_ = size; }

 private:
  void resize_block(size_t capacity);

  OwnedBlock block_;
  size_t size_ = 0;
  size_t capacity_ = 0;
};

}  // namespace numera::host::memory
