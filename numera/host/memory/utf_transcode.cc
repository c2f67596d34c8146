#include "numera/host/memory/utf_transcode.h"

#include <utf8.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace numera::host::memory {
namespace {

// Bytes or code units that are looked at together for being ASCII.
constexpr size_t kStep = 16;

bool ascii_step(const char* bytes) {
  std::uint64_t words[kStep / sizeof(std::uint64_t)];
  std::memcpy(words, bytes, kStep);
  return ((words[0] | words[1]) & 0x8080808080808080u) == 0;
}

void widen_step(const char* bytes, char16_t* units) {
  for (size_t i = 0; i < kStep; ++i) units[i] = static_cast<unsigned char>(bytes[i]);
}

bool ascii_step(const char16_t* units) {
  unsigned bits = 0;
  for (size_t i = 0; i < kStep; ++i) bits |= units[i];
  return bits < 0x80;
}

void narrow_step(const char16_t* units, char* bytes) {
  for (size_t i = 0; i < kStep; ++i) bytes[i] = static_cast<char>(units[i]);
}

unsigned at(std::string_view text, size_t i) { return static_cast<unsigned char>(text[i]); }

bool continues(unsigned byte) { return (byte & 0xC0u) == 0x80u; }

// How many of `wanted` continuation bytes follow the lead byte at `begin`.
size_t count_continuations(std::string_view text, size_t begin, size_t wanted) {
  size_t found = 0;
  while (found < wanted && begin + 1 + found < text.size() &&
         continues(at(text, begin + 1 + found))) {
    ++found;
  }
  return found;
}

// Names what is wrong with the sequence that begins at `begin` and was refused.
TextFault classify(std::string_view text, size_t begin) {
  const unsigned lead = at(text, begin);
  if (continues(lead) || lead >= 0xF8) return TextFault::InvalidByte;
  const size_t wanted = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
  if (count_continuations(text, begin, wanted) < wanted) return TextFault::TruncatedSequence;
  const unsigned second = at(text, begin + 1);
  if (lead < 0xC2 || (lead == 0xE0 && second < 0xA0) || (lead == 0xF0 && second < 0x90)) {
    return TextFault::OverlongSequence;
  }
  return lead == 0xED ? TextFault::SurrogateCodePoint : TextFault::CodePointTooLarge;
}

// A sequence of two or three bytes that is valid, the bulk of all text that is not ASCII; its
// length, or 0 where the checked decoder has to look.
size_t decode_short(std::string_view text, size_t begin, char16_t* unit) {
  const unsigned lead = at(text, begin);
  const size_t left = text.size() - begin;
  if (lead >= 0xC2 && lead < 0xE0 && left >= 2) {
    const unsigned second = at(text, begin + 1);
    if (!continues(second)) return 0;
    *unit = static_cast<char16_t>((lead & 0x1Fu) << 6 | (second & 0x3Fu));
    return 2;
  }
  if (lead >= 0xE0 && lead < 0xF0 && left >= 3) {
    const unsigned second = at(text, begin + 1);
    const unsigned third = at(text, begin + 2);
    const unsigned value = (lead & 0x0Fu) << 12 | (second & 0x3Fu) << 6 | (third & 0x3Fu);
    const bool surrogate = value - 0xD800u < 0x800u;
    if (!continues(second) || !continues(third) || value < 0x800u || surrogate) return 0;
    *unit = static_cast<char16_t>(value);
    return 3;
  }
  return 0;
}

// A sequence of four bytes, as a surrogate pair, through the checked decoder, which refuses
// whatever is left and not valid. Its length, or 0 where it was refused.
size_t decode_long(std::string_view text, size_t begin, char16_t* pair) noexcept {
  const char* next = text.data() + begin;
  try {
    const std::uint32_t code_point = utf8::next(next, text.data() + text.size());
    pair[0] = static_cast<char16_t>(0xD7C0u + (code_point >> 10));
    pair[1] = static_cast<char16_t>(0xDC00u + (code_point & 0x3FFu));
  } catch (const utf8::exception&) {
    return 0;
  }
  return static_cast<size_t>(next - text.data()) - begin;
}

bool is_high(char16_t unit) { return unit >= 0xD800 && unit < 0xDC00; }
bool is_low(char16_t unit) { return unit >= 0xDC00 && unit < 0xE000; }

// A code point that is not ASCII; the code units it takes, or 0 for an unpaired surrogate.
size_t encode_one(std::u16string_view text, size_t begin, char*& bytes) noexcept {
  const unsigned unit = text[begin];
  const auto put = [&bytes](unsigned byte) { *bytes++ = static_cast<char>(byte); };
  if (unit < 0x800) {
    put(0xC0u | unit >> 6);
    put(0x80u | (unit & 0x3Fu));
    return 1;
  }
  if (!is_high(text[begin]) && !is_low(text[begin])) {
    put(0xE0u | unit >> 12);
    put(0x80u | (unit >> 6 & 0x3Fu));
    put(0x80u | (unit & 0x3Fu));
    return 1;
  }
  if (!is_high(text[begin]) || begin + 1 == text.size() || !is_low(text[begin + 1])) return 0;
  const char16_t* const pair = text.data() + begin;
  bytes = utf8::utf16to8(pair, pair + 2, bytes);
  return 2;
}

}  // namespace

Utf8Measure measure_utf8(std::string_view text) noexcept {
  size_t i = 0;
  while (text.size() - i >= kStep && ascii_step(text.data() + i)) i += kStep;
  while (i < text.size() && at(text, i) < 0x80) ++i;
  if (i == text.size()) return {text.size(), true};
  size_t units = i;
  for (; i < text.size(); ++i) {
    const unsigned byte = at(text, i);
    units += (continues(byte) ? 0u : 1u) + (byte >= 0xF0 ? 1u : 0u);
  }
  return {units, false};
}

size_t measure_utf16(std::u16string_view text) noexcept {
  size_t bytes = 0;
  for (const char16_t unit : text) {
    // Two bytes for either half of a surrogate pair.
    const bool surrogate = unit >= 0xD800 && unit < 0xE000;
    bytes += 1u + (unit >= 0x80 ? 1u : 0u) + (unit >= 0x800 && !surrogate ? 1u : 0u);
  }
  return bytes;
}

void widen_ascii(std::string_view text, char16_t* units) noexcept {
  size_t i = 0;
  for (; text.size() - i >= kStep; i += kStep) widen_step(text.data() + i, units + i);
  for (; i < text.size(); ++i) units[i] = static_cast<char16_t>(at(text, i));
}

Transcoded utf8_to_utf16(std::string_view text, char16_t* units) noexcept {
  char16_t* out = units;
  size_t i = 0;
  while (i < text.size()) {
    while (text.size() - i >= kStep && ascii_step(text.data() + i)) {
      widen_step(text.data() + i, out);
      i += kStep;
      out += kStep;
    }
    while (i < text.size() && at(text, i) < 0x80) *out++ = static_cast<char16_t>(at(text, i++));
    while (i < text.size() && at(text, i) >= 0x80) {
      if (const size_t length = decode_short(text, i, out)) {
        i += length;
        out += 1;
      } else if (const size_t long_length = decode_long(text, i, out)) {
        i += long_length;
        out += 2;
      } else {
        return {i, static_cast<size_t>(out - units), classify(text, i)};
      }
    }
  }
  return {i, static_cast<size_t>(out - units)};
}

Transcoded utf16_to_utf8(std::u16string_view text, char* bytes) noexcept {
  char* out = bytes;
  size_t i = 0;
  while (i < text.size()) {
    while (text.size() - i >= kStep && ascii_step(text.data() + i)) {
      narrow_step(text.data() + i, out);
      i += kStep;
      out += kStep;
    }
    while (i < text.size() && text[i] < 0x80) *out++ = static_cast<char>(text[i++]);
    while (i < text.size() && text[i] >= 0x80) {
      const size_t length = encode_one(text, i, out);
      if (length == 0) {
        return {
            i, static_cast<size_t>(out - bytes),
            is_high(text[i]) ? TextFault::UnpairedHighSurrogate : TextFault::UnpairedLowSurrogate};
      }
      i += length;
    }
  }
  return {i, static_cast<size_t>(out - bytes)};
}

std::string describe(const Transcoded& result) {
  const auto says = [&result](const char* what, const char* place) {
    return std::string(what) + " at " + place + " " + std::to_string(result.read) + ".";
  };
  switch (result.fault) {
    case TextFault::None:
      break;
    case TextFault::TruncatedSequence:
      return says("Truncated sequence", "byte");
    case TextFault::InvalidByte:
      return says("Invalid lead byte", "byte");
    case TextFault::OverlongSequence:
      return says("Overlong sequence", "byte");
    case TextFault::SurrogateCodePoint:
      return says("Surrogate code point", "byte");
    case TextFault::CodePointTooLarge:
      return says("Code point above U+10FFFF", "byte");
    case TextFault::UnpairedHighSurrogate:
      return says("Unpaired high surrogate", "code unit");
    case TextFault::UnpairedLowSurrogate:
      return says("Unpaired low surrogate", "code unit");
  }
  return "No fault.";
}

}  // namespace numera::host::memory
