#include "numera/host/text_codec.h"

#include <stdexcept>
#include <string>
#include <string_view>

#include "tests/host_conformance/claims.h"

namespace numera::host_conformance {
namespace {

struct TextCodecs : Claim {};

using namespace std::string_literals;

std::u16string decode(std::string_view text) { return hxUTF8ToUTF16("UTF-8").convert(text); }
std::string encode(std::u16string_view text) {
  return hxUTF16ToUTF8("UTF-8").convert(text.data(), text.size());
}

struct Pair {
  std::string utf8;
  std::u16string utf16;
};

const Pair kPairs[] = {
    {"", u""},
    {"a", u"a"},
    {"a\0b"s, u"a\0b"s},
    {"\x7F", u"\u007F"},
    {"\xC2\x80", u"\u0080"},
    {"\xDF\xBF", u"\u07FF"},
    {"\xE0\xA0\x80", u"\u0800"},
    {"\xED\x9F\xBF", u"\xD7FF"},
    {"\xEE\x80\x80", u"\uE000"},
    {"\xEF\xBF\xBF", u"\uFFFF"},
    {"\xF0\x90\x80\x80", u"\U00010000"},
    {"\xF4\x8F\xBF\xBF", u"\U0010FFFF"},
    {"fifteen letters", u"fifteen letters"},
    {"sixteen letters!", u"sixteen letters!"},
    {"seventeen letters", u"seventeen letters"},
    {"thirty-two letters and a half \xC2\xBD, and more of them behind it",
     u"thirty-two letters and a half \u00BD, and more of them behind it"},
};

TEST_F(TextCodecs, ConvertsBothWays) {
  for (const Pair& row : kPairs) {
    SCOPED_TRACE(row.utf8);
    EXPECT_EQ(decode(row.utf8), row.utf16);
    EXPECT_EQ(encode(row.utf16), row.utf8);
  }
}

// Follows the definition of the encodings, one bit field after another.
std::string naive_utf8(char32_t c) {
  const auto tail = [c](int shift) { return static_cast<char>(0x80 | ((c >> shift) & 0x3F)); };
  if (c < 0x80) return {static_cast<char>(c)};
  if (c < 0x800) return {static_cast<char>(0xC0 | (c >> 6)), tail(0)};
  if (c < 0x10000) return {static_cast<char>(0xE0 | (c >> 12)), tail(6), tail(0)};
  return {static_cast<char>(0xF0 | (c >> 18)), tail(12), tail(6), tail(0)};
}

std::u16string naive_utf16(char32_t c) {
  if (c < 0x10000) return {static_cast<char16_t>(c)};
  return {static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10)),
          static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF))};
}

TEST_F(TextCodecs, ConvertsEveryCodePointAlone) {
  const hxUTF8ToUTF16 decoder("UTF-8");
  const hxUTF16ToUTF8 encoder("UTF-8");
  for (char32_t c = 0; c <= 0x10FFFF; ++c) {
    if (c >= 0xD800 && c < 0xE000) continue;
    const std::u16string units = naive_utf16(c);
    ASSERT_EQ(decoder.convert(naive_utf8(c)), units) << static_cast<unsigned>(c);
    ASSERT_EQ(encoder.convert(units.data(), units.size()), naive_utf8(c))
        << static_cast<unsigned>(c);
  }
}

TEST_F(TextCodecs, ConvertsAllCodePointsTogether) {
  std::string bytes;
  std::u16string units;
  for (char32_t c = 0; c <= 0x10FFFF; ++c) {
    if (c >= 0xD800 && c < 0xE000) continue;
    bytes += naive_utf8(c);
    units += naive_utf16(c);
  }
  EXPECT_TRUE(decode(bytes) == units);
  EXPECT_TRUE(encode(units) == bytes);
}

const std::string_view kBadBytes[] = {
    "\x80",
    "ab\xBFz",
    "\xF8\x88\x80\x80\x80",
    "\xFE",
    "\xFF",
    "\xC3",
    "a\xC3",
    "\xC3(",
    "\xE2\x82",
    "\xE2(\xA1",
    "\xE2\x82(",
    "\xF0\x9F\x98",
    "\xF0\x9F(\x80",
    "\xE2\x82\xAC\xE2\x82",
    "\xC0\x80",
    "abc\xC1\xBF",
    "\xE0\x80\x80",
    "\xE0\x9F\xBF",
    "\xF0\x80\x80\x80",
    "\xF0\x8F\xBF\xBF",
    "\xED\xA0\x80",
    "\xED\xBF\xBF",
    "x\xED\xA0\x81\xED\xB0\x80",
    "\xF4\x90\x80\x80",
    "\xF5\x80\x80\x80",
    "\xF7\xBF\xBF\xBF",
    "sixteen letters!sixteen letters!\xC3",
};

TEST_F(TextCodecs, RefuseBytesThatAreNotUtf8AndSayWhatIsWrong) {
  for (const std::string_view text : kBadBytes) {
    EXPECT_NE(thrown<hxCodecError>([&] { decode(text); }), "");
  }
}

// Whether up to four bytes are exactly one well-formed code point, by the table of well-formed byte
// sequences.
bool well_formed(std::string_view s) {
  const auto in = [&s](size_t i, unsigned low, unsigned high) {
    const auto byte = static_cast<unsigned char>(s[i]);
    return byte >= low && byte <= high;
  };
  const auto tails = [&](size_t from) {
    for (size_t i = from; i < s.size(); ++i) {
      if (!in(i, 0x80, 0xBF)) return false;
    }
    return true;
  };
  switch (s.size()) {
    case 1:
      return in(0, 0, 0x7F);
    case 2:
      return in(0, 0xC2, 0xDF) && tails(1);
    case 3:
      return ((in(0, 0xE0, 0xE0) && in(1, 0xA0, 0xBF)) || (in(0, 0xE1, 0xEC) && tails(1)) ||
              (in(0, 0xED, 0xED) && in(1, 0x80, 0x9F)) || (in(0, 0xEE, 0xEF) && tails(1))) &&
             tails(2);
    case 4:
      return ((in(0, 0xF0, 0xF0) && in(1, 0x90, 0xBF)) || (in(0, 0xF1, 0xF3) && tails(1)) ||
              (in(0, 0xF4, 0xF4) && in(1, 0x80, 0x8F))) &&
             tails(2);
    default:
      return false;
  }
}

TEST_F(TextCodecs, RefusesEveryIllFormedSequenceOfThreeBytes) {
  const hxUTF8ToUTF16 decoder("UTF-8");
  for (unsigned lead = 0xC0; lead <= 0xFF; ++lead) {
    for (unsigned second = 0; second <= 0xFF; ++second) {
      for (const unsigned third : {0x00u, 0x41u, 0x7Fu, 0x80u, 0xBFu, 0xC0u, 0xFFu}) {
        const std::string text = {static_cast<char>(lead), static_cast<char>(second),
                                  static_cast<char>(third)};
        const bool valid = well_formed(text) || (well_formed(text.substr(0, 2)) && third < 0x80);
        bool accepted = true;
        try {
          decoder.convert(text);
        } catch (const hxCodecError&) {
          accepted = false;
        }
        ASSERT_EQ(accepted, valid) << lead << ' ' << second << ' ' << third;
      }
    }
  }
}

const std::u16string_view kBadUnits[] = {
    u"\xD800", u"ab\xDBFF",           u"a\xD800z",     u"\xD800\xD800\xDC00",
    u"\xDC00", u"\xD800\xDC00\xDFFF", u"\xDC00\xD800",
};

TEST_F(TextCodecs, RefuseUnpairedSurrogatesAndSayWhatIsWrong) {
  for (const std::u16string_view text : kBadUnits) {
    EXPECT_NE(thrown<hxCodecError>([&] { encode(text); }), "");
  }
}

TEST_F(TextCodecs, TakesNoTextForNoCodeUnits) {
  EXPECT_EQ(hxUTF16ToUTF8("UTF-8").convert(nullptr, 0), "");
  EXPECT_EQ(hxUTF8ToUTF16("UTF-8").convert(std::string_view()), u"");
}

TEST_F(TextCodecs, KnowsNoOtherEncoding) {
  for (const char* const encoding : {"utf-8", "UTF-16", "", static_cast<const char*>(nullptr)}) {
    EXPECT_THROW(hxUTF8ToUTF16 codec(encoding), std::invalid_argument);
    EXPECT_THROW(hxUTF16ToUTF8 codec(encoding), std::invalid_argument);
  }
}

}  // namespace
}  // namespace numera::host_conformance
