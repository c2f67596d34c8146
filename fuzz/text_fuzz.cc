/// \file
/// Compares both codecs with ICU, and the bulk assignment of string arrays with setting text by
/// text.

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "fuzz/byte_source.h"
#include "fuzz/claims.h"
#include "fuzz/fuzzer.h"
#include "numera/host/string_array.h"
#include "numera/host/text_codec.h"
#include "tests/support/icu.h"

namespace numera::fuzz {
namespace {

using Bytes = std::span<const std::uint8_t>;

void check_utf8(Bytes bytes) {
  const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  std::optional<std::u16string> converted;
  try {
    converted = hxUTF8ToUTF16("UTF-8").convert(text);
  } catch (const hxCodecError&) {
  }
  claim(converted == testing::IcuToUtf16(text), "UTF-8 is converted and refused as by ICU");
}

void check_utf16(Bytes bytes) {
  std::vector<char16_t> units(bytes.size() / sizeof(char16_t));
  if (!units.empty()) std::memcpy(units.data(), bytes.data(), units.size() * sizeof(char16_t));
  const auto expected = testing::IcuToUtf8({units.data(), units.size()});
  std::optional<std::string> converted;
  std::optional<std::string> read;
  try {
    converted = hxUTF16ToUTF8("UTF-8").convert(units.data(), units.size());
  } catch (const hxCodecError&) {
  }
  const hxArrayPtr chars = hxCreateCharArray(units.data(), units.size());
  try {
    read = hxGetString(chars.get());
  } catch (const hxCodecError&) {
  }
  claim(converted == expected, "UTF-16 is converted and refused as by ICU");
  claim(read == expected, "a char array is read and refused as by ICU");
}

/// Texts back to back in one block of exactly their size, with random ends.
struct Texts {
  std::vector<std::uint8_t> bytes;
  std::vector<std::int64_t> offsets;
};

Texts draw_texts(ByteSource& source) {
  Texts texts;
  const size_t count = source.below(20);
  const size_t first = source.below(4);
  std::vector<size_t> lengths(count);
  for (size_t& length : lengths) length = source.byte() % 100;
  texts.bytes.assign(source.rest().begin(), source.rest().end());
  texts.offsets.push_back(static_cast<std::int64_t>(std::min(first, texts.bytes.size())));
  for (const size_t length : lengths) {
    const auto end = texts.offsets.back() + static_cast<std::int64_t>(length);
    texts.offsets.push_back(std::min(end, static_cast<std::int64_t>(texts.bytes.size())));
  }
  return texts;
}

std::string_view text_at(const Texts& texts, size_t i) {
  const auto begin = static_cast<size_t>(texts.offsets[i]);
  const auto end = static_cast<size_t>(texts.offsets[i + 1]);
  return {reinterpret_cast<const char*>(texts.bytes.data()) + begin, end - begin};
}

/// `assign` sets the texts from element `first` on, with one of the bulk functions.
template <class Assign>
void check_assigned(const Texts& texts, size_t first, const Assign& assign) {
  const size_t count = texts.offsets.size() - 1;
  const auto strings = hxMakeStringArray(std::array<size_t, 2>{first + count + 1, 1});
  for (size_t i = 0; i < strings->size(); ++i) strings->set(i, u"before");
  const std::optional<size_t> refused = assign(*strings);
  std::optional<size_t> expected;
  for (size_t i = 0; i < count && !expected; ++i) {
    if (!testing::IcuToUtf16(text_at(texts, i))) expected = first + i;
  }
  claim(refused == expected, "the first text that is not UTF-8 is blamed");
  for (size_t i = 0; i < first; ++i) {
    claim(strings->element(i) == u"before", "elements before the first stay");
  }
  claim(strings->element(first + count) == u"before", "elements behind the last stay");
  if (refused) return;
  for (size_t i = 0; i < count; ++i) {
    claim(strings->element(first + i) == testing::IcuToUtf16(text_at(texts, i)),
          "each text is converted as by ICU");
  }
}

void check_bulk(ByteSource& source) {
  const size_t first = source.below(3);
  const Texts texts = draw_texts(source);
  const std::vector<std::int32_t> narrow(texts.offsets.begin(), texts.offsets.end());
  const std::uint8_t* const bytes = texts.bytes.data();
  const std::span<const std::int64_t> wide_offsets(texts.offsets);
  const std::span<const std::int32_t> narrow_offsets(narrow);
  check_assigned(texts, first,
                 [&](auto& strings) { return strings.assign_utf8(first, wide_offsets, bytes); });
  check_assigned(texts, first,
                 [&](auto& strings) { return strings.assign_utf8(first, narrow_offsets, bytes); });
  check_assigned(texts, first, [&](auto& strings) {
    return strings.hxStringArray::assign_utf8(first, wide_offsets, bytes);
  });
}

}  // namespace

void try_input(std::span<const std::uint8_t> input) {
  check_utf8(input);
  check_utf16(input);
  ByteSource source(input);
  check_bulk(source);
}

}  // namespace numera::fuzz
