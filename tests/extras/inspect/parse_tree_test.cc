#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <utility>

#include "numera/extras/inspect/literal.h"
#include "tests/support/host_builder.h"
#include "tests/support/host_matchers.h"

namespace numera::testing {
namespace {

using extras::parse;

hxArrayPtr nested_cells(size_t levels) {
  hxArrayPtr value = Cell({});
  for (size_t i = 0; i < levels; ++i) value = Cell({std::move(value)});
  return value;
}

TEST(ParseTree, ReadsTheFieldsOfAStruct) {
  const hxArrayPtr value = parse(
      "struct 1x1\n"
      "  ArrowType: char 1x5 \"array\"\n"
      "  Valid: struct 1x1\n"
      "    Values: uint8 0x1 []\n"
      "    Length: <empty>\n"
      "  \"two words\": double 3x1 [1 2.5 -0]");
  EXPECT_TRUE(SameHostValue(
      value.get(),
      Struct({{"ArrowType", Char("array")},
              {"Valid", Struct({{"Values", Column<std::uint8_t>({})}, {"Length", Empty()}})},
              {"two words", Column<double>({1, 2.5, -0.0})}})
          .get()));
}

TEST(ParseTree, ReadsStructArraysElementByElement) {
  const hxArrayPtr value = parse(
      "struct 2x2\n"
      "  (0,0):\n"
      "    Name: char 1x3 \"Ada\"\n"
      "  (1,0):\n"
      "    Name: struct 2x1\n"
      "      (0):\n"
      "        A: <empty>\n"
      "      (1):\n"
      "        A: char 1x1 \"x\"\n"
      "  (0,1):\n"
      "    Name: <empty>\n"
      "  (1,1):\n"
      "    Name: logical 1x1 [true]\n");
  EXPECT_TRUE(SameHostValue(value.get(),
                            StructArray({2, 2}, {"Name"},
                                        {{Char("Ada")},
                                         {StructArray({2, 1}, {"A"}, {{Empty()}, {Char("x")}})},
                                         {Empty()},
                                         {Logical({true})}})
                                .get()));
}

TEST(ParseTree, ReadsStructsWithoutElementsOrFields) {
  const hxArrayPtr value = parse(
      "cell 4x1\n"
      "  {0}: struct 0x1\n"
      "    Name:\n"
      "    Age:\n"
      "  {1}: struct 1x1\n"
      "  {2}: struct 2x1\n"
      "    (0):\n"
      "    (1):\n"
      "  {3}: object \"Point\" 1x1\n"
      "    X: double 1x1 [1]");
  EXPECT_TRUE(SameHostValue(
      value.get(),
      Cell({StructArray({0, 1}, {"Name", "Age"}, {}), Struct({}), StructArray({2, 1}, {}, {{}, {}}),
            ObjectArray("Point", {1, 1}, {"X"}, {{Scalar(1.0)}})})
          .get()));
}

TEST(ParseTree, ReadsCellsInStorageOrder) {
  const hxArrayPtr value = parse(
      "cell 2x2\n"
      "  {0,0}: double 1x1 [1]\n"
      "  {1,0}: cell 0x1\n"
      "  {0,1}: double 1x1 [3]\n"
      "  {1,1}: <empty>");
  EXPECT_TRUE(SameHostValue(value.get(),
                            Cell({2, 2}, {Scalar(1.0), Cell({}), Scalar(3.0), Empty()}).get()));
}

TEST(ParseTree, TakesLiteralsOnItsLines) {
  const hxArrayPtr value = parse(
      "struct\n"
      "  A: struct(B=\"b\",\n"
      "            C=<empty>)\n"
      "  D: \"d\"\n");
  EXPECT_TRUE(SameHostValue(
      value.get(),
      Struct({{"A", Struct({{"B", Char("b")}, {"C", Empty()}})}, {"D", Char("d")}}).get()));
}

TEST(ParseTree, MayBeIndentedAsAWhole) {
  const hxArrayPtr value = parse(R"(

    struct 1x1
      A: cell 1x1

        {0}: "a"
      B: <empty>

  )");
  EXPECT_TRUE(SameHostValue(value.get(), Struct({{"A", Cell({Char("a")})}, {"B", Empty()}}).get()));
}

TEST(ParseTree, ReadsWhatIsPrinted) {
  const hxArrayPtr value = Struct(
      {{"Data", Strings({2, 2}, {u"a", std::nullopt, u"\xD800", u"ü"})},
       {"Columns", StructArray({2, 1}, {"Values", "1st"},
                               {{Matrix<double>({2, 3}, {1, -0.0, 2.5, 1e20, 0, 7}), Cell({})},
                                {Column<std::int8_t>({1, 2, 3}), Struct({{"", Empty()}})}})},
       {"Cell", Cell({1, 2, 2}, {Logical({1, 2}, {true, false}), Complex<float>({1, 1}, {{1, 2}}),
                                 CharMatrix({2, 2}, u"abcd"), CharMatrix({2, 0}, u"")})},
       {"None", StructArray({3, 0}, {"A"}, {})}});
  const std::string text = extras::print(value.get());
  EXPECT_TRUE(SameHostValue(parse(text).get(), value.get())) << text;
}

TEST(ParseTree, SurvivesDeepNesting) {
  constexpr size_t kNoLimit = std::numeric_limits<size_t>::max();
  const hxArrayPtr lines = nested_cells(1'000);
  const std::string tree =
      extras::print(lines.get(), {.max_depth = kNoLimit, .max_lines = kNoLimit});
  EXPECT_TRUE(SameHostValue(parse(tree).get(), lines.get()));
  const hxArrayPtr deep = nested_cells(100'000);
  EXPECT_TRUE(SameHostValue(parse(extras::literal(deep.get())).get(), deep.get()));
}

}  // namespace
}  // namespace numera::testing
