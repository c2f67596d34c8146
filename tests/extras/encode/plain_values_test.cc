#include <arrow/api.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "numera/core/to_arrow.h"
#include "numera/extras/encode/encode.h"
#include "tests/extras/encode/expect_encoded.h"
#include "tests/support/arrow_values.h"
#include "tests/support/envelopes.h"
#include "tests/support/host_matchers.h"

namespace numera::testing {
namespace {

using namespace std::string_literals;
using extras::make_readable;
using io::arrow::core::to_arrow;

template <class T>
void expect_numbers(std::string_view type) {
  SCOPED_TRACE(std::string(type));
  expect_encoded(Matrix<T>({2, 2}, {1, 2, 3, 4}),
                 WrittenArray(type, 4, Matrix<T>({2, 2}, {1, 2, 3, 4})));
}

TEST(EncodePlainValues, NumbersOfEveryClassStayAsTheyAre) {
  expect_numbers<double>("double");
  expect_numbers<float>("single");
  expect_numbers<std::int8_t>("int8");
  expect_numbers<std::uint8_t>("uint8");
  expect_numbers<std::int16_t>("int16");
  expect_numbers<std::uint16_t>("uint16");
  expect_numbers<std::int32_t>("int32");
  expect_numbers<std::uint32_t>("uint32");
  expect_numbers<std::int64_t>("int64");
  expect_numbers<std::uint64_t>("uint64");
}

// NOLINTBEGIN(clang-diagnostic-deprecated-declarations): what is tested
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
TEST(EncodePlainValues, AreAlsoReadableByTheFormerName) {
  const hxArrayPtr numbers = Column<double>({1, 2, 3});
  EXPECT_TRUE(SameHostValue(extras::encode(numbers.get()).ValueOrDie().get(),
                            make_readable(numbers.get()).ValueOrDie().get()));
}
#pragma GCC diagnostic pop
// NOLINTEND(clang-diagnostic-deprecated-declarations)

TEST(EncodePlainValues, NumbersAreNotCopied) {
  const hxArrayPtr numbers = Column<double>({1, 2, 3});
  const hxArrayPtr readable = make_readable(numbers.get()).ValueOrDie();
  const hxArray* const data = hxGetField(readable.get(), 0, "Data");
  EXPECT_EQ(hxGetData(data), hxGetData(static_cast<const hxArray*>(numbers.get())));
}

TEST(EncodePlainValues, EmptyNumbersHaveNoElements) {
  expect_encoded(Matrix<double>({0, 0}, {}), WrittenArray("double", 0, Matrix<double>({0, 0}, {})));
}

TEST(EncodePlainValues, LogicalValuesArePackedInStorageOrder) {
  const std::vector<bool> values = {true, false, false, true, true, false, false, false, true};
  const auto expected = [] {
    return WrittenArray("logical", 9, WrittenBitmap(9, {0b00011001, 1}));
  };
  expect_encoded(Logical(values), expected());
  expect_encoded(Logical({1, 9}, values), expected());
  expect_encoded(Logical({3, 3}, values), expected());
  expect_encoded(Logical({}), WrittenArray("logical", 0, WrittenBitmap(0)));
}

TEST(EncodePlainValues, StringArraysOfAnyShapeArePackedWithBitsForMissingTexts) {
  const std::vector<std::optional<std::u16string>> texts = {u"ab", std::nullopt, u"", u"é"};
  const auto expected = [] {
    return WrittenArray("string", 4, TextData("ab\xC3\xA9\0"s, {0, 2, 2, 2, 4}), {0xFD});
  };
  expect_encoded(Strings(texts), expected());
  expect_encoded(Strings({1, 4}, texts), expected());
  expect_encoded(Strings({2, 2}, texts), expected());
  expect_encoded(Strings({1, 2, 2}, texts), expected());
}

TEST(EncodePlainValues, StringArraysWithoutMissingTextsHaveNoBits) {
  expect_encoded(Strings({u"a", u""}), WrittenArray("string", 2, TextData("a\0"s, {0, 1, 1})));
  expect_encoded(Strings({}), WrittenArray("string", 0, TextData("\0"s, {0})));
}

TEST(EncodePlainValues, MissingTextsBecomeNulls) {
  const hxArrayPtr readable =
      make_readable(Strings({u"a", std::nullopt, u"😀", std::nullopt}).get()).ValueOrDie();
  const auto array = to_arrow<::arrow::Array>(readable.get()).ValueOrDie();
  EXPECT_TRUE(SameArray(*array, *ArrowArray(::arrow::large_utf8(), R"(["a", null, "😀", null])")));
}

TEST(EncodePlainValues, CharArraysGiveATextARow) {
  expect_encoded(Char("two words"), WrittenArray("string", 1, TextData("two words\0"s, {0, 9})));
  expect_encoded(CharMatrix({2, 2}, u"acb "),
                 WrittenArray("string", 2, TextData("abc \0"s, {0, 2, 4})));
  expect_encoded(CharMatrix({0, 0}, u""), WrittenArray("string", 0, TextData("\0"s, {0})));
}

TEST(EncodePlainValues, CellsOfCharRowsAreTextInStorageOrder) {
  const auto expected = [] {
    return WrittenArray("string", 4, TextData("abc\0"s, {0, 1, 1, 1, 3}));
  };
  const auto empty = [] { return CharMatrix({0, 0}, u""); };
  expect_encoded(Cell({Char("a"), empty(), Char(""), Char("bc")}), expected());
  expect_encoded(Cell({1, 4}, {Char("a"), empty(), Char(""), Char("bc")}), expected());
  expect_encoded(Cell({2, 2}, {Char("a"), empty(), Char(""), Char("bc")}), expected());
}

TEST(EncodePlainValues, CellsOfBytesArePackedInStorageOrder) {
  const auto expected = [] {
    return WrittenArray("binary_array", 3, TextData("\1\2\3\4", {0, 2, 2, 4}));
  };
  expect_encoded(
      Cell({Column<std::uint8_t>({1, 2}), Column<std::uint8_t>({}), Row<std::uint8_t>({3, 4})}),
      expected());
  expect_encoded(Cell({1, 3}, {Column<std::uint8_t>({1, 2}), Matrix<std::uint8_t>({0, 0}, {}),
                               Row<std::uint8_t>({3, 4})}),
                 expected());
}

TEST(EncodePlainValues, CellArraysWithoutCellsAreText) {
  expect_encoded(Cell({0, 0}, {}), WrittenArray("string", 0, TextData("\0"s, {0})));
}

TEST(EncodePlainValues, TheInputStaysAsItWas) {
  const auto value = [] { return Cell({1, 2}, {Char("a"), Char("b")}); };
  const hxArrayPtr input = value();
  ASSERT_TRUE(make_readable(input.get()).ok());
  EXPECT_TRUE(SameHostValue(input.get(), value().get()));
}

}  // namespace
}  // namespace numera::testing
