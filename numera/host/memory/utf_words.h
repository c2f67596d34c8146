#pragma once

/// \file
/// Reads and writes texts one machine word at a time. A word holds eight bytes or four code units,
/// the first in its lowest bits.

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace numera::host::memory {

inline constexpr size_t kWordBytes = sizeof(std::uint64_t);

inline std::uint64_t load_word(const void* source) {
  std::uint64_t word;
  std::memcpy(&word, source, sizeof word);
  return word;
}

inline void store_word(void* target, std::uint64_t word) {
  std::memcpy(target, &word, sizeof word);
}

inline void store_half_word(void* target, std::uint64_t word) {
  const auto half = static_cast<std::uint32_t>(word);
  std::memcpy(target, &half, sizeof half);
}

/// The same 16 bits in each quarter of a word.
constexpr std::uint64_t in_each_quarter(std::uint16_t bits) {
  return bits * std::uint64_t{0x0001000100010001};
}

/// Whether every quarter is at least 0x80. No quarter may be above 0x7FFF.
inline bool no_quarter_is_ascii(std::uint64_t quarters) {
  return ((quarters + in_each_quarter(0x8000 - 0x80)) & in_each_quarter(0x8000)) ==
         in_each_quarter(0x8000);
}

}  // namespace numera::host::memory
