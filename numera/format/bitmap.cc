#include "numera/format/bitmap.h"

#include <algorithm>
#include <cstring>

namespace numera::format {
namespace {

constexpr std::uint8_t low_bits(std::int64_t count) {
  return static_cast<std::uint8_t>((1U << count) - 1U);
}

/// Replaces the bits of `byte` that are set in `mask` by those of `bits`.
void merge(std::uint8_t& byte, std::uint8_t bits, std::uint8_t mask) {
  byte = static_cast<std::uint8_t>((byte & ~mask) | (bits & mask));
}

void copy_aligned(const std::uint8_t* source, std::int64_t bits, std::uint8_t* target) {
  const std::int64_t whole = bits / 8;
  if (whole > 0) std::memcpy(target, source, static_cast<size_t>(whole));
  if (bits % 8 != 0) merge(target[whole], source[whole], low_bits(bits % 8));
}

std::uint64_t load_word(const std::uint8_t* bytes, size_t count = 8) {
  std::uint64_t word = 0;
  std::memcpy(&word, bytes, count);
  return word;
}

void store_word(std::uint8_t* target, std::uint64_t word, size_t count = 8) {
  std::memcpy(target, &word, count);
}

/// Copies the last `bits` (1 to 63) bits to a target that starts at bit `shift`.
void copy_shifted_end(const std::uint8_t* source, std::int64_t bits, std::uint8_t* target,
                      int shift) {
  const std::uint64_t word = load_word(source, static_cast<size_t>(bitmap_bytes(bits)));
  const std::int64_t end = shift + bits;
  const std::int64_t whole = end / 8;
  const std::uint64_t moved = (target[0] & std::uint64_t{low_bits(shift)}) | word << shift;
  store_word(target, moved, static_cast<size_t>(std::min<std::int64_t>(whole, 8)));
  if (end % 8 == 0) return;
  const std::uint64_t last = whole < 8 ? moved >> (8 * whole) : word >> (64 - shift);
  merge(target[whole], static_cast<std::uint8_t>(last), low_bits(end % 8));
}

/// Copies 64 bits at a time to a target that starts at bit `shift` (1 to 7) of its first byte.
/// Every word after the first is computed from the source alone, so no word depends on the one
/// before.
void copy_shifted(const std::uint8_t* source, std::int64_t bits, std::uint8_t* target, int shift) {
  const std::int64_t words = bits / 64;
  if (words > 0) {
    store_word(target, (target[0] & std::uint64_t{low_bits(shift)}) | load_word(source) << shift);
    for (std::int64_t i = 1; i < words; ++i) {
      const std::uint64_t before = load_word(source + 8 * (i - 1));
      store_word(target + 8 * i, before >> (64 - shift) | load_word(source + 8 * i) << shift);
    }
    source += 8 * words;
    target += 8 * words;
    merge(*target, static_cast<std::uint8_t>(source[-1] >> (8 - shift)), low_bits(shift));
  }
  if (bits % 64 != 0) copy_shifted_end(source, bits % 64, target, shift);
}

/// Copies source bits into the unused bits of the last target byte, under the conditions that
/// `copy_bitmap` states.
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

/// Sets bits [begin, end), begin < end, to those of `fill`.
void fill_bits(std::uint8_t* bytes, std::int64_t begin, std::int64_t end, std::uint8_t fill) {
  std::int64_t first = begin / 8;
  const std::int64_t last = end / 8;
  const std::uint8_t kept = low_bits(begin % 8);
  if (first == last) {
    merge(bytes[first], fill, static_cast<std::uint8_t>(low_bits(end % 8) & ~kept));
    return;
  }
  merge(bytes[first], fill, static_cast<std::uint8_t>(~kept));
  ++first;
  std::memset(bytes + first, fill, static_cast<size_t>(last - first));
  if (end % 8 != 0) merge(bytes[last], fill, low_bits(end % 8));
}

}  // namespace

std::int64_t copy_bitmap(std::span<const std::uint8_t> source, std::int64_t length,
                         BitmapTarget target) {
  if (source.empty() || target.bytes.empty()) return 0;
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
  return bits;
}

BitmapWriter::BitmapWriter(std::span<std::uint8_t> bytes, std::int64_t total, std::uint8_t fill)
    : bytes_(bytes), total_(total), fill_(fill) {
  if (!bytes.empty()) bytes.back() = fill;
}

void BitmapWriter::append(std::span<const std::uint8_t> source, std::int64_t length) {
  const std::int64_t copied = copy_bitmap(source, length, {bytes_, position_, total_});
  if (copied < length && !bytes_.empty()) {
    fill_bits(bytes_.data(), position_ + copied, position_ + length, fill_);
  }
  position_ += length;
}

}  // namespace numera::format
