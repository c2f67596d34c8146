#include "numera/unicode/convert_utf16_to_utf8.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "numera/host/message_id_exception.h"
#include "numera/host/string_array.h"
#include "numera/unicode/exceptions.h"
#include "tests/support/faults.h"
#include "tests/support/host_builder.h"
#include "tests/support/host_matchers.h"
#include "tests/support/recording_host.h"
#include "tests/unicode/utf8_of_text.h"

namespace numera::io::arrow::unicode {
namespace {

using namespace numera::testing;
using namespace std::string_literals;

/// Expects both outputs: the offsets, and the bytes of the texts with a zero byte appended.
void ExpectUtf8(const hxArrayPtr& text, const std::string& bytes,
                const std::vector<std::uint64_t>& offsets) {
  const Utf8 utf8 = Convert(text);
  const std::string terminated = bytes + '\0';
  const hxArrayPtr expected_bytes =
      Column<std::uint8_t>(std::vector<std::uint8_t>(terminated.begin(), terminated.end()));
  EXPECT_TRUE(SameHostValue(utf8.bytes.get(), expected_bytes.get()));
  EXPECT_TRUE(SameHostValue(utf8.offsets.get(), Column<std::uint64_t>(offsets).get()));
}

TEST(TextToUtf8, TakesStringArrays) {
  ExpectUtf8(Strings({u"plain", u"", u"née", u"漢", u"😀"}), "plainnée漢😀", {0, 5, 5, 9, 12, 16});
}

TEST(TextToUtf8, GivesNoBytesForAMissingElement) {
  ExpectUtf8(Strings({u"abc", std::nullopt}), "abc", {0, 3, 3});
  ExpectUtf8(Strings({std::nullopt, u"é", std::nullopt, u"z"}), "éz", {0, 0, 2, 2, 3});
}

TEST(TextToUtf8, FollowsACodecThatReplacesWhatItCannotEncode) {
  ReplaceUnpairedSurrogates(true);
  ExpectUtf8(Strings({u"a", u"\xD800", u"é😀", u"\xDC00z"}), "a?é😀?z", {0, 1, 2, 8, 10});
  ReplaceUnpairedSurrogates(false);
}

TEST(TextToUtf8, TakesCellsOfCharRows) {
  ExpectUtf8(Cell({Char("ab"), CharMatrix({0, 0}, u""), CharMatrix({0, 3}, u""), Char("é")}), "abé",
             {0, 2, 2, 2, 4});
}

TEST(TextToUtf8, TakesTheRowsOfACharMatrix) {
  ExpectUtf8(CharMatrix({2, 3}, u"adbec "), "abcde ", {0, 3, 6});
}

TEST(TextToUtf8, KeepsBlanksAtTheEndOfRows) {
  ExpectUtf8(CharMatrix({2, 2}, u"a   "), "a   ", {0, 2, 4});
}

TEST(TextToUtf8, GathersRowsWhateverTheNumber) {
  for (const size_t rows : {size_t{1}, size_t{31}, size_t{32}, size_t{33}, size_t{65}}) {
    SCOPED_TRACE(rows);
    std::u16string units;
    std::string bytes;
    std::vector<std::uint64_t> offsets = {0};
    for (const char16_t column : {u'0', u'P', u'p'}) {
      for (size_t row = 0; row < rows; ++row) {
        units += static_cast<char16_t>(column + row % 10);
      }
    }
    for (size_t row = 0; row < rows; ++row) {
      for (const char column : {'0', 'P', 'p'}) {
        bytes += static_cast<char>(static_cast<size_t>(column) + row % 10);
      }
      offsets.push_back(bytes.size());
    }
    ExpectUtf8(CharMatrix({rows, 3}, units), bytes, offsets);
  }
}

TEST(TextToUtf8, TakesRowsLongerThanAreGatheredAtOnce) {
  constexpr size_t kColumns = 70'000;
  std::u16string units;
  for (size_t column = 0; column < kColumns; ++column) units += u"xé";
  std::string bytes(kColumns, 'x');
  for (size_t column = 0; column < kColumns; ++column) bytes += "é";
  ExpectUtf8(CharMatrix({2, kColumns}, units), bytes, {0, kColumns, 3 * kColumns});
}

TEST(TextToUtf8, GivesTheZeroByteAloneForNoElements) {
  const hxArrayPtr cases[] = {CharMatrix({0, 0}, u""), CharMatrix({0, 4}, u""), Strings({0, 1}, {}),
                              Strings({0, 0}, {}),     Strings({3, 0}, {}),     Cell({0, 1}, {}),
                              Cell({0, 0}, {}),        Cell({3, 0}, {})};
  for (const hxArrayPtr& text : cases) ExpectUtf8(text, "", {0});
}

TEST(TextToUtf8, GivesEmptyTextsForACharMatrixWithoutColumns) {
  ExpectUtf8(CharMatrix({3, 0}, u""), "", {0, 0, 0, 0});
}

TEST(TextToUtf8, KeepsNul) {
  ExpectUtf8(Strings({u"a\0b"s, u"\0"s, u"é\0"s}), "a\0b\0é\0"s, {0, 3, 4, 7});
}

TEST(TextToUtf8, CountsBytesAtTheEdgesOfEachLength) {
  ExpectUtf8(Strings({u"\u007F", u"\u0080", u"\u07FF", u"\u0800", u"\uFFFF", u"\U00010000",
                      u"\U0010FFFF"}),
             "\u007F\u0080\u07FF\u0800\uFFFF\U00010000\U0010FFFF", {0, 1, 3, 5, 8, 11, 15, 19});
}

TEST(TextToUtf8, SeesAWideUnitAtEveryPlaceOfAText) {
  for (size_t length = 1; length <= 40; ++length) {
    for (size_t place = 0; place < length; ++place) {
      SCOPED_TRACE(std::to_string(length) + ", " + std::to_string(place));
      std::u16string text(length, u'a');
      text[place] = u'\u0100';
      ExpectUtf8(Strings({text}),
                 std::string(place, 'a') + "\u0100" + std::string(length - place - 1, 'a'),
                 {0, length + 1});
    }
  }
}

TEST(TextToUtf8, TakesColumnsOfManyPieces) {
  constexpr size_t kCount = 3000;
  std::vector<std::optional<std::u16string>> texts;
  std::string bytes;
  std::vector<std::uint64_t> offsets = {0};
  for (size_t i = 0; i < kCount; ++i) {
    // Two thousand ASCII texts in the middle.
    const bool ascii = i >= 500 && i < 2500;
    texts.emplace_back(ascii ? u"twenty letters of it" : u"größer als 漢字 und 😀");
    bytes += ascii ? "twenty letters of it" : "größer als 漢字 und 😀";
    offsets.push_back(bytes.size());
  }
  ExpectUtf8(Strings({kCount, 1}, texts), bytes, offsets);

  texts[kCount - 2] = u"ab" + std::u16string(1, char16_t{0xDBFF});
  try {
    Convert(Strings({kCount, 1}, texts));
    ADD_FAILURE() << "nothing was thrown";
  } catch (const hxTaggedException<UnrecognizedUTF16Character>& error) {
    EXPECT_THAT(
        error.arguments(),
        ::testing::ElementsAre(hxMessageArgument(std::uint64_t{kCount - 1}),
                               hxMessageArgument("Unpaired high surrogate at code unit 2."s)));
  }
}

TEST(TextToUtf8, TakesTextsSetOutOfOrder) {
  std::unique_ptr<hxStringArray> strings = hxMakeStringArray(Dims{3, 1});
  strings->set(2, u"漢");
  strings->set(0, u"née");
  strings->set(1, u"plain");
  ExpectUtf8(hxCreateStringArrayFrom(std::move(strings)), "néeplain漢", {0, 4, 9, 12});
}

TEST(TextToUtf8, NeitherFailsNorLeaksHalfWay) {
  // Those of the char matrix, measured in November 2026; the other texts have more.
  constexpr FaultSites kFewestSites = {.allocations = 3, .calls = 6};
  const hxArrayPtr cases[] = {Strings({u"a", u"é", std::nullopt}), Cell({Char("a"), Char("é")}),
                              CharMatrix({2, 2}, u"aébé")};
  for (const hxArrayPtr& text : cases) {
    const FaultSites sites = FailEverywhere([&] {
      Convert(text);
      return ::arrow::Status::OK();
    });
    ExpectAtLeast(sites, kFewestSites);
  }
}

}  // namespace
}  // namespace numera::io::arrow::unicode
