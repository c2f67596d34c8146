#pragma once

/// \file
/// Strict conversion between UTF-8 and UTF-16 into the caller's memory. Except for `describe`,
/// nothing here allocates.

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace numera::host::memory {

enum class TextFault {
  None,
  TruncatedSequence,
  InvalidByte,
  OverlongSequence,
  SurrogateCodePoint,
  CodePointTooLarge,
  UnpairedHighSurrogate,
  UnpairedLowSurrogate,
};

struct Transcoded {
  size_t read;     ///< number of bytes or code units read; after a fault, the position of the fault
  size_t written;  ///< code units or bytes written
  TextFault fault = TextFault::None;
};

/// Converts until the end or the first fault. `units` has room for at least `measure_utf8(text)`
/// units; units behind those written may change. Long texts are read one machine word at a time.
Transcoded utf8_to_utf16(std::string_view text, std::span<char16_t> units) noexcept;
/// Converts until the end or the first fault. `bytes` has room for at least `measure_utf16(text)`
/// bytes; bytes behind those written may change.
Transcoded utf16_to_utf8(std::u16string_view text, std::span<char> bytes) noexcept;

/// Writes one code unit per byte. `text` is ASCII.
void widen_ascii(std::string_view text, char16_t* units) noexcept;

/// The fault and its position, counted from 0: "Overlong sequence at byte 3.".
std::string describe(const Transcoded& result);

}  // namespace numera::host::memory
