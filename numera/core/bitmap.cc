#include "numera/core/bitmap.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace numera::io::arrow::core {
namespace {

static_assert(std::endian::native == std::endian::little,
              "bits of a word are numbered like those of its bytes");

constexpr std::uint8_t low_bits(std::int64_t count) {
  return static_cast<std::uint8_t>((1U << count) - 1U);
}

/// Replaces the bits of `byte` that `mask` names by those of `bits`.
void merge(std::uint8_t& byte, std::uint8_t bits, std::uint8_t mask) {
  byte = static_cast<std::uint8_t>((byte & ~mask) | (bits & mask));
}

void copy_aligned(const std::uint8_t* source, std::int64_t bits, std::uint8_t* target) {
  const std::int64_t whole = bits / 8;
  if (whole > 0) std::memcpy(target, source, static_cast<size_t>(whole));
  if (bits % 8 != 0) merge(target[whole], source[whole], low_bits(bits % 8));
}

/// Moves 64 bits at a time to a target that starts at bit `shift` (1 to 7) of its first byte.
void copy_shifted(const std::uint8_t* source, std::int64_t bits, std::uint8_t* target, int shift) {
  const std::uint64_t kept = low_bits(shift);
  for (; bits >= 64; bits -= 64, source += 8, target += 8) {
    std::uint64_t word = 0;
    std::memcpy(&word, source, 8);
    const std::uint64_t first = (target[0] & kept) | (word << shift);
    std::memcpy(target, &first, 8);
    merge(target[8], static_cast<std::uint8_t>(word >> (64 - shift)), low_bits(shift));
  }
  for (; bits > 0; bits -= 8, ++source, ++target) {
    const unsigned mask = unsigned{low_bits(std::min<std::int64_t>(bits, 8))} << shift;
    const unsigned moved = unsigned{*source} << shift;
    merge(target[0], static_cast<std::uint8_t>(moved), static_cast<std::uint8_t>(mask));
    if ((mask >> 8) != 0) {
      merge(target[1], static_cast<std::uint8_t>(moved >> 8), static_cast<std::uint8_t>(mask >> 8));
    }
  }
}

/// The unused bits behind the last one in use, where whole bytes of `source` reach them.
void carry_unused_bits(std::span<const std::uint8_t> source, std::int64_t length,
                       const BitmapTarget& target) {
  const auto size = static_cast<std::int64_t>(source.size());
  const std::int64_t whole_bytes = length % 8 == 0 ? size : size - 1;
  const std::int64_t last = target.total / 8;
  const std::int64_t from = last - target.position / 8;
  if (target.total % 8 == 0 || from >= whole_bytes) return;
  merge(target.bytes[static_cast<size_t>(last)], source[static_cast<size_t>(from)],
        static_cast<std::uint8_t>(~low_bits(target.total % 8)));
}

}  // namespace

void copy_bitmap(std::span<const std::uint8_t> source, std::int64_t length, BitmapTarget target) {
  if (source.empty() || target.bytes.empty()) return;
  const auto available = static_cast<std::int64_t>(source.size());
  const std::int64_t bits = bitmap_bytes(length) <= available ? length : available * 8;
  std::uint8_t* const first = target.bytes.data() + target.position / 8;
  const auto shift = static_cast<int>(target.position % 8);
  if (shift != 0) {
    copy_shifted(source.data(), bits, first, shift);
  } else {
    copy_aligned(source.data(), bits, first);
    carry_unused_bits(source, length, target);
  }
}

}  // namespace numera::io::arrow::core
