#include "numera/extras/inspect/literal.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/host_builder.h"
#include "tests/support/host_matchers.h"

namespace numera::testing {
namespace {

using extras::literal;
using extras::parse;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

struct LiteralCase {
  const char* text;
  hxArrayPtr value;
};

// A list of cases, which a vector cannot take from braces, since a value cannot be copied.
template <class Check, class... Cases>
void for_each_case(Check check, Cases... cases) {
  const auto run = [&](const LiteralCase& one) {
    SCOPED_TRACE(one.text);
    check(one);
  };
  (run(cases), ...);
}

template <class... Cases>
void expect_both_ways(Cases... cases) {
  const auto check = [](const LiteralCase& one) {
    EXPECT_EQ(literal(one.value.get()), one.text);
    EXPECT_TRUE(SameHostValue(parse(one.text).get(), one.value.get()));
  };
  for_each_case(check, std::move(cases)...);
}

template <class... Cases>
void expect_read(Cases... cases) {
  const auto check = [](const LiteralCase& one) {
    EXPECT_TRUE(SameHostValue(parse(one.text).get(), one.value.get()));
  };
  for_each_case(check, std::move(cases)...);
}

TEST(Literal, GivesNumbersOfEveryClassBothWays) {
  using std::numeric_limits;
  expect_both_ways(
      LiteralCase{"double 4x1 [NaN -0 -Inf 1.7976931348623157e+308]",
                  Column<double>({kNaN, -0.0, -kInfinity, numeric_limits<double>::max()})},
      LiteralCase{"double 1x3 [5e-324 0.30000000000000004 1e+20]",
                  Row<double>({5e-324, 0.1 + 0.2, 1e20})},
      LiteralCase{"single 3x1 [0.1 3.4028235e+38 NaN]",
                  Column<float>({0.1f, numeric_limits<float>::max(), std::nanf("")})},
      LiteralCase{"int8 2x1 [-128 127]", Column<std::int8_t>({-128, 127})},
      LiteralCase{"uint8 1x1 [255]", Scalar<std::uint8_t>(255)},
      LiteralCase{"int16 1x1 [-32768]", Scalar<std::int16_t>(-32768)},
      LiteralCase{"uint16 1x1 [65535]", Scalar<std::uint16_t>(65535)},
      LiteralCase{"int32 1x1 [-2147483648]", Scalar(numeric_limits<std::int32_t>::min())},
      LiteralCase{"uint32 1x1 [4294967295]", Scalar<std::uint32_t>(4294967295)},
      LiteralCase{"int64 2x1 [-9223372036854775808 9223372036854775807]",
                  Column<std::int64_t>(
                      {numeric_limits<std::int64_t>::min(), numeric_limits<std::int64_t>::max()})},
      LiteralCase{"uint64 1x1 [18446744073709551615]",
                  Scalar(numeric_limits<std::uint64_t>::max())},
      LiteralCase{"logical 2x1 [true false]", Logical({true, false})});
}

TEST(Literal, GivesComplexNumbersBothWays) {
  expect_both_ways(
      LiteralCase{"complex double 4x1 [1+2i 1.5-2i 1e-05-1e+20i NaN+Infi]",
                  Complex<double>({4, 1}, {{1, 2}, {1.5, -2}, {1e-5, -1e20}, {kNaN, kInfinity}})},
      LiteralCase{"complex double 3x1 [0-0i -0+0i -Inf-Infi]",
                  Complex<double>({3, 1}, {{0, -0.0}, {-0.0, 0}, {-kInfinity, -kInfinity}})},
      LiteralCase{"complex single 2x1 [0.1+NaNi -1-2i]",
                  Complex<float>({2, 1}, {{0.1f, std::nanf("")}, {-1, -2}})},
      LiteralCase{"complex int8 1x2 [1-128i -3+4i]",
                  Complex<std::int8_t>({1, 2}, {{1, -128}, {-3, 4}})},
      LiteralCase{"complex uint64 0x1 []", Complex<std::uint64_t>({0, 1}, {})});
}

TEST(Literal, GivesEveryShapeBothWays) {
  expect_both_ways(
      LiteralCase{"double 2x3 [1 3 5; 2 4 6]", Matrix<double>({2, 3}, {1, 2, 3, 4, 5, 6})},
      LiteralCase{"int8 2x2x2 [1 3; 2 4; 5 7; 6 8]",
                  Matrix<std::int8_t>({2, 2, 2}, {1, 2, 3, 4, 5, 6, 7, 8})},
      LiteralCase{"int8 1x1x2 [1; 2]", Matrix<std::int8_t>({1, 1, 2}, {1, 2})},
      LiteralCase{"double 0x0 []", Matrix<double>({0, 0}, {})},
      LiteralCase{"logical 3x0x2 []", Logical({3, 0, 2}, {})},
      LiteralCase{"string 0x1 []", Strings({})}, LiteralCase{"cell 0x3 {}", Cell({0, 3}, {})},
      LiteralCase{"single 0x18446744073709551615 []",
                  Matrix<float>({0, std::numeric_limits<size_t>::max()}, {})});
}

TEST(Literal, GivesCharsBothWays) {
  expect_both_ways(
      LiteralCase{R"("hello")", Char("hello")}, LiteralCase{R"("")", Char("")},
      LiteralCase{R"("a\"b\\\n\t\u0000\u000D\u007F")",
                  Char(std::u16string(u"a\"b\\\n\t\0\r\x7F", 9))},
      LiteralCase{R"("é€😀")", Char(u"é€😀")},
      LiteralCase{R"("\uD83Dx\uDE00\uD83D")", Char(u"\xD83Dx\xDE00\xD83D")},
      LiteralCase{R"(char 2x3 ["abc" "d\"f"])", CharMatrix({2, 3}, u"adb\"cf")},
      LiteralCase{R"(char 3x1 ["a" "\uD83D" "c"])", CharMatrix({3, 1}, u"a\xD83D\x63")},
      LiteralCase{R"(char 2x2x2 ["ac" "bd" "eg" "fh"])", CharMatrix({2, 2, 2}, u"abcdefgh")},
      LiteralCase{R"(char 0x0 "")", CharMatrix({0, 0}, u"")},
      LiteralCase{R"(char 2x0 "")", CharMatrix({2, 0}, u"")},
      LiteralCase{R"(char 0x5x2 "")", CharMatrix({0, 5, 2}, u"")});
}

TEST(Literal, GivesStringsBothWays) {
  expect_both_ways(LiteralCase{R"(string 4x1 ["a" <missing> "" "<missing>"])",
                               Strings({u"a", std::nullopt, u"", u"<missing>"})},
                   LiteralCase{R"(string 2x2 ["a" <missing>; "b" "ü\uDC00"])",
                               Strings({2, 2}, {u"a", u"b", std::nullopt, u"ü\xDC00"})});
}

TEST(Literal, GivesCellsBothWays) {
  expect_both_ways(LiteralCase{R"(cell 1x2 {"a", <empty>})", Cell({1, 2}, {Char("a"), Empty()})},
                   LiteralCase{R"(cell 2x2 {"a", "c"; "b", cell 1x1 {cell 0x1 {}}})",
                               Cell({2, 2}, {Char("a"), Char("b"), Char("c"), Cell({Cell({})})})});
}

TEST(Literal, GivesStructsBothWays) {
  expect_both_ways(
      LiteralCase{R"(struct(Name="Ada", Age=double 1x1 [36], Rest=<empty>))",
                  Struct({{"Name", Char("Ada")}, {"Age", Scalar(36.0)}, {"Rest", Empty()}})},
      LiteralCase{R"(struct 2x1 {(Name="Ada", Age=double 1x1 [36]), (Name="Jo", Age=<empty>)})",
                  StructArray({2, 1}, {"Name", "Age"},
                              {{Char("Ada"), Scalar(36.0)}, {Char("Jo"), Empty()}})},
      LiteralCase{R"(struct 2x2 {(A="a"), (A="c"); (A="b"), (A="d")})",
                  StructArray({2, 2}, {"A"}, {{Char("a")}, {Char("b")}, {Char("c")}, {Char("d")}})},
      LiteralCase{"struct 0x1(Name, Age)", StructArray({0, 1}, {"Name", "Age"}, {})},
      LiteralCase{"struct 0x0()", StructArray({0, 0}, {}, {})},
      LiteralCase{"struct()", StructArray({1, 1}, {}, {{}})},
      LiteralCase{"struct 2x1 {(), ()}", StructArray({2, 1}, {}, {{}, {}})});
}

TEST(Literal, GivesFieldNamesThatAreNoIdentifiersBothWays) {
  expect_both_ways(LiteralCase{
      R"(struct(_ok1=<empty>, "1st"=<empty>, ""=<empty>, "two words"=<empty>, "line\n\u001F"=<empty>, )"
      R"("größe"=<empty>, "\"\xFF\""=<empty>))",
      Struct({{"_ok1", Empty()},
              {"1st", Empty()},
              {"", Empty()},
              {"two words", Empty()},
              {"line\n\x1F", Empty()},
              {"größe", Empty()},
              {"\"\xFF\"", Empty()}})});
}

TEST(Literal, GivesObjectsBothWays) {
  expect_both_ways(
      LiteralCase{R"(object "Point"(X=double 1x1 [1]))",
                  ObjectArray("Point", {1, 1}, {"X"}, {{Scalar(1.0)}})},
      LiteralCase{R"(object "string" 2x1 {(), ()})", ObjectArray("string", {2, 1}, {}, {{}, {}})},
      LiteralCase{R"(object "my \"class\"" 1x0(A))",
                  ObjectArray("my \"class\"", {1, 0}, {"A"}, {})});
}

TEST(Literal, GivesNullBothWays) {
  EXPECT_EQ(literal(nullptr), "<null>");
  EXPECT_EQ(parse("<null>"), nullptr);
}

TEST(Literal, RefusesWhatCannotBeRead) {
  const hxArrayPtr value =
      Cell({host::memory::CreateSparseArray(Dims{3, 3}, hxClassID::Double), Char("a")});
  try {
    literal(value.get());
    FAIL() << "a literal of a sparse array";
  } catch (const std::invalid_argument& error) {
    EXPECT_STREQ(error.what(),
                 "literal: found sparse double 3x3, expected a value whose elements can be read.");
  }
}

TEST(Parse, TakesTheSizeFromTheContent) {
  expect_read(LiteralCase{"double [1 2.5 NaN]", Row<double>({1, 2.5, kNaN})},
              LiteralCase{"double [1; 2; 3]", Column<double>({1, 2, 3})},
              LiteralCase{"int8 [1 3 5; 2 4 6]", Matrix<std::int8_t>({2, 3}, {1, 2, 3, 4, 5, 6})},
              LiteralCase{"uint8 []", Matrix<std::uint8_t>({0, 0}, {})},
              LiteralCase{"char \"abc\"", Char("abc")},
              LiteralCase{R"(char ["abc" "def"])", CharMatrix({2, 3}, u"adbecf")},
              LiteralCase{R"(char ["" ""])", CharMatrix({2, 0}, u"")},
              LiteralCase{R"(string ["a"; <missing>])", Strings({u"a", std::nullopt})},
              LiteralCase{"cell {}", Cell({0, 0}, {})},
              LiteralCase{R"(cell {"a"; "b"})", Cell({Char("a"), Char("b")})},
              LiteralCase{"struct {(A=<empty>), (A=<empty>)}",
                          StructArray({1, 2}, {"A"}, {{Empty()}, {Empty()}})});
}

TEST(Parse, TakesRowsWithoutMarksWhereThereIsASize) {
  expect_read(
      LiteralCase{"int8 2x3 [1 3 5 2 4 6]", Matrix<std::int8_t>({2, 3}, {1, 2, 3, 4, 5, 6})},
      LiteralCase{"int8 3x1 [1; 2 3]", Column<std::int8_t>({1, 2, 3})});
}

TEST(Parse, TakesTheContentOfNumbersAndTextsInParentheses) {
  expect_read(LiteralCase{"double([1 2.5 NaN])", Row<double>({1, 2.5, kNaN})},
              LiteralCase{"double 3x1 ( [1 2.5 NaN] )", Column<double>({1, 2.5, kNaN})},
              LiteralCase{R"(char("abc"))", Char("abc")},
              LiteralCase{R"(string(["a" "b"]))", Strings({1, 2}, {u"a", u"b"})});
}

TEST(Parse, TakesWhiteSpaceBetweenBrackets) {
  const hxArrayPtr value = parse(R"(
    struct( ArrowType = "array" ,
            Data = double [ 1
                            2 ],
            Cell = cell { "a" ;
                          <empty> } )
  )");
  EXPECT_TRUE(SameHostValue(value.get(), Struct({{"ArrowType", Char("array")},
                                                 {"Data", Row<double>({1, 2})},
                                                 {"Cell", Cell({Char("a"), Empty()})}})
                                             .get()));
}

TEST(Parse, ReadsAWholeEnvelope) {
  const hxArrayPtr value = parse(R"(
    struct(ArrowType="array", Type="double",
           Valid=struct(ArrowType="buffer", Values=uint8 0x1 [], Length=double [3]),
           Data=double([1; 2.5; NaN]))
  )");
  EXPECT_TRUE(
      SameHostValue(value.get(), Struct({{"ArrowType", Char("array")},
                                         {"Type", Char("double")},
                                         {"Valid", Struct({{"ArrowType", Char("buffer")},
                                                           {"Values", Column<std::uint8_t>({})},
                                                           {"Length", Scalar(3.0)}})},
                                         {"Data", Column<double>({1, 2.5, kNaN})}})
                                     .get()));
}

TEST(Parse, NeedsAHostThatMakesObjectsAndCharMatrices) {
  const extras::LiteralMakers none{nullptr, nullptr};
  EXPECT_TRUE(SameHostValue(parse("\"row\"", none).get(), Char("row").get()));
  EXPECT_THROW(parse(R"(object "Point"(X=<empty>))", none), std::invalid_argument);
  EXPECT_THROW(parse(R"(char ["a" "b"])", none), std::invalid_argument);
}

TEST(Parse, GivesTheQuietNaNWithoutAPayload) {
  const hxArrayPtr value = parse("double [NaN]");
  EXPECT_TRUE(SameHostValue(value.get(), Scalar(kNaN).get()));
  const hxArrayPtr with_payload = Scalar(std::nan("12"));
  EXPECT_EQ(literal(with_payload.get()), "double 1x1 [NaN]");
}

}  // namespace
}  // namespace numera::testing
