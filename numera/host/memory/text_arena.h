#pragma once

/// \file
/// Many texts in one block of UTF-16 code units.

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

  /// Room for `capacity` code units in all and not more. Throws `std::bad_alloc`, as `extend` and
  /// `append` do; the arena is as before then.
  void reserve(size_t capacity) {
    if (capacity > capacity_) resize_block(capacity);
  }

  /// Makes room for `needed` code units where there is none: for `expected` in all, which is no
  /// less, and for a little more than there was at least.
  void grow(size_t needed, size_t expected) {
    if (needed > capacity_) resize_block(std::max(expected, capacity_ + capacity_ / 32));
  }

  /// Room for `capacity` code units, no fewer than there are, and hardly any more.
  void fit(size_t capacity) {
    if (capacity > capacity_ || capacity_ - capacity > capacity / 32) resize_block(capacity);
  }

  /// Adds code units that the caller writes, and returns the first. Room grows by half at least,
  /// so that many small steps cost as much as one large one.
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

  /// Adds a text, which may lie in this very arena.
  void append(std::u16string_view text);

  void truncate(size_t size) { size_ = size; }

 private:
  void resize_block(size_t capacity);

  OwnedBlock block_;
  size_t size_ = 0;
  size_t capacity_ = 0;
};

}  // namespace numera::host::memory
