#pragma once

#include <concepts>
#include <cstdint>
#include <span>

namespace numera::format {

/// Bytes that hold `bits` bits.
template <std::integral Count>
constexpr Count bitmap_bytes(Count bits) {
  return bits / 8 + (bits % 8 != 0 ? 1 : 0);
}

/// Where a run of bits goes.
struct BitmapTarget {
  std::span<std::uint8_t> bytes;
  std::int64_t position;  ///< the bit where the run starts
  std::int64_t total;     ///< bits in use; those from here to the end of the last byte are unused
};

/// Copies `length` bits, from bit 0 of `source` on, to `target`; bits are numbered least
/// significant first. `target.position + length` is at most `target.total`, and `target.bytes`
/// holds `target.total` bits.
///
/// Returns how many bits were copied: a source that is too short leaves the bits beyond its end as
/// they are. A copy that starts on a
/// byte moves whole bytes, as many as the source has (all but the last unless `length` is a
/// multiple of 8): what these carry past `length` reaches the unused bits at the end of the target,
/// and never a bit in use.
std::int64_t copy_bitmap(std::span<const std::uint8_t> source, std::int64_t length,
                         BitmapTarget target);

/// Copies the bits of one chunk after another, each with `copy_bitmap`, and writes every byte on
/// the way: what a chunk has no bits for, and what is unused at the end, takes the bits of a fill.
class BitmapWriter {
 public:
  /// `bytes` need not be initialized. They hold `total` bits, the sum of the lengths to come, or
  /// are empty: then nothing is written. `fill` is 0 or 0xFF.
  BitmapWriter(std::span<std::uint8_t> bytes, std::int64_t total, std::uint8_t fill);

  void append(std::span<const std::uint8_t> source, std::int64_t length);

 private:
  std::span<std::uint8_t> bytes_;
  std::int64_t total_;
  std::uint8_t fill_;
  std::int64_t position_ = 0;
};

}  // namespace numera::format
