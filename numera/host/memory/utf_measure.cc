#include "numera/host/memory/utf_measure.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace numera::host::memory {
namespace {

// Loops of this many steps over bytes become a few vector instructions each.
constexpr size_t kLanes = 16;
using Lanes = std::array<std::uint8_t, kLanes>;

constexpr unsigned char kContinuation = 0x80;

bool continues(unsigned char byte) { return (byte & 0xC0u) == kContinuation; }

// Adds to each lane the code units that its byte begins: none, one, or two for a sequence of four.
void count_units(const unsigned char* bytes, Lanes& units) {
  for (size_t i = 0; i < kLanes; ++i) {
    const auto begins = static_cast<std::uint8_t>(static_cast<signed char>(bytes[i]) >= -64);
    const auto pair = static_cast<std::uint8_t>(bytes[i] >= 0xF0);
    units[i] = static_cast<std::uint8_t>(units[i] + begins + pair);
  }
}

size_t sum(const Lanes& lanes) {
  constexpr std::uint64_t kEven = 0x00FF00FF00FF00FF;
  std::uint64_t words[2];
  std::memcpy(words, lanes.data(), kLanes);
  std::uint64_t sums = 0;
  for (const std::uint64_t word : words) sums += (word & kEven) + (word >> 8 & kEven);
  return sums * 0x0001000100010001 >> 48;
}

// The first `length` bytes of a block, and bytes that count nothing behind them.
Lanes padded(const unsigned char* bytes, size_t length, size_t readable) {
  Lanes block;
  if (readable < kLanes) {
    block.fill(kContinuation);
    std::memcpy(block.data(), bytes, length);
    return block;
  }
  std::memcpy(block.data(), bytes, kLanes);
  for (size_t i = 0; i < kLanes; ++i) {
    block[i] = i < length ? block[i] : kContinuation;
  }
  return block;
}

// `readable` bytes, no fewer than `length`, lie at `bytes`.
inline size_t measure(const unsigned char* bytes, size_t length, size_t readable) {
  constexpr size_t kMostRounds = 120;  // a lane counts up to 2 a round
  size_t units = 0;
  while (length > 0) {
    Lanes lanes{};
    for (size_t left = kMostRounds; left > 0 && length >= kLanes; --left) {
      count_units(bytes, lanes);
      bytes += kLanes;
      length -= kLanes;
      readable -= kLanes;
    }
    if (length > 0 && length < kLanes) {
      count_units(padded(bytes, length, readable).data(), lanes);
      length = 0;
    }
    units += sum(lanes);
  }
  return units;
}

const unsigned char* bytes_of(std::string_view text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

unsigned char bits_of(const unsigned char* bytes, size_t length) {
  unsigned char bits = 0;
  for (size_t i = 0; i < length; ++i) bits = static_cast<unsigned char>(bits | bytes[i]);
  return bits;
}

}  // namespace

bool is_ascii(std::string_view text) noexcept {
  constexpr size_t kStep = 1024;
  const unsigned char* bytes = bytes_of(text);
  size_t left = text.size();
  for (; left >= kStep; left -= kStep, bytes += kStep) {
    if (bits_of(bytes, kStep) >= 0x80) return false;
  }
  return bits_of(bytes, left) < 0x80;
}

size_t measure_utf8(std::string_view text) noexcept {
  return measure(bytes_of(text), text.size(), text.size());
}

size_t measure_utf16(std::u16string_view text) noexcept {
  constexpr size_t kStep = 4096;
  size_t bytes = 0;
  while (!text.empty()) {
    const std::u16string_view step = text.substr(0, kStep);
    std::uint16_t more = 0;  // than one byte a unit
    for (const char16_t unit : step) {
      // Two bytes for either half of a surrogate pair.
      const bool surrogate = (unit & 0xF800u) == 0xD800u;
      more = static_cast<std::uint16_t>(more + (unit >= 0x80) + ((unit >= 0x800) & !surrogate));
    }
    bytes += step.size() + more;
    text.remove_prefix(step.size());
  }
  return bytes;
}

template <class Offset>
Borders measure_texts(std::span<const Offset> offsets, std::string_view chunk, size_t base,
                      size_t* begins) noexcept {
  const unsigned char* const bytes = bytes_of(chunk);
  bool within = false;
  size_t begin = 0;
  begins[0] = base;
  for (size_t k = 1; k < offsets.size(); ++k) {
    const auto end = static_cast<size_t>(offsets[k] - offsets[0]);
    if (begin < end) {
      within = within || continues(bytes[begin]);
      base += measure(bytes + begin, end - begin, chunk.size() - begin);
      begin = end;
    }
    begins[k] = base;
  }
  return within ? Borders::WithinCharacters : Borders::BetweenCharacters;
}

template Borders measure_texts(std::span<const std::int32_t>, std::string_view, size_t,
                               size_t*) noexcept;
template Borders measure_texts(std::span<const std::int64_t>, std::string_view, size_t,
                               size_t*) noexcept;

}  // namespace numera::host::memory
