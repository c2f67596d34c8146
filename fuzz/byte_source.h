#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace numera::fuzz {

/// Decisions drawn from the bytes of a fuzzer's input, front to back. After the last byte every
/// decision is 0.
class ByteSource {
 public:
  explicit ByteSource(std::span<const std::uint8_t> bytes) : rest_(bytes) {}

  std::uint8_t byte() {
    const auto taken = take(1);
    return taken.empty() ? std::uint8_t{0} : taken[0];
  }

  /// Least significant byte first.
  std::uint16_t word() {
    const unsigned low = byte();
    return static_cast<std::uint16_t>(low | static_cast<unsigned>(byte()) << 8);
  }

  /// A number below `limit`, which is at most 256.
  size_t below(size_t limit) { return byte() % limit; }

  /// The next `count` bytes, or as many as there are.
  std::span<const std::uint8_t> take(size_t count) {
    const auto taken = rest_.first(std::min(count, rest_.size()));
    rest_ = rest_.subspan(taken.size());
    return taken;
  }

  std::span<const std::uint8_t> rest() const { return rest_; }

 private:
  std::span<const std::uint8_t> rest_;
};

}  // namespace numera::fuzz
