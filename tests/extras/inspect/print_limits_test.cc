#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <numeric>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "numera/extras/inspect/inspect.h"
#include "tests/support/host_builder.h"

namespace numera::testing {
namespace {

using extras::print;
using extras::PrintOptions;

constexpr size_t kNoLimit = std::numeric_limits<size_t>::max();

hxArrayPtr counted_column(size_t length) {
  std::vector<std::int32_t> values(length);
  std::iota(values.begin(), values.end(), 1);
  return Column<std::int32_t>(values);
}

hxArrayPtr nested_cells(size_t levels) {
  hxArrayPtr value = Cell({});
  for (size_t i = 0; i < levels; ++i) value = Cell({std::move(value)});
  return value;
}

TEST(PrintLimits, SayHowManyElementsAreNotListed) {
  const hxArrayPtr value = counted_column(10);
  EXPECT_EQ(print(value.get(), {.max_elements = 10}), "int32 10x1 [1 2 3 4 5 6 7 8 9 10]");
  EXPECT_EQ(print(value.get(), {.max_elements = 9}), "int32 10x1 [1 2 3 4 5 6 7 8 9 ... 1 more]");
  EXPECT_EQ(print(value.get(), {.max_elements = 3}), "int32 10x1 [1 2 3 ... 7 more]");
  EXPECT_EQ(print(value.get(), {.max_elements = 0}), "int32 10x1 [... 10 more]");
}

TEST(PrintLimits, CutAMatrixInItsRow) {
  const hxArrayPtr value = Matrix<double>({2, 3}, {1, 2, 3, 4, 5, 6});
  EXPECT_EQ(print(value.get(), {.max_elements = 4}), "double 2x3 [1 3 5; 2 ... 2 more]");
  EXPECT_EQ(print(value.get(), {.max_elements = 3}), "double 2x3 [1 3 5 ... 3 more]");
}

TEST(PrintLimits, ListsTwentyElementsUnlessAskedForMore) {
  const hxArrayPtr value = counted_column(1000);
  EXPECT_EQ(print(value.get()),
            "int32 1000x1 [1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20 ... 980 more]");
}

TEST(PrintLimits, SayHowManyCellsAndStructElementsAreNotListed) {
  const hxArrayPtr cells = Cell({Scalar(1.0), Scalar(2.0), Scalar(3.0)});
  EXPECT_EQ(print(cells.get(), {.max_elements = 2}),
            "cell 3x1\n"
            "  {0}: double 1x1 [1]\n"
            "  {1}: double 1x1 [2]\n"
            "  ... 1 more");
  const hxArrayPtr structs =
      StructArray({3, 1}, {"A", "B"}, {{Empty(), Empty()}, {Empty(), Empty()}, {Empty(), Empty()}});
  EXPECT_EQ(print(structs.get(), {.max_elements = 1}),
            "struct 3x1\n"
            "  (0):\n"
            "    A: <empty>\n"
            "    B: <empty>\n"
            "  ... 2 more");
}

TEST(PrintLimits, NeverLeaveOutAField) {
  const hxArrayPtr value = Struct({{"A", Empty()}, {"B", Empty()}});
  EXPECT_EQ(print(value.get(), {.max_elements = 1}),
            "struct 1x1\n"
            "  A: <empty>\n"
            "  B: <empty>");
}

TEST(PrintLimits, KeepALineWithinItsWidth) {
  const hxArrayPtr value = counted_column(10);
  EXPECT_EQ(print(value.get(), {.max_width = 32}), "int32 10x1 [1 2 3 4 ... 6 more]");
  EXPECT_EQ(print(value.get(), {.max_width = 33}), "int32 10x1 [1 2 3 4 5 6 7 8 9 10]");
  EXPECT_EQ(print(value.get(), {.max_width = 31}), "int32 10x1 [1 2 3 4 ... 6 more]");
  EXPECT_EQ(print(value.get(), {.max_width = 30}), "int32 10x1 [1 2 3 ... 7 more]");
}

TEST(PrintLimits, CountTheIndentInTheWidth) {
  const hxArrayPtr value = Struct({{"Data", counted_column(10)}});
  EXPECT_EQ(print(value.get(), {.max_width = 39}),
            "struct 1x1\n"
            "  Data: int32 10x1 [1 2 3 4 ... 6 more]");
}

TEST(PrintLimits, ShowTheFirstElementWhateverTheWidth) {
  const hxArrayPtr value = counted_column(10);
  EXPECT_EQ(print(value.get(), {.max_width = 0}), "int32 10x1 [1 ... 9 more]");
}

TEST(PrintLimits, CutALongText) {
  const hxArrayPtr value = Char(u"abcdefghijklmnopqrstuvwxyz");
  EXPECT_EQ(print(value.get(), {.max_width = 38}), "char 1x26 \"abcdefghijklmnopqrstuvwxyz\"");
  EXPECT_EQ(print(value.get(), {.max_width = 37}), "char 1x26 \"abcdefghijklmnopqrstuv\"...");
  EXPECT_EQ(print(value.get(), {.max_width = 0}), "char 1x26 \"abcdefg\"...");
}

TEST(PrintLimits, CutATextBetweenCharacters) {
  EXPECT_EQ(print(Char(u"12345678😀abcd").get(), {.max_width = 22}), "char 1x14 \"1234567\"...");
  EXPECT_EQ(print(Char(u"123456😀abcdef").get(), {.max_width = 22}), "char 1x14 \"123456😀\"...");
  EXPECT_EQ(print(Char(u"12345\nabcdefgh").get(), {.max_width = 22}), "char 1x14 \"12345\\n\"...");
  EXPECT_EQ(print(Char(u"123456\nabcdefg").get(), {.max_width = 22}), "char 1x14 \"123456\"...");
}

TEST(PrintLimits, CountCodePointsAsColumns) {
  EXPECT_EQ(print(Char(u"éééééééééé").get(), {.max_width = 22}), "char 1x10 \"éééééééééé\"");
}

TEST(PrintLimits, CutTheFirstTextOfAListAndLeaveOutLaterOnes) {
  const hxArrayPtr long_first = Strings({std::u16string(200, u'x'), u"0123456789"});
  EXPECT_EQ(print(long_first.get(), {.max_width = 42}),
            "string 2x1 [\"xxxxxxxxxxxxx\"... ... 1 more]");
  const hxArrayPtr long_second = Strings({u"a", std::u16string(200, u'x'), u"b"});
  EXPECT_EQ(print(long_second.get(), {.max_width = 42}), "string 3x1 [\"a\" ... 2 more]");
}

TEST(PrintLimits, CutTheRowsOfACharMatrix) {
  const hxArrayPtr value = CharMatrix({2, 100}, std::u16string(200, u'x'));
  EXPECT_EQ(print(value.get(), {.max_width = 42}), "char 2x100 [\"xxxxxxxxxxxxx\"... ... 1 more]");
}

TEST(PrintLimits, MarkWhatLiesTooDeep) {
  const hxArrayPtr value = Struct({{"A", Cell({Cell({Scalar(1.0)})})}, {"B", Cell({})}});
  EXPECT_EQ(print(value.get(), {.max_depth = 0}), "struct 1x1 ...");
  EXPECT_EQ(print(value.get(), {.max_depth = 1}),
            "struct 1x1\n"
            "  A: cell 1x1 ...\n"
            "  B: cell 0x1");
  EXPECT_EQ(print(value.get(), {.max_depth = 2}),
            "struct 1x1\n"
            "  A: cell 1x1\n"
            "    {0}: cell 1x1 ...\n"
            "  B: cell 0x1");
}

TEST(PrintLimits, MarkStructElementsThatLieTooDeep) {
  const hxArrayPtr value = StructArray({2, 1}, {"A"}, {{Empty()}, {Empty()}});
  EXPECT_EQ(print(value.get(), {.max_depth = 1}),
            "struct 2x1\n"
            "  (0): ...\n"
            "  (1): ...");
}

TEST(PrintLimits, EndATreeOfTooManyLines) {
  const hxArrayPtr value = Cell({Scalar(1.0), Scalar(2.0), Scalar(3.0)});
  EXPECT_EQ(print(value.get(), {.max_lines = 2}),
            "cell 3x1\n"
            "  {0}: double 1x1 [1]\n"
            "...");
  EXPECT_EQ(print(value.get(), {.max_lines = 4}),
            "cell 3x1\n"
            "  {0}: double 1x1 [1]\n"
            "  {1}: double 1x1 [2]\n"
            "  {2}: double 1x1 [3]");
}

TEST(PrintLimits, AreNotNeededToSurviveDeepNesting) {
  const hxArrayPtr value = nested_cells(300'000);
  EXPECT_EQ(print(value.get(), {.max_depth = kNoLimit, .max_lines = 3}),
            "cell 1x1\n"
            "  {0}: cell 1x1\n"
            "    {0}: cell 1x1\n"
            "...");
  const std::string text = print(value.get(), {.max_depth = kNoLimit, .max_lines = 2000});
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 2000);
}

TEST(PrintLimits, MayAllBeLifted) {
  const hxArrayPtr value = counted_column(5);
  const PrintOptions unlimited{kNoLimit, kNoLimit, kNoLimit, kNoLimit};
  EXPECT_EQ(print(value.get(), unlimited), "int32 5x1 [1 2 3 4 5]");
  EXPECT_EQ(print(CharMatrix({2, 2}, u"abcd").get(), unlimited), "char 2x2 [\"ac\" \"bd\"]");
}

}  // namespace
}  // namespace numera::testing
