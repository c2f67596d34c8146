#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <utility>

#include "numera/extras/inspect/inspect.h"
#include "tests/support/host_builder.h"
#include "tests/support/host_matchers.h"

namespace numera::testing {
namespace {

using extras::first_difference;

// The difference, or "equal".
std::string difference(const hxArrayPtr& a, const hxArrayPtr& b) {
  return first_difference(a.get(), b.get()).value_or("equal");
}

hxArrayPtr envelope(hxArrayPtr data) {
  return Struct({{"Type", Char("double")},
                 {"Valid", Empty()},
                 {"Data", Struct({{"Values", std::move(data)}})}});
}

hxArrayPtr nested_cells(size_t levels, hxArrayPtr innermost) {
  for (size_t i = 0; i < levels; ++i) innermost = Cell({std::move(innermost)});
  return innermost;
}

TEST(FirstDifference, IsNoneBetweenEqualValuesOfEveryKind) {
  const auto make = [] {
    return Cell({Column<double>({1, kNaN, -0.0}), Complex<float>({1, 2}, {{1, 2}, {3, 4}}),
                 Matrix<std::int64_t>({1, 1, 2}, {7, 8}), Logical({true, false}), Char("hello"),
                 CharMatrix({2, 2}, u"abcd"), Strings({u"a", std::nullopt, u""}), Cell({}), Empty(),
                 StructArray({2, 1}, {"A"}, {{Char("x")}, {Empty()}}),
                 ObjectArray("Point", {1, 1}, {"X"}, {{Scalar(1.0)}})});
  };
  EXPECT_EQ(difference(make(), make()), "equal");
}

TEST(FirstDifference, NamesTheElement) {
  EXPECT_EQ(difference(Column<double>({1, 2, 3, 1.5}), Column<double>({1, 2, 3, 2.5})),
            "(3): 1.5 is not 2.5");
  EXPECT_EQ(difference(Row<std::uint8_t>({1, 2}), Row<std::uint8_t>({1, 3})), "(1): 2 is not 3");
  EXPECT_EQ(difference(Matrix<double>({2, 2}, {1, 2, 3, 4}), Matrix<double>({2, 2}, {1, 5, 6, 4})),
            "(1,0): 2 is not 5");
  EXPECT_EQ(
      difference(Matrix<float>({1, 2, 2}, {1, 2, 3, 4}), Matrix<float>({1, 2, 2}, {1, 2, 5, 4})),
      "(0,0,1): 3 is not 5");
  EXPECT_EQ(difference(Logical({true, true}), Logical({true, false})), "(1): true is not false");
}

TEST(FirstDifference, GivesNoIndexToTheOnlyElement) {
  EXPECT_EQ(difference(Scalar(1.5), Scalar(2.5)), "1.5 is not 2.5");
}

TEST(FirstDifference, ComparesTheBitsOfNumbers) {
  EXPECT_EQ(difference(Scalar(-0.0), Scalar(0.0)), "-0 is not 0");
  EXPECT_EQ(difference(Scalar(kNaN), Scalar(kNaN)), "equal");
  EXPECT_EQ(difference(Scalar(std::bit_cast<double>(std::uint64_t{0x7FF8000000000001})),
                       Scalar(std::bit_cast<double>(std::uint64_t{0xFFF8000000000002}))),
            "NaN (bits 7FF8000000000001) is not NaN (bits FFF8000000000002)");
  EXPECT_EQ(difference(Scalar(std::bit_cast<float>(0x7FC00000u)),
                       Scalar(std::bit_cast<float>(0x7FC00001u))),
            "NaN (bits 7FC00000) is not NaN (bits 7FC00001)");
}

TEST(FirstDifference, ComparesTheBytesOfTruthValues) {
  hxArrayPtr odd = Logical({true});
  static_cast<std::uint8_t*>(hxGetData(odd.get()))[0] = 7;
  EXPECT_EQ(difference(odd, Logical({true})), "true (bits 07) is not true (bits 01)");
}

TEST(FirstDifference, SeesTheImaginaryPart) {
  EXPECT_EQ(difference(Complex<double>({2, 1}, {{1, 2}, {3, 4}}),
                       Complex<double>({2, 1}, {{1, 2}, {3, 5}})),
            "(1): 3+4i is not 3+5i");
  const double other_nan = std::bit_cast<double>(std::uint64_t{0x7FF8000000000001});
  EXPECT_EQ(
      difference(Complex<double>({1, 1}, {{1, kNaN}}), Complex<double>({1, 1}, {{1, other_nan}})),
      "1+NaNi (bits 3FF0000000000000 7FF8000000000000) is not "
      "1+NaNi (bits 3FF0000000000000 7FF8000000000001)");
}

TEST(FirstDifference, NamesTheClasses) {
  EXPECT_EQ(difference(Scalar(1.0), Scalar(1.0f)), "class double is not single");
  EXPECT_EQ(difference(Scalar(1.0), Complex<double>({1, 1}, {{1, 0}})),
            "class double is not complex double");
  EXPECT_EQ(difference(Strings({u"a"}), Char("a")), "class string is not char");
  EXPECT_EQ(difference(Struct({}), ObjectArray("Point", {1, 1}, {}, {{}})),
            "class struct is not object \"Point\"");
  EXPECT_EQ(
      difference(ObjectArray("Line", {1, 1}, {}, {{}}), ObjectArray("Point", {1, 1}, {}, {{}})),
      "class object \"Line\" is not object \"Point\"");
  EXPECT_EQ(difference(host::memory::CreateSparseArray(Dims{1, 1}, hxClassID::Double), Scalar(0.0)),
            "class sparse double is not double");
}

TEST(FirstDifference, NamesTheSizes) {
  EXPECT_EQ(difference(Column<double>({1, 2, 3}), Row<double>({1, 2, 3})), "size 3x1 is not 1x3");
  EXPECT_EQ(difference(Matrix<double>({0, 1}, {}), Matrix<double>({0, 1, 2}, {})),
            "size 0x1 is not 0x1x2");
  EXPECT_EQ(difference(Cell({}), Cell({Empty()})), "size 0x1 is not 1x1");
  EXPECT_EQ(difference(Char(""), CharMatrix({0, 0}, u"")), "size 1x0 is not 0x0");
  EXPECT_EQ(difference(Strings({u"a"}), Strings({})), "size 1x1 is not 0x1");
}

TEST(FirstDifference, ShowsTextsThatDiffer) {
  EXPECT_EQ(difference(Char("single"), Char("double")), "\"single\" is not \"double\"");
  EXPECT_EQ(difference(Char("array"), Char("arrays")), "\"array\" is not \"arrays\"");
  EXPECT_EQ(difference(Char(""), Char("x")), "\"\" is not \"x\"");
  EXPECT_EQ(difference(Char(u"\xD83D"), Char(u"\xD83E")), "\"\\uD83D\" is not \"\\uD83E\"");
}

TEST(FirstDifference, ShowsLongTextsFromTheDifferenceOn) {
  EXPECT_EQ(
      difference(Char(std::u16string(15, u'x') + u"a"), Char(std::u16string(15, u'x') + u"b")),
      "\"xxxxxxxxxxxxxxxa\" is not \"xxxxxxxxxxxxxxxb\"");
  EXPECT_EQ(difference(Char(std::u16string(5000, u'x') + u"abc"), Char(std::u16string(5000, u'x'))),
            "from code unit 5000, \"abc\" is not \"\"");
  EXPECT_EQ(difference(Char(u"a" + std::u16string(5000, u'x')), Char("b")),
            "\"a" + std::string(104, 'x') + "\"... is not \"b\"");
}

TEST(FirstDifference, ShowsTheDifferenceHoweverMuchIsEscaped) {
  EXPECT_EQ(
      difference(Char(std::u16string(15, u'\x01') + u"ab"),
                 Char(std::u16string(15, u'\x01') + u"cd")),
      R"("\u0001\u0001\u0001\u0001\u0001\u0001\u0001\u0001\u0001\u0001\u0001\u0001\u0001\u0001)"
      R"(\u0001ab" is not )"
      R"("\u0001\u0001\u0001\u0001\u0001\u0001\u0001\u0001\u0001\u0001\u0001\u0001\u0001\u0001)"
      R"(\u0001cd")");
}

TEST(FirstDifference, NamesTheCodeUnitOfACharMatrix) {
  EXPECT_EQ(difference(CharMatrix({2, 2}, u"abcd"), CharMatrix({2, 2}, u"abxd")),
            "(0,1): \"c\" is not \"x\"");
}

TEST(FirstDifference, TellsMissingTextsFromEmptyOnes) {
  EXPECT_EQ(difference(Strings({u"a", std::nullopt}), Strings({u"a", u""})),
            "(1): <missing> is not \"\"");
  EXPECT_EQ(difference(Strings({u"a"}), Strings({std::nullopt})), "\"a\" is not <missing>");
  EXPECT_EQ(difference(Strings({u"a", u"b"}), Strings({u"a", u"c"})), "(1): \"b\" is not \"c\"");
}

TEST(FirstDifference, NamesTheFieldsByPosition) {
  EXPECT_EQ(difference(Struct({{"A", Empty()}, {"B", Empty()}}),
                       Struct({{"B", Empty()}, {"A", Empty()}})),
            "field 0 A is not B");
  EXPECT_EQ(difference(Struct({{"A", Empty()}}), Struct({{"A", Empty()}, {"two words", Empty()}})),
            "field 1 <none> is not \"two words\"");
  EXPECT_EQ(difference(StructArray({0, 1}, {"A"}, {}), StructArray({0, 1}, {}, {})),
            "field 0 A is not <none>");
}

TEST(FirstDifference, TellsNamesThatAreNoUtf8FromThoseThatAre) {
  EXPECT_EQ(difference(Struct({{"\x80", Empty()}}), Struct({{"\xC2\x80", Empty()}})),
            R"(field 0 "\x80" is not "\u0080")");
}

TEST(FirstDifference, OpensWithThePath) {
  EXPECT_EQ(difference(envelope(Column<double>({1, 2})), envelope(Column<double>({1, 3}))),
            ".Data.Values(1): 2 is not 3");
  EXPECT_EQ(difference(envelope(Column<double>({1, 2})), envelope(Row<double>({1, 2}))),
            ".Data.Values: size 2x1 is not 1x2");
}

TEST(FirstDifference, IndexesElementsAndCellsOnThePath) {
  const auto make = [](hxArrayPtr innermost) {
    return Struct({{"Columns", StructArray({3, 1}, {"Name", "Data"},
                                           {{Empty(), Empty()},
                                            {Empty(), Empty()},
                                            {Char("c"), Cell({2, 2}, {Empty(), std::move(innermost),
                                                                      Empty(), Empty()})}})}});
  };
  EXPECT_EQ(difference(make(Scalar(1.0)), make(Scalar(2.0))), ".Columns(2).Data{1,0}: 1 is not 2");
  EXPECT_EQ(difference(make(Empty()), make(Cell({}))),
            ".Columns(2).Data{1,0}: <empty> is not cell 0x1");
  EXPECT_EQ(difference(make(Cell({Char("x")})), make(Cell({Char("y")}))),
            ".Columns(2).Data{1,0}{0}: \"x\" is not \"y\"");
}

TEST(FirstDifference, QuotesNamesOnThePath) {
  EXPECT_EQ(difference(Struct({{"two words", Scalar(1.0)}}), Struct({{"two words", Scalar(2.0)}})),
            ".\"two words\": 1 is not 2");
}

TEST(FirstDifference, IsTheFirstInStorageOrder) {
  EXPECT_EQ(difference(Cell({Cell({Scalar(1.0)}), Scalar(1.0)}),
                       Cell({Cell({Scalar(2.0)}), Scalar(2.0)})),
            "{0}{0}: 1 is not 2");
  EXPECT_EQ(difference(Cell({Cell({Scalar(1.0)}), Scalar(1.0)}),
                       Cell({Cell({Scalar(1.0)}), Scalar(2.0)})),
            "{1}: 1 is not 2");
}

TEST(FirstDifference, TellsEmptySlotsFromEmptyValues) {
  EXPECT_EQ(difference(Struct({{"A", Empty()}}), Struct({{"A", Matrix<double>({0, 0}, {})}})),
            ".A: <empty> is not double 0x0 []");
  EXPECT_EQ(difference(Cell({Char("x")}), Cell({Empty()})), "{0}: char 1x1 \"x\" is not <empty>");
}

TEST(FirstDifference, TakesNull) {
  const hxArrayPtr value = Column<double>({1, 2, 3, 4, 5, 6});
  EXPECT_EQ(first_difference(nullptr, nullptr), std::nullopt);
  EXPECT_EQ(first_difference(nullptr, value.get()),
            "<null> is not double 6x1 [1 2 3 4 5 ... 1 more]");
  EXPECT_EQ(first_difference(value.get(), nullptr),
            "double 6x1 [1 2 3 4 5 ... 1 more] is not <null>");
}

TEST(FirstDifference, IsNoneBetweenAValueAndItself) {
  const hxArrayPtr sparse = host::memory::CreateSparseArray(Dims{3, 3}, hxClassID::Double);
  EXPECT_EQ(first_difference(sparse.get(), sparse.get()), std::nullopt);
}

TEST(FirstDifference, IsNoneBetweenSharedCopies) {
  const hxArrayPtr original = envelope(Column<double>({1, 2}));
  EXPECT_EQ(difference(original, hxSharedCopy(original.get())), "equal");
}

TEST(FirstDifference, DoesNotCallSparseArraysEqual) {
  EXPECT_EQ(difference(Cell({host::memory::CreateSparseArray(Dims{3, 3}, hxClassID::Double)}),
                       Cell({host::memory::CreateSparseArray(Dims{3, 3}, hxClassID::Double)})),
            "{0}: the elements of sparse double cannot be compared");
}

TEST(FirstDifference, SurvivesDeepNesting) {
  constexpr size_t kLevels = 50'000;
  EXPECT_EQ(difference(nested_cells(kLevels, Char("x")), nested_cells(kLevels, Char("x"))),
            "equal");
  const std::string found =
      difference(nested_cells(kLevels, Char("x")), nested_cells(kLevels, Char("y")));
  EXPECT_EQ(found.size(), 3 * kLevels + std::string(": \"x\" is not \"y\"").size());
  EXPECT_EQ(found.substr(3 * kLevels - 6), "{0}{0}: \"x\" is not \"y\"");
}

TEST(SameHostValue, SucceedsForEqualValues) {
  EXPECT_TRUE(SameHostValue(Scalar(1.0).get(), Scalar(1.0).get()));
}

TEST(SameHostValue, PrintsTheDifferenceAndBothTrees) {
  const ::testing::AssertionResult result =
      SameHostValue(Struct({{"A", Scalar(1.0)}}).get(), Struct({{"A", Scalar(2.0)}}).get());
  EXPECT_FALSE(result);
  EXPECT_STREQ(result.message(),
               "first difference (actual, expected): .A: 1 is not 2\n"
               "actual:\n"
               "struct 1x1\n"
               "  A: double 1x1 [1]\n"
               "expected:\n"
               "struct 1x1\n"
               "  A: double 1x1 [2]");
}

/// `levels` nested structs, each with two fields of the same name.
hxArrayPtr namesakes(int levels) {
  hxArrayPtr value = Scalar(1.0);
  for (int level = 0; level < levels; ++level) {
    value = StructArray({1, 1}, {"a", "a"}, {{std::move(value), Scalar(2.0)}});
  }
  return value;
}

TEST(FirstDifference, SecondFieldsOfOneNameAreNotRead) {
  EXPECT_EQ(first_difference(namesakes(64).get(), namesakes(64).get()), std::nullopt);
  EXPECT_EQ(extras::print(namesakes(1).get()), "struct 1x1\n  a: double 1x1 [1]\n  a: <empty>");
}

}  // namespace
}  // namespace numera::testing
