#include <cstdint>

#include "numera/host/memory/utf_steps.h"
#include "numera/host/memory/utf_transcode.h"
#include "numera/host/memory/utf_words.h"

namespace numera::host::memory {
namespace {

using Encoding = Transcoding<char16_t, char>;

bool is_surrogate(std::uint64_t unit) { return (unit & 0xF800) == 0xD800; }
bool is_high(char16_t unit) { return (unit & 0xFC00) == 0xD800; }
bool is_low(char16_t unit) { return (unit & 0xFC00) == 0xDC00; }

// Encodes one character, unit by unit. Returns false if it is invalid.
bool step(Encoding& text) {
  const unsigned unit = text.next[0];
  const auto put = [&text](size_t place, unsigned byte) {
    text.out[place] = static_cast<char>(byte);
  };
  const auto put_tail = [&put](size_t place, unsigned bits) { put(place, 0x80u | (bits & 0x3Fu)); };
  if (unit < 0x80) {
    put(0, unit);
    text.advance(1, 1);
  } else if (unit < 0x800) {
    put(0, 0xC0u | unit >> 6);
    put_tail(1, unit);
    text.advance(1, 2);
  } else if (!is_surrogate(unit)) {
    put(0, 0xE0u | unit >> 12);
    put_tail(1, unit >> 6);
    put_tail(2, unit);
    text.advance(1, 3);
  } else {
    if (!is_high(text.next[0]) || text.left() == 1 || !is_low(text.next[1])) return false;
    const unsigned value = 0x10000u + ((unit & 0x3FFu) << 10) + (text.next[1] & 0x3FFu);
    put(0, 0xF0u | value >> 18);
    put_tail(1, value >> 12);
    put_tail(2, value >> 6);
    put_tail(3, value);
    text.advance(2, 4);
  }
  return true;
}

// Encodes four units that take two bytes each.
bool step_by_four_pairs(Encoding& text, std::uint64_t word) {
  if ((word & in_each_quarter(0xF800)) != 0 || !no_quarter_is_ascii(word)) return false;
  store_word(text.out, in_each_quarter(0x80C0) | (word >> 6 & in_each_quarter(0x001F)) |
                           (word & in_each_quarter(0x003F)) << 8);
  text.advance(4, 8);
  return true;
}

bool takes_three_bytes(std::uint64_t unit) { return unit >= 0x800 && !is_surrogate(unit); }

std::uint64_t three_bytes(std::uint64_t unit) {
  return 0x8080E0 | unit >> 12 | (unit >> 6 & 0x3F) << 8 | (unit & 0x3F) << 16;
}

// Encodes two units that take three bytes each. Also writes the next two bytes; later steps
// overwrite these.
bool step_by_two_triples(Encoding& text, std::uint64_t word) {
  const std::uint64_t first = word & 0xFFFF;
  const std::uint64_t second = word >> 16 & 0xFFFF;
  if (!takes_three_bytes(first) || !takes_three_bytes(second)) return false;
  store_word(text.out, three_bytes(first) | three_bytes(second) << 24);
  text.advance(2, 6);
  return true;
}

// Encodes one unit that takes two or three bytes. Always writes four bytes; later steps overwrite
// the extra ones.
bool step_by_one_short(Encoding& text, std::uint64_t word) {
  const std::uint64_t unit = word & 0xFFFF;
  if (unit < 0x800) {
    store_half_word(text.out, 0x80C0 | unit >> 6 | (unit & 0x3F) << 8);
    text.advance(1, 2);
    return true;
  }
  if (is_surrogate(unit)) return false;
  store_half_word(text.out, three_bytes(unit));
  text.advance(1, 3);
  return true;
}

// Encodes the first character of a word, or as many as are of one length.
bool step_by_word(Encoding& text, std::uint64_t word) {
  return step_by_four_pairs(text, word) || step_by_two_triples(text, word) ||
         step_by_one_short(text, word) || step(text);
}

}  // namespace

Transcoded utf16_to_utf8(std::u16string_view text, std::span<char> bytes) noexcept {
  Encoding encoding{text.data(), text.data() + text.size(), bytes.data(),
                    bytes.data() + bytes.size()};
  bool valid = transcode_words(encoding, step_by_word);
  while (valid && encoding.next != encoding.end) valid = step(encoding);
  const TextFault fault = valid                     ? TextFault::None
                          : is_high(*encoding.next) ? TextFault::UnpairedHighSurrogate
                                                    : TextFault::UnpairedLowSurrogate;
  return {static_cast<size_t>(encoding.next - text.data()),
          static_cast<size_t>(encoding.out - bytes.data()), fault};
}

}  // namespace numera::host::memory
