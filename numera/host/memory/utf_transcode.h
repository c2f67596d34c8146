#pragma once

/// \file
/// Strict conversion between UTF-8 and UTF-16, into memory of the caller. Nothing here allocates.

#include <cstddef>
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
  size_t read;     ///< bytes or code units read; at a fault, where it begins
  size_t written;  ///< code units or bytes written
  TextFault fault = TextFault::None;
};

struct Utf8Measure {
  size_t units;  ///< UTF-16 code units of a valid text; of any other at least those of each valid
                 ///< piece of it
  bool ascii;
};
Utf8Measure measure_utf8(std::string_view text) noexcept;
/// UTF-8 bytes of a valid text; of any other at least those of its valid beginning.
size_t measure_utf16(std::u16string_view text) noexcept;

/// Converts until the end or the first fault. `units` has room for `measure_utf8(text).units`.
Transcoded utf8_to_utf16(std::string_view text, char16_t* units) noexcept;
/// Converts until the end or the first fault. `bytes` has room for `measure_utf16(text)`.
Transcoded utf16_to_utf8(std::u16string_view text, char* bytes) noexcept;

/// One code unit a byte. `text` is ASCII.
void widen_ascii(std::string_view text, char16_t* units) noexcept;

/// What is wrong and where, counted from 0: "Overlong sequence at byte 3.".
std::string describe(const Transcoded& result);

}  // namespace numera::host::memory
