#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "numera/core/to_arrow.h"
#include "numera/core/types/string.h"
#include "tests/core/fail_conversions.h"
#include "tests/support/arrow_values.h"
#include "tests/support/envelopes.h"
#include "tests/support/host_builder.h"
#include "tests/support/offset_arrays.h"
#include "tests/support/results.h"

namespace numera::io::arrow::core {
namespace {

using namespace numera::testing;
using namespace std::string_literals;

TEST(TextToArrow, BecomesLargeTextUnderBothNames) {
  for (const char* name : {"string", "char"}) {
    SCOPED_TRACE(name);
    const hxArrayPtr encoded = Envelope(name, TextData("aé€", {0, 1, 1, 3, 6}), {0b1101});

    const auto texts = ValueOf(to_arrow<::arrow::Array>(encoded.get()));

    EXPECT_TRUE(SameArray(*texts, *ArrowArray(::arrow::large_utf8(), R"(["a", null, "é", "€"])")));
  }
}

TEST(TextToArrow, BorrowsBytesOffsetsAndValidity) {
  const hxArrayPtr encoded = Envelope("string", TextData("abc", {0, 1, 3}), {0b01});
  const hxArray* texts = hxGetField(encoded.get(), 0, "Data");
  const hxArray* valid = hxGetField(encoded.get(), 0, "Valid");

  const auto array = ValueOf(to_arrow<::arrow::Array>(encoded.get()));

  const ::arrow::ArrayData& data = *array->data();
  EXPECT_EQ(data.buffers[0]->data(), hxGetData(hxGetField(valid, 0, "Values")));
  EXPECT_EQ(data.buffers[1]->data(), hxGetData(hxGetField(texts, 0, "StartOffsets")));
  EXPECT_EQ(data.buffers[1]->size(), 24);
  EXPECT_EQ(data.buffers[2]->data(), hxGetData(hxGetField(texts, 0, "Values")));
  EXPECT_EQ(data.buffers[2]->size(), 3);
  EXPECT_EQ(data.null_count, ::arrow::kUnknownNullCount);
  EXPECT_EQ(data.offset, 0);
}

TEST(TextToArrow, ReadsFieldsOfAnyShape) {
  const hxArrayPtr texts = Envelope(
      "string",
      ListData(Row<std::uint8_t>({'a', 'b', 'c'}), Matrix<std::uint64_t>({2, 2}, {0, 1, 1, 3})));

  const auto array = ValueOf(to_arrow<::arrow::Array>(texts.get()));

  EXPECT_TRUE(SameArray(*array, *ArrowArray(::arrow::large_utf8(), R"(["a", "", "bc"])")));
}

TEST(TextToArrow, IgnoresTheZeroByteBehindTheLastText) {
  const hxArrayPtr texts = Envelope("string", TextData("ab\0"s, {0, 2}));

  const auto array = ValueOf(to_arrow<::arrow::Array>(texts.get()));

  EXPECT_TRUE(SameArray(*array, *ArrowArray(::arrow::large_utf8(), R"(["ab"])")));
}

TEST(TextToArrow, KeepsNulWithinAText) {
  const hxArrayPtr texts = Envelope("string", TextData("a\0b\0"s, {0, 3, 4}));

  const auto array = ValueOf(to_arrow<::arrow::Array>(texts.get()));

  EXPECT_TRUE(SameArray(*array, *ArrowArray(::arrow::large_utf8(), R"(["a\u0000b", "\u0000"])")));
}

TEST(TextToArrow, IsNarrowWithOffsetsOfItsOwnWhereThatIsAsked) {
  const hxArrayPtr texts = TextData("aé€", {0, 1, 3, 6});

  const auto array = ValueOf(MakeStringArray(texts.get(), ArrowBuffer({0b101})));

  EXPECT_TRUE(SameArray(*array, *ArrowArray(::arrow::utf8(), R"(["a", null, "€"])")));
  EXPECT_EQ(array->data()->buffers[2]->data(), hxGetData(hxGetField(texts.get(), 0, "Values")));
}

TEST(TextToArrow, NeitherFailsNorLeaksHalfWay) {
  const hxArrayPtr encoded = Envelope("string", TextData("abc", {0, 1, 3}));
  FailReading(encoded);
}

}  // namespace
}  // namespace numera::io::arrow::core
