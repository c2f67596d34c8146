#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <exception>
#include <new>
#include <string>

#include "numera/host/message_id_exception.h"
#include "numera/unicode/convert_utf16_to_utf8.h"
#include "tests/support/host_builder.h"
#include "tests/support/host_matchers.h"
#include "tests/support/recording_host.h"
#include "tests/unicode/utf8_of_text.h"

namespace numera::io::arrow::unicode {
namespace {

using namespace numera::testing;

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

TEST(TextToUtf8, PassesOnWhatTheCodecThrowsBesides) {
  const hxArrayPtr text = Strings({u"a", u"é"});
  // Fails every host call in turn, up to the call that converts.
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

}  // namespace
}  // namespace numera::io::arrow::unicode
