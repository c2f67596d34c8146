#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <exception>
#include <optional>
#include <string>

#include "numera/host/message_id_exception.h"
#include "numera/unicode/exceptions.h"
#include "tests/support/host_builder.h"
#include "tests/unicode/utf8_of_text.h"

namespace numera::io::arrow::unicode {
namespace {

using namespace numera::testing;
using namespace std::string_literals;

/// Expects the exception of a tag, caught as its own type, as `MessageIdException` and as
/// `std::exception`.
template <class Tag>
void ExpectThrows(const hxArrayPtr& text, const std::string& identifier) {
  EXPECT_THROW(Convert(text), hxTaggedException<Tag>);
  try {
    Convert(text);
    ADD_FAILURE() << "nothing was thrown";
  } catch (const std::exception& error) {
    EXPECT_EQ(error.what(), identifier);
  }
  try {
    Convert(text);
    ADD_FAILURE() << "nothing was thrown";
  } catch (const MessageIdException& error) {
    EXPECT_EQ(error.identifier(), identifier);
  }
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

/// Expects that the second code unit of element number `element` is refused. Elements count from
/// one.
void ExpectUnpairedIn(std::uint64_t element, const hxArrayPtr& text) {
  try {
    Convert(text);
    ADD_FAILURE() << "nothing was thrown";
  } catch (const hxTaggedException<UnrecognizedUTF16Character>& error) {
    EXPECT_THAT(
        error.arguments(),
        ::testing::ElementsAre(hxMessageArgument(element),
                               hxMessageArgument("Unpaired high surrogate at code unit 1."s)));
  }
}

TEST(TextToUtf8, NamesTheElementThatIsNoUtf16ByNumberFromOne) {
  const std::u16string unpaired = u"a" + std::u16string(1, char16_t{0xD800});
  const hxArrayPtr cases[] = {Strings({u"a", u"é", unpaired, unpaired}),
                              Cell({Char("a"), Char("é"), Char(unpaired)}),
                              CharMatrix({3, 2}, u"aéabb" + unpaired.substr(1))};
  for (const hxArrayPtr& text : cases) ExpectUnpairedIn(3, text);
}

TEST(TextToUtf8, PairsNoSurrogatesOfTwoTexts) {
  const std::u16string high = u"a" + std::u16string(1, char16_t{0xD83D});
  const std::u16string low = std::u16string(1, char16_t{0xDE00}) + u"b";
  const hxArrayPtr cases[] = {Strings({u"é", high, low}), Strings({u"é", high, u"", low}),
                              Cell({Char("é"), Char(high), Char(low)})};
  for (const hxArrayPtr& text : cases) ExpectUnpairedIn(2, text);
}

TEST(TextToUtf8, RefusesEveryUnpairedSurrogate) {
  const std::u16string high(1, char16_t{0xD83D});
  const std::u16string low(1, char16_t{0xDE00});
  for (const std::u16string& text : {high, low, low + high, high + u"a", high + high + low,
                                     high + low + low, u"a" + low + u"b"}) {
    EXPECT_THROW(Convert(Strings({text})), hxTaggedException<UnrecognizedUTF16Character>);
  }
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

}  // namespace
}  // namespace numera::io::arrow::unicode
