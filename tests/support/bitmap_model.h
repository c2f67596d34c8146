#pragma once

/// \file
/// Copies bits one at a time. The tests compare the library's bitmap copy with it.

#include <cstddef>
#include <cstdint>
#include <vector>

namespace numera::testing {

using Bytes = std::vector<std::uint8_t>;

inline bool bit_of(const Bytes& bytes, size_t bit) { return bytes[bit / 8] >> (bit % 8) & 1; }

inline void set_bit(Bytes& bytes, size_t bit, bool value) {
  const auto mask = static_cast<std::uint8_t>(1 << (bit % 8));
  bytes[bit / 8] =
      static_cast<std::uint8_t>(value ? bytes[bit / 8] | mask : bytes[bit / 8] & ~mask);
}

/// Returns `target` after a copy of `length` bits of `source` to bit `position`. `total` bits of
/// `target` are in use.
///
/// A copy to the start of a byte first copies whole bytes: all bytes of the source, or all but the
/// last if `length` is not a multiple of 8. Then it copies single bits up to `length`. Beyond
/// `length`, only bits that are not in use change.
inline Bytes CopyBitmapModel(const Bytes& source, size_t length, Bytes target, size_t position,
                             size_t total) {
  if (source.empty() || target.empty()) return target;
  size_t carried = 0;
  if (position % 8 == 0) carried = 8 * (length % 8 == 0 ? source.size() : source.size() - 1);
  for (size_t i = 0; i < source.size() * 8; ++i) {
    const size_t to = position + i;
    const bool unused = to >= total && to < target.size() * 8;
    if (i < length || (i < carried && unused)) set_bit(target, to, bit_of(source, i));
  }
  return target;
}

}  // namespace numera::testing
