#include "numera/host/memory/utf_measure.h"

#include <bit>
#include <cstdint>
#include <cstring>

namespace numera::host::memory {
namespace {

// Vectors of 16 bytes, independent of the instruction set.
constexpr size_t kLanes = 16;
using Lanes [[gnu::vector_size(kLanes)]] = signed char;
using Counts [[gnu::vector_size(kLanes)]] = unsigned char;

bool continues(unsigned char byte) { return (byte & 0xC0u) == 0x80u; }

Lanes load(const unsigned char* bytes) {
  Lanes lanes;
  std::memcpy(&lanes, bytes, kLanes);
  return lanes;
}

// Minus the number of code units that each byte starts: 0 for a continuation byte, 2 for the lead
// of a four-byte sequence, otherwise 1.
Lanes minus_units(Lanes bytes) {
  constexpr signed char kFirstLead = -64;        // 0xC0; continuation bytes are below
  constexpr signed char kFirstLeadOfFour = -16;  // 0xF0; ASCII bytes are 0 and above
  return (bytes >= kFirstLead) + ((bytes >= kFirstLeadOfFour) & (bytes < 0));
}

// Loads the first `length` bytes and fills the rest with continuation bytes, which count as 0.
// Bytes before `end` may be read.
Lanes load_some(const unsigned char* bytes, size_t length, const unsigned char* end) {
  constexpr Lanes kPlaces = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
  constexpr signed char kContinuation = -128;
  Lanes lanes = Lanes{} + kContinuation;
  if (static_cast<size_t>(end - bytes) < kLanes) {
    std::memcpy(&lanes, bytes, length);
    return lanes;
  }
  return kPlaces < static_cast<signed char>(length) ? load(bytes) : lanes;
}

size_t sum(Counts counts) {
  constexpr std::uint64_t kEven = 0x00FF00FF00FF00FF;
  std::uint64_t words[2];
  std::memcpy(words, &counts, kLanes);
  std::uint64_t sums = 0;
  for (const std::uint64_t word : words) sums += (word & kEven) + (word >> 8 & kEven);
  return sums * 0x0001000100010001 >> 48;
}

constexpr size_t kMostBytes = 120 * kLanes;  // each of 120 rounds adds at most 2 to an 8-bit lane

// Code units of at most `kMostBytes` bytes.
inline size_t measure_piece(const unsigned char* bytes, size_t length, const unsigned char* end) {
  Counts counts{};
  const auto count = [&counts](Lanes lanes) {
    counts -= std::bit_cast<Counts>(minus_units(lanes));
  };
  for (; length >= kLanes; length -= kLanes, bytes += kLanes) count(load(bytes));
  if (length > 0) count(load_some(bytes, length, end));
  return sum(counts);
}

// Code units of `length` bytes. Bytes before `end` may be read.
inline size_t measure(const unsigned char* bytes, size_t length, const unsigned char* end) {
  size_t units = 0;
  for (; length > kMostBytes; length -= kMostBytes, bytes += kMostBytes) {
    units += measure_piece(bytes, kMostBytes, end);
  }
  return units + measure_piece(bytes, length, end);
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
  return measure(bytes_of(text), text.size(), bytes_of(text) + text.size());
}

size_t measure_utf16(std::u16string_view text) noexcept {
  constexpr size_t kStep = 4096;
  size_t bytes = 0;
  while (!text.empty()) {
    const std::u16string_view step = text.substr(0, kStep);
    std::uint16_t more = 0;  // bytes beyond one per unit
    for (const char16_t unit : step) {
      // Each half of a surrogate pair takes two bytes.
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
      base += measure(bytes + begin, end - begin, bytes + chunk.size());
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
