#pragma once

/// \file
/// Texts that conversions are compared on.

#include <cstddef>
#include <random>
#include <string>

namespace numera::testing {

/// Tests that take minutes without optimization run in full only in release builds.
#ifdef NDEBUG
inline constexpr unsigned kSampledEvery = 1;
#else
inline constexpr unsigned kSampledEvery = 61;
#endif

/// Encodes any value as if it were a code point, even a surrogate.
inline std::string EncodeUtf8(char32_t value) {
  const auto byte = [](char32_t bits) { return static_cast<char>(bits); };
  const auto next = [&](int shift) { return byte(0x80 | (value >> shift & 0x3F)); };
  if (value < 0x80) return {byte(value)};
  if (value < 0x800) return {byte(0xC0 | value >> 6), next(0)};
  if (value < 0x10000) return {byte(0xE0 | value >> 12), next(6), next(0)};
  return {byte(0xF0 | value >> 18), next(12), next(6), next(0)};
}

inline std::u16string EncodeUtf16(char32_t value) {
  if (value < 0x10000) return {static_cast<char16_t>(value)};
  return {static_cast<char16_t>(0xD7C0 + (value >> 10)),
          static_cast<char16_t>(0xDC00 + (value & 0x3FF))};
}

/// Random texts with sequences of all lengths, some damaged. They are the same in every run.
class RandomTexts {
 public:
  explicit RandomTexts(unsigned seed) : random_(seed) {}

  size_t below(size_t limit) { return random_() % limit; }

  char32_t code_point() {
    constexpr char32_t kEnds[] = {0x80, 0x80, 0x800, 0x10000, 0x110000};
    return static_cast<char32_t>(below(kEnds[below(5)]));
  }

  std::string utf8() {
    std::string text;
    for (size_t left = below(12); left > 0; --left) text += EncodeUtf8(code_point());
    if (below(4) == 0) text += std::string(below(40), 'a');
    if (below(2) == 0) damage(text, static_cast<char>(below(256)));
    return text;
  }

  std::u16string utf16() {
    std::u16string text;
    for (size_t left = below(12); left > 0; --left) text += EncodeUtf16(code_point());
    if (below(4) == 0) text += std::u16string(below(40), u'a');
    if (below(2) == 0) damage(text, static_cast<char16_t>(0xD700 + below(0xA00)));
    return text;
  }

 private:
  template <class Text>
  void damage(Text& text, typename Text::value_type unit) {
    const size_t place = below(text.size() + 1);
    if (place == text.size() || below(3) == 0) {
      text.insert(place, 1, unit);
    } else if (below(2) == 0) {
      text[place] = unit;
    } else {
      text.erase(place, 1);
    }
  }

  std::mt19937_64 random_;
};

}  // namespace numera::testing
