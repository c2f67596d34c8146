#include <cstdint>
#include <cstring>

#include "numera/host/memory/utf_steps.h"
#include "numera/host/memory/utf_transcode.h"
#include "numera/host/memory/utf_words.h"

namespace numera::host::memory {
namespace {

using Byte = unsigned char;

using Decoding = Transcoding<Byte, char16_t>;

bool continues(unsigned byte) { return (byte & 0xC0u) == 0x80u; }
bool is_surrogate(std::uint64_t value) { return value - 0xD800u < 0x800u; }

// Names the fault of the invalid sequence at the beginning of `text`.
TextFault classify(const Byte* text, size_t length) {
  const unsigned lead = text[0];
  if (continues(lead) || lead >= 0xF8) return TextFault::InvalidByte;
  const size_t wanted = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  size_t found = 1;
  while (found < wanted && found < length && continues(text[found])) ++found;
  if (found < wanted) return TextFault::TruncatedSequence;
  const unsigned second = text[1];
  if (lead < 0xC2 || (lead == 0xE0 && second < 0xA0) || (lead == 0xF0 && second < 0x90)) {
    return TextFault::OverlongSequence;
  }
  return lead == 0xED ? TextFault::SurrogateCodePoint : TextFault::CodePointTooLarge;
}

// Decodes the non-ASCII character at the beginning of `text`. Returns its length in bytes and sets
// `value` to its code point. Returns 0 if the sequence is invalid.
size_t decode_one(const Byte* text, size_t length, std::uint32_t& value) {
  const unsigned lead = text[0];
  const size_t bytes = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  constexpr std::uint32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
  if (lead < 0xC0 || lead >= 0xF8 || bytes > length) return 0;
  value = lead & (0x7Fu >> bytes);
  for (size_t i = 1; i < bytes; ++i) {
    if (!continues(text[i])) return 0;
    value = value << 6 | (text[i] & 0x3Fu);
  }
  const bool valid = value >= kSmallest[bytes] && value <= 0x10FFFF && !is_surrogate(value);
  return valid ? bytes : 0;
}

// Decodes one character of any length, byte by byte. Returns false if it is invalid.
bool step(Decoding& text) {
  if (text.next[0] < 0x80) {
    *text.out = text.next[0];
    text.advance(1, 1);
    return true;
  }
  std::uint32_t value = 0;
  const size_t bytes = decode_one(text.next, text.left(), value);
  if (bytes == 0) return false;
  if (value < 0x10000) {
    *text.out = static_cast<char16_t>(value);
    text.advance(bytes, 1);
  } else {
    text.out[0] = static_cast<char16_t>(0xD7C0u + (value >> 10));
    text.out[1] = static_cast<char16_t>(0xDC00u + (value & 0x3FFu));
    text.advance(bytes, 2);
  }
  return true;
}

// Decodes four sequences of two bytes. Each 16-bit quarter has its lead byte in the low half and
// its continuation byte in the high half.
bool step_by_four_pairs(Decoding& text, std::uint64_t word) {
  if ((word & in_each_quarter(0xC0E0)) != in_each_quarter(0x80C0)) return false;
  const std::uint64_t units =
      (word & in_each_quarter(0x001F)) << 6 | (word >> 8 & in_each_quarter(0x003F));
  if (!no_quarter_is_ascii(units)) return false;  // overlong
  store_word(text.out, units);
  text.advance(8, 4);
  return true;
}

std::uint64_t value_of_three(std::uint64_t word) {
  return (word & 0x0F) << 12 | (word >> 2 & 0xFC0) | (word >> 16 & 0x3F);
}

bool is_value_of_three(std::uint64_t value) { return value >= 0x800 && !is_surrogate(value); }

// Decodes two sequences of three bytes.
bool step_by_two_triples(Decoding& text, std::uint64_t word) {
  if ((word & 0xC0C0F0C0C0F0) != 0x8080E08080E0) return false;
  const std::uint64_t first = value_of_three(word);
  const std::uint64_t second = value_of_three(word >> 24);
  if (!is_value_of_three(first) || !is_value_of_three(second)) return false;
  store_half_word(text.out, first | second << 16);
  text.advance(6, 2);
  return true;
}

// Decodes one sequence of two or three bytes.
bool step_by_one_short(Decoding& text, std::uint64_t word) {
  if ((word & 0xC0E0) == 0x80C0 && (word & 0x1E) != 0) {
    *text.out = static_cast<char16_t>((word & 0x1F) << 6 | (word >> 8 & 0x3F));
    text.advance(2, 1);
    return true;
  }
  const std::uint64_t value = value_of_three(word);
  if ((word & 0xC0C0F0) != 0x8080E0 || !is_value_of_three(value)) return false;
  *text.out = static_cast<char16_t>(value);
  text.advance(3, 1);
  return true;
}

// Decodes the first character of a word, or as many as are of one length.
bool step_by_word(Decoding& text, std::uint64_t word) {
  return step_by_four_pairs(text, word) || step_by_two_triples(text, word) ||
         step_by_one_short(text, word) || step(text);
}

}  // namespace

Transcoded utf8_to_utf16(std::string_view text, std::span<char16_t> units) noexcept {
  const auto* const begin = reinterpret_cast<const Byte*>(text.data());
  Decoding decoding{begin, begin + text.size(), units.data(), units.data() + units.size()};
  bool valid = transcode_words(decoding, step_by_word);
  while (valid && decoding.next != decoding.end) valid = step(decoding);
  return {static_cast<size_t>(decoding.next - begin),
          static_cast<size_t>(decoding.out - units.data()),
          valid ? TextFault::None : classify(decoding.next, decoding.left())};
}

void widen_ascii(std::string_view text, char16_t* units) noexcept {
  copy_ascii(reinterpret_cast<const Byte*>(text.data()), units, text.size());
}

}  // namespace numera::host::memory
