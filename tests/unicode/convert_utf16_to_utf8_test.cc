#include "numera/unicode/convert_utf16_to_utf8.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <new>

#include "numera/host/message_id_exception.h"
#include "tests/support/faults.h"
#include "tests/support/host_builder.h"
#include "tests/support/host_matchers.h"
#include "tests/support/recording_host.h"

namespace numera::io::arrow::unicode {
namespace {

using namespace numera::testing;
using namespace std::string_literals;

struct Utf8 {
  hxArrayPtr bytes;
  hxArrayPtr offsets;
};

Utf8 Convert(const hxArrayPtr& text) {
  hxArrayPtr outputs[2];
  const hxArray* inputs[] = {text.get()};
  convertUTF16ToUTF8(2, outputs, 1, inputs);
  return {std::move(outputs[0]), std::move(outputs[1])};
}

/// Both outputs: the bytes of the texts, to which the zero byte is added here, and the offsets.
void ExpectUtf8(const hxArrayPtr& text, const std::string& bytes,
                const std::vector<std::uint64_t>& offsets) {
  const Utf8 utf8 = Convert(text);
  const std::string terminated = bytes + '\0';
  const hxArrayPtr expected_bytes =
      Column<std::uint8_t>(std::vector<std::uint8_t>(terminated.begin(), terminated.end()));
  EXPECT_TRUE(SameHostValue(utf8.bytes.get(), expected_bytes.get()));
  EXPECT_TRUE(SameHostValue(utf8.offsets.get(), Column<std::uint64_t>(offsets).get()));
}

/// Expects the exception of a tag, caught by its own type, by the host's and by the standard's.
template <class Tag>
void ExpectThrows(const hxArrayPtr& text, const std::string& identifier) {
  EXPECT_THROW(Convert(text), hxTaggedException<Tag>);
  EXPECT_THROW(Convert(text), std::exception);
  try {
    Convert(text);
    ADD_FAILURE() << "nothing was thrown";
  } catch (const MessageIdException& error) {
    EXPECT_EQ(error.identifier(), identifier);
  }
}

TEST(TextToUtf8, TakesStringArrays) {
  ExpectUtf8(Strings({u"plain", u"", u"née", u"漢", u"😀"}), "plainnée漢😀", {0, 5, 5, 9, 12, 16});
}

TEST(TextToUtf8, GivesNoBytesForAMissingElement) {
  ExpectUtf8(Strings({u"abc", std::nullopt}), "abc", {0, 3, 3});
  ExpectUtf8(Strings({std::nullopt, u"é", std::nullopt, u"z"}), "éz", {0, 0, 2, 2, 3});
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

TEST(TextToUtf8, ConvertsTextsThatLieBackToBackInOnePiece) {
  const hxArrayPtr text = Strings({u"plain", u"née", u"", std::nullopt, u"漢"});
  Reset();

  Convert(text);

  EXPECT_EQ(Calls("hxUTF16ToUTF8"), 1U);
  EXPECT_EQ(Calls("hxUTF16ToUTF8::convert"), 1U);
}

TEST(TextToUtf8, ConvertsEachCellThatIsNotAsciiOnce) {
  const hxArrayPtr text = Cell({Char("plain"), Char("née"), Char(""), Char("漢")});
  Reset();

  Convert(text);

  EXPECT_EQ(Calls("hxUTF16ToUTF8"), 1U);
  EXPECT_EQ(Calls("hxUTF16ToUTF8::convert"), 2U);
}

TEST(TextToUtf8, TakesColumnsOfManyPieces) {
  constexpr size_t kCount = 3000;
  std::vector<std::optional<std::u16string>> texts;
  std::string bytes;
  std::vector<std::uint64_t> offsets = {0};
  for (size_t i = 0; i < kCount; ++i) {
    // Two thousand ASCII texts between others.
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

TEST(TextToUtf8, PairsNoSurrogatesOfTwoTexts) {
  const std::u16string high = u"a" + std::u16string(1, char16_t{0xD83D});
  const std::u16string low = std::u16string(1, char16_t{0xDE00}) + u"b";
  const hxArrayPtr cases[] = {Strings({u"é", high, low}), Strings({u"é", high, u"", low}),
                              Cell({Char("é"), Char(high), Char(low)})};
  for (const hxArrayPtr& text : cases) {
    try {
      Convert(text);
      ADD_FAILURE() << "nothing was thrown";
    } catch (const hxTaggedException<UnrecognizedUTF16Character>& error) {
      EXPECT_THAT(
          error.arguments(),
          ::testing::ElementsAre(hxMessageArgument(std::uint64_t{2}),
                                 hxMessageArgument("Unpaired high surrogate at code unit 1."s)));
    }
  }
}

TEST(TextToUtf8, MakesNoCodecForNoElements) {
  const hxArrayPtr text = Strings({0, 1}, {});
  Reset();

  Convert(text);

  EXPECT_EQ(Calls("hxUTF16ToUTF8"), 0U);
}

TEST(TextToUtf8, MakesTheOffsetsThenTheBytes) {
  const hxArrayPtr text = Strings({u"abc", u"é"});
  Reset();

  Convert(text);

  EXPECT_THAT(Created(),
              ::testing::ElementsAre(Creation{"hxCreateNumericArray", hxClassID::UInt64, {3, 1}},
                                     Creation{"hxCreateNumericArray", hxClassID::UInt8, {6, 1}}));
}

TEST(TextToUtf8, GathersTheRowsOfACharMatrixInAStringArray) {
  const hxArrayPtr text = CharMatrix({2, 2}, u"abcd");
  Reset();

  Convert(text);

  EXPECT_THAT(Created(),
              ::testing::ElementsAre(Creation{"hxMakeStringArray", hxClassID::Object, {2, 1}},
                                     Creation{"hxCreateNumericArray", hxClassID::UInt64, {3, 1}},
                                     Creation{"hxCreateNumericArray", hxClassID::UInt8, {5, 1}}));
}

TEST(TextToUtf8, RefusesWhatIsNoText) {
  const hxArrayPtr cases[] = {Scalar(1.0), Logical({true}), Struct({{"a", Char("x")}}), Empty(),
                              ObjectArray("datetime", {1, 1}, {"a"}, {{Char("x")}})};
  for (const hxArrayPtr& text : cases) {
    ExpectThrows<InvalidTextInput>(text, "NUMERA:io:arrow:unicode:InvalidTextInput");
  }
}

TEST(TextToUtf8, RefusesCharArraysOfMoreThanTwoDimensions) {
  for (const Dims& dims : {Dims{1, 1, 2}, Dims{2, 0, 0}}) {
    const std::u16string units(dims[0] * dims[1] * dims[2], u'a');
    ExpectThrows<InvalidCharDimensions>(CharMatrix(dims, units),
                                        "NUMERA:io:arrow:unicode:InvalidCharDimensions");
  }
}

TEST(TextToUtf8, RefusesStringArraysThatAreNoColumn) {
  const hxArrayPtr cases[] = {Strings({1, 2}, {u"a", u"b"}), Strings({0, 2}, {}),
                              Strings({1, 1, 2}, {u"a", u"b"}), Strings({1, 0, 1}, {})};
  for (const hxArrayPtr& text : cases) {
    ExpectThrows<InvalidStringDimensions>(text, "NUMERA:io:arrow:unicode:InvalidStringDimensions");
  }
}

TEST(TextToUtf8, RefusesCellArraysThatAreNoColumn) {
  const hxArrayPtr cases[] = {Cell({1, 2}, {Char("a"), Char("b")}), Cell({0, 2}, {}),
                              Cell({1, 1, 2}, {Char("a"), Char("b")}), Cell({1, 0, 1}, {})};
  for (const hxArrayPtr& text : cases) {
    ExpectThrows<InvalidCellstrDimensions>(text,
                                           "NUMERA:io:arrow:unicode:InvalidCellstrDimensions");
  }
}

TEST(TextToUtf8, RefusesCellsThatHoldNoCharRow) {
  const hxArrayPtr cases[] = {Cell({Char("a"), Scalar(1.0)}),
                              Cell({Empty()}),
                              Cell({Strings({u"a"})}),
                              Cell({Cell({Char("a")})}),
                              Cell({CharMatrix({2, 2}, u"abcd")}),
                              Cell({CharMatrix({2, 0}, u"")}),
                              Cell({CharMatrix({1, 1, 2}, u"ab")}),
                              Cell({CharMatrix({0, 0, 0}, u"")})};
  for (const hxArrayPtr& text : cases) {
    ExpectThrows<InvalidCellArray>(text, "NUMERA:io:arrow:unicode:InvalidCellArray");
  }
}

TEST(TextToUtf8, LooksAtACellAfterThoseBeforeAreConverted) {
  const std::u16string unpaired(1, char16_t{0xD800});
  ExpectThrows<UnrecognizedUTF16Character>(Cell({Char("a"), Char(unpaired), Scalar(1.0)}),
                                           "NUMERA:io:arrow:unicode:UnrecognizedUTF16Character");
  ExpectThrows<InvalidCellArray>(Cell({Char("a"), Scalar(1.0), Char(unpaired)}),
                                 "NUMERA:io:arrow:unicode:InvalidCellArray");
}

TEST(TextToUtf8, NamesTheElementThatIsNoUtf16ByNumberFromOne) {
  const std::u16string unpaired = u"a" + std::u16string(1, char16_t{0xD800});
  const hxArrayPtr cases[] = {Strings({u"a", u"é", unpaired, unpaired}),
                              Cell({Char("a"), Char("é"), Char(unpaired)}),
                              CharMatrix({3, 2}, u"aéabb" + unpaired.substr(1))};
  for (const hxArrayPtr& text : cases) {
    try {
      Convert(text);
      ADD_FAILURE() << "nothing was thrown";
    } catch (const hxTaggedException<UnrecognizedUTF16Character>& error) {
      EXPECT_THAT(
          error.arguments(),
          ::testing::ElementsAre(hxMessageArgument(std::uint64_t{3}),
                                 hxMessageArgument("Unpaired high surrogate at code unit 1."s)));
    }
  }
}

TEST(TextToUtf8, RefusesEveryUnpairedSurrogate) {
  const std::u16string high(1, char16_t{0xD83D});
  const std::u16string low(1, char16_t{0xDE00});
  for (const std::u16string& text : {high, low, low + high, high + u"a", high + high + low,
                                     high + low + low, u"a" + low + u"b"}) {
    EXPECT_THROW(Convert(Strings({text})), hxTaggedException<UnrecognizedUTF16Character>);
  }
}

TEST(TextToUtf8, PassesOnWhatTheCodecThrowsBesides) {
  const hxArrayPtr text = Strings({u"a", u"é"});
  // Every call of the host in turn, up to the one that converts.
  size_t convert_calls = 0;
  for (size_t call = 0; call < 100 && convert_calls == 0; ++call) {
    SCOPED_TRACE(call);
    Reset();
    FailCall(call, std::make_exception_ptr(std::bad_alloc()));
    EXPECT_THROW(Convert(text), std::bad_alloc);
    convert_calls = Calls("hxUTF16ToUTF8::convert");
  }
  EXPECT_EQ(convert_calls, 1U);
}

TEST(TextToUtf8, TagsCarryNoArgumentsButOne) {
  try {
    Convert(Scalar(1.0));
    ADD_FAILURE() << "nothing was thrown";
  } catch (const hxTaggedException<InvalidTextInput>& error) {
    EXPECT_TRUE(error.arguments().empty());
  }
}

TEST(Tags, CarryTheirCatalogAndTheirName) {
  namespace tags = ::NUMERA::io::arrow::unicode;
  EXPECT_STREQ(tags::InvalidTextInput::catalog, "NUMERA:io:arrow:unicode");
  EXPECT_STREQ(tags::InvalidTextInput::key, "InvalidTextInput");
  EXPECT_STREQ(tags::InvalidCharDimensions::catalog, "NUMERA:io:arrow:unicode");
  EXPECT_STREQ(tags::InvalidCharDimensions::key, "InvalidCharDimensions");
  EXPECT_STREQ(tags::InvalidStringDimensions::catalog, "NUMERA:io:arrow:unicode");
  EXPECT_STREQ(tags::InvalidStringDimensions::key, "InvalidStringDimensions");
  EXPECT_STREQ(tags::InvalidCellstrDimensions::catalog, "NUMERA:io:arrow:unicode");
  EXPECT_STREQ(tags::InvalidCellstrDimensions::key, "InvalidCellstrDimensions");
  EXPECT_STREQ(tags::InvalidCellArray::catalog, "NUMERA:io:arrow:unicode");
  EXPECT_STREQ(tags::InvalidCellArray::key, "InvalidCellArray");
  EXPECT_STREQ(tags::UnrecognizedUTF16Character::catalog, "NUMERA:io:arrow:unicode");
  EXPECT_STREQ(tags::UnrecognizedUTF16Character::key, "UnrecognizedUTF16Character");
}

TEST(GatewayArguments, AreCountedBeforeAnyInputIsRead) {
  hxArrayPtr outputs[3];
  const hxArray* inputs[2] = {};
  EXPECT_THROW(convertUTF16ToUTF8(3, outputs, 1, inputs), hxTaggedException<hxTooManyOutputs>);
  EXPECT_THROW(convertUTF16ToUTF8(1, outputs, 2, inputs), hxTaggedException<hxTooManyInputs>);
  EXPECT_THROW(convertUTF16ToUTF8(1, outputs, 0, nullptr), hxTaggedException<hxTooFewInputs>);
  EXPECT_THROW(convertUTF16ToUTF8(1, outputs, -1, nullptr), hxTaggedException<hxTooFewInputs>);
}

TEST(GatewayArguments, AreCountedOutputsFirst) {
  EXPECT_THROW(convertUTF16ToUTF8(3, nullptr, 0, nullptr), hxTaggedException<hxTooManyOutputs>);
  EXPECT_THROW(convertUTF16ToUTF8(3, nullptr, 2, nullptr), hxTaggedException<hxTooManyOutputs>);
}

TEST(GatewayArguments, DecideHowManyOutputsAreSet) {
  const hxArrayPtr text = Strings({u"a"});
  const hxArray* inputs[] = {text.get()};
  hxArrayPtr outputs[2];

  convertUTF16ToUTF8(0, outputs, 1, inputs);
  EXPECT_EQ(outputs[0], nullptr);
  convertUTF16ToUTF8(1, outputs, 1, inputs);
  EXPECT_TRUE(SameHostValue(outputs[0].get(), Column<std::uint8_t>({'a', 0}).get()));
  EXPECT_EQ(outputs[1], nullptr);
  EXPECT_NO_THROW(convertUTF16ToUTF8(-1, nullptr, 1, inputs));
}

TEST(GatewayOutputs, ReplaceWhatWasThere) {
  const hxArrayPtr text = Strings({u"a"});
  const hxArray* inputs[] = {text.get()};
  hxArrayPtr outputs[2] = {Scalar(1.0), Scalar(2.0)};

  convertUTF16ToUTF8(2, outputs, 1, inputs);

  EXPECT_TRUE(SameHostValue(outputs[0].get(), Column<std::uint8_t>({'a', 0}).get()));
  EXPECT_TRUE(SameHostValue(outputs[1].get(), Column<std::uint64_t>({0, 1}).get()));
}

TEST(GatewayOutputs, StayAsTheyAreAfterAFailure) {
  const hxArrayPtr text = Strings({u"a", std::u16string(1, char16_t{0xDC00})});
  const hxArray* inputs[] = {text.get()};
  hxArrayPtr outputs[2] = {Scalar(1.0), Scalar(2.0)};

  EXPECT_THROW(convertUTF16ToUTF8(2, outputs, 1, inputs), MessageIdException);

  EXPECT_TRUE(SameHostValue(outputs[0].get(), Scalar(1.0).get()));
  EXPECT_TRUE(SameHostValue(outputs[1].get(), Scalar(2.0).get()));
}

TEST(TextToUtf8, NeitherFailsNorLeaksHalfWay) {
  const hxArrayPtr cases[] = {Strings({u"a", u"é", std::nullopt}), Cell({Char("a"), Char("é")}),
                              CharMatrix({2, 2}, u"aébé")};
  for (const hxArrayPtr& text : cases) {
    const FaultSites sites = FailEverywhere([&] {
      Convert(text);
      return ::arrow::Status::OK();
    });
    EXPECT_GE(sites.allocations, 3U);
    EXPECT_GE(sites.calls, 6U);
  }
}

}  // namespace
}  // namespace numera::io::arrow::unicode
