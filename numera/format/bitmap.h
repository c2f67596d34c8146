#pragma once

#include <concepts>
#include <cstdint>
#include <span>

namespace numera::format {

/// The number of bytes that hold `bits` bits.
template <std::integral Count>
constexpr Count bitmap_bytes(Count bits) {
  return bits / 8 + (bits % 8 != 0 ? 1 : 0);
}

/// The destination of a run of bits.
struct BitmapTarget {
  std::span<std::uint8_t> bytes;
  std::int64_t position;  ///< the bit where the run starts
  std::int64_t total;     ///< bits in use; the other bits of the last byte are unused
};

/// Copies the first `length` bits of `source` to `target`. Bits are numbered least significant
/// first. `target.position + length` is at most `target.total`, and `target.bytes` holds
/// `target.total` bits.
///
/// Returns the number of bits copied. If the source is too short, the bits beyond its end keep
/// their values.
///
/// If the copy starts on a byte boundary, the unused bits at the end of the target may also be
/// overwritten with source bits after `length`. The last byte of the source is used for this only
/// if `length` is a multiple of 8. Bits in use are never overwritten with them.
std::int64_t copy_bitmap(std::span<const std::uint8_t> source, std::int64_t length,
                         BitmapTarget target);

/// Appends the bits of one chunk after another with `copy_bitmap`. Every byte is written. Missing
/// bits of a chunk are taken from `fill`. So are the unused bits at the end, unless `copy_bitmap`
/// copies source bits into them.
class BitmapWriter {
 public:
  /// `bytes` need not be initialized. They hold `total` bits, the sum of all lengths to be
  /// appended. If `bytes` is empty, nothing is written. `fill` is 0 or 0xFF.
  BitmapWriter(std::span<std::uint8_t> bytes, std::int64_t total, std::uint8_t fill);

  void append(std::span<const std::uint8_t> source, std::int64_t length);

 private:
  std::span<std::uint8_t> bytes_;
  std::int64_t total_;
  std::uint8_t fill_;
  std::int64_t position_ = 0;
};

}  // namespace numera::format
