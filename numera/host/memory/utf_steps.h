#pragma once

/// \file
/// What encoding and decoding have in common: the way through a text, word by word.

#include <bit>
#include <cstddef>
#include <cstdint>

#include "numera/host/memory/utf_words.h"

namespace numera::host::memory {

/// The remaining input and output. Each step advances both.
template <class From, class To>
struct Transcoding {
  const From* next;
  const From* end;
  To* out;
  To* out_end;

  size_t left() const { return static_cast<size_t>(end - next); }
  size_t room() const { return static_cast<size_t>(out_end - out); }
  void advance(size_t read, size_t written) {
    next += read;
    out += written;
  }
};

/// Copies ASCII, one element for each.
template <class From, class To>
void copy_ascii(const From* from, To* to, size_t count) {
  for (size_t i = 0; i < count; ++i) to[i] = static_cast<To>(from[i]);
}

/// Transcodes as long as a whole word can be read, and its result can be written if it is ASCII.
/// `step(text, word)` transcodes at least one character that is not ASCII, and returns false at an
/// invalid one. So does this function.
template <class From, class To, class Step>
bool transcode_words(Transcoding<From, To>& text, const Step& step) {
  constexpr size_t kWord = kWordBytes / sizeof(From);
  constexpr size_t kLongStep = 4 * kWord;
  constexpr std::uint64_t kNotAscii =
      sizeof(From) == 1 ? in_each_quarter(0x8080) : in_each_quarter(0xFF80);
  constexpr std::uint64_t kFirstNotAscii = kNotAscii & (sizeof(From) == 1 ? 0xFF : 0xFFFF);
  while (text.left() >= kWord && text.room() >= kWordBytes) {
    const std::uint64_t word = load_word(text.next);
    const std::uint64_t wide = word & kNotAscii;
    if (wide == 0) {
      copy_ascii(text.next, text.out, kWord);
      text.advance(kWord, kWord);
      while (text.left() >= kLongStep && text.room() >= kLongStep) {
        std::uint64_t bits = 0;
        for (size_t i = 0; i < kLongStep; i += kWord) bits |= load_word(text.next + i);
        if ((bits & kNotAscii) != 0) break;
        copy_ascii(text.next, text.out, kLongStep);
        text.advance(kLongStep, kLongStep);
      }
    } else if ((word & kFirstNotAscii) == 0) {
      // Only the leading ASCII counts. Later steps overwrite what is written behind it.
      const auto ascii = static_cast<size_t>(std::countr_zero(wide)) / (8 * sizeof(From));
      copy_ascii(text.next, text.out, kWord);
      text.advance(ascii, ascii);
    } else if (!step(text, word)) {
      return false;
    }
  }
  return true;
}

}  // namespace numera::host::memory
