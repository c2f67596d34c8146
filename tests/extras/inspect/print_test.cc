#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "numera/extras/inspect/inspect.h"
#include "tests/support/envelopes.h"
#include "tests/support/host_builder.h"

namespace numera::testing {
namespace {

using extras::print;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

struct PrintCase {
  const char* expected;
  hxArrayPtr value;
};

// Takes a list of cases. A vector cannot take them from braces, because values cannot be copied.
template <class... Cases>
void expect_printed(Cases... cases) {
  const auto expect = [](const PrintCase& one) { EXPECT_EQ(print(one.value.get()), one.expected); };
  (expect(cases), ...);
}

TEST(Print, NamesTheClassOfEveryNumber) {
  expect_printed(PrintCase{"double 1x1 [5]", Scalar(5.0)},  //
                 PrintCase{"single 1x1 [5]", Scalar(5.0f)},
                 PrintCase{"int8 1x1 [-128]", Scalar<std::int8_t>(-128)},
                 PrintCase{"uint8 1x1 [255]", Scalar<std::uint8_t>(255)},
                 PrintCase{"int16 1x1 [-32768]", Scalar<std::int16_t>(-32768)},
                 PrintCase{"uint16 1x1 [65535]", Scalar<std::uint16_t>(65535)},
                 PrintCase{"int32 1x1 [-7]", Scalar<std::int32_t>(-7)},
                 PrintCase{"uint32 1x1 [4294967295]", Scalar<std::uint32_t>(4294967295)},
                 PrintCase{"int64 1x1 [-9223372036854775808]",
                           Scalar(std::numeric_limits<std::int64_t>::min())},
                 PrintCase{"uint64 1x1 [18446744073709551615]",
                           Scalar(std::numeric_limits<std::uint64_t>::max())},
                 PrintCase{"logical 2x1 [true false]", Logical({true, false})});
}

TEST(Print, ShowsTheShortestNumberThatReadsBack) {
  expect_printed(PrintCase{"double 4x1 [0.1 0.30000000000000004 -2.5 1e-05]",
                           Column<double>({0.1, 0.1 + 0.2, -2.5, 0.00001})},
                 PrintCase{"single 3x1 [0.1 16777216 3.4028235e+38]",
                           Column<float>({0.1f, 16777216.0f, std::numeric_limits<float>::max()})},
                 PrintCase{"double 3x1 [5e-324 1.7976931348623157e+308 1e+20]",
                           Column<double>({5e-324, std::numeric_limits<double>::max(), 1e20})});
}

TEST(Print, KeepsTheDigitsOfWholeNumbers) {
  expect_printed(PrintCase{"double 3x1 [100000 999999999999999 1e+15]",
                           Column<double>({100000, 999999999999999, 1e15})},
                 PrintCase{"single 2x1 [1000000 1e+07]", Column<float>({1e6f, 1e7f})});
}

TEST(Print, ShowsNumbersThatAreNone) {
  expect_printed(PrintCase{"double 5x1 [NaN Inf -Inf -0 0]",
                           Column<double>({kNaN, kInfinity, -kInfinity, -0.0, 0.0})},
                 PrintCase{"single 2x1 [NaN -0]", Column<float>({std::nanf(""), -0.0f})});
}

TEST(Print, ShowsBothPartsOfComplexNumbers) {
  expect_printed(
      PrintCase{"complex double 4x1 [1+2i 1.5-2i 0-0i NaN+Infi]",
                Complex<double>({4, 1}, {{1, 2}, {1.5, -2}, {0, -0.0}, {kNaN, kInfinity}})},
      PrintCase{"complex single 1x1 [1+2i]", Complex<float>({1, 1}, {{1, 2}})},
      PrintCase{"complex int8 1x2 [1-2i 3+4i]", Complex<std::int8_t>({1, 2}, {{1, -2}, {3, 4}})},
      PrintCase{"complex double 0x1 []", Complex<double>({0, 1}, {})});
}

TEST(Print, ListsRowsOneAfterAnother) {
  expect_printed(
      PrintCase{"double 2x3 [1 3 5; 2 4 6]", Matrix<double>({2, 3}, {1, 2, 3, 4, 5, 6})},
      PrintCase{"double 1x3 [1 2 3]", Row<double>({1, 2, 3})},
      PrintCase{"logical 2x2 [true false; true true]", Logical({2, 2}, {true, true, false, true})});
}

TEST(Print, ListsPagesOneAfterAnother) {
  const hxArrayPtr value = Matrix<double>({2, 2, 2}, {1, 2, 3, 4, 5, 6, 7, 8});
  EXPECT_EQ(print(value.get()), "double 2x2x2 [1 3; 2 4; 5 7; 6 8]");
}

TEST(Print, ShowsTheSizeOfEmptyValues) {
  expect_printed(
      PrintCase{"double 0x0 []", Matrix<double>({0, 0}, {})},
      PrintCase{"uint8 0x1 []", Column<std::uint8_t>({})},
      PrintCase{"logical 3x0x2 []", Logical({3, 0, 2}, {})},
      PrintCase{"string 0x1 []", Strings({})}, PrintCase{"char 0x0 \"\"", CharMatrix({0, 0}, u"")},
      PrintCase{"char 1x0 \"\"", Char("")}, PrintCase{"char 2x0 \"\"", CharMatrix({2, 0}, u"")},
      PrintCase{"cell 0x1", Cell({})},  //
      PrintCase{"struct 1x1", Struct({})});
}

TEST(Print, QuotesAndEscapesTexts) {
  expect_printed(PrintCase{R"(char 1x5 "hello")", Char("hello")},
                 PrintCase{R"(char 1x4 "a\"b\\")", Char(u"a\"b\\")},
                 PrintCase{R"(char 1x4 "\n\t\u000D\u0000")", Char(std::u16string(u"\n\t\r\0", 4))},
                 PrintCase{R"(char 1x3 "\u001B\u007F\u009F")", Char(u"\x1B\x7F\x9F")},
                 PrintCase{"char 1x5 \"é€😀\xC2\xA0\"", Char(u"é€😀\u00A0")},
                 PrintCase{"char 1x4 \"\\uD83Dx\\uDE00\\uD83D\"", Char(u"\xD83Dx\xDE00\xD83D")});
}

TEST(Print, ListsTheRowsOfCharMatrices) {
  expect_printed(
      PrintCase{R"(char 2x3 ["abc" "d\"f"])", CharMatrix({2, 3}, u"adb\"cf")},
      PrintCase{R"(char 3x1 ["a" "b" "c"])", CharMatrix({3, 1}, u"abc")},
      PrintCase{R"(char 2x2x2 ["ac" "bd" "eg" "fh"])", CharMatrix({2, 2, 2}, u"abcdefgh")});
}

TEST(Print, TellsMissingTextsFromEmptyOnes) {
  expect_printed(PrintCase{R"(string 4x1 ["a" <missing> "" "<missing>"])",
                           Strings({u"a", std::nullopt, u"", u"<missing>"})},
                 PrintCase{R"(string 2x2 ["a" <missing>; "b" "ü"])",
                           Strings({2, 2}, {u"a", u"b", std::nullopt, u"ü"})});
}

TEST(Print, ShowsNull) { EXPECT_EQ(print(nullptr), "<null>"); }

TEST(Print, IndentsTheFieldsOfAStruct) {
  const hxArrayPtr value = WrittenNumbers<double>({1, 2.5, kNaN});
  EXPECT_EQ(print(value.get()),
            "struct 1x1\n"
            "  ArrowType: char 1x5 \"array\"\n"
            "  Type: char 1x6 \"double\"\n"
            "  Valid: struct 1x1\n"
            "    ArrowType: char 1x6 \"buffer\"\n"
            "    Values: uint8 0x1 []\n"
            "    Length: double 1x1 [3]\n"
            "  Data: double 3x1 [1 2.5 NaN]");
}

TEST(Print, ShowsAStructArrayElementByElement) {
  const hxArrayPtr value =
      StructArray({2, 1}, {"Name", "Age"}, {{Char("Ada"), Scalar(36.0)}, {Char("Jo"), Empty()}});
  EXPECT_EQ(print(value.get()),
            "struct 2x1\n"
            "  (0):\n"
            "    Name: char 1x3 \"Ada\"\n"
            "    Age: double 1x1 [36]\n"
            "  (1):\n"
            "    Name: char 1x2 \"Jo\"\n"
            "    Age: <empty>");
}

TEST(Print, IndexesElementsOfAMatrixByRowAndColumn) {
  const hxArrayPtr cells = Cell({2, 2}, {Scalar(1.0), Scalar(2.0), Scalar(3.0), Empty()});
  EXPECT_EQ(print(cells.get()),
            "cell 2x2\n"
            "  {0,0}: double 1x1 [1]\n"
            "  {1,0}: double 1x1 [2]\n"
            "  {0,1}: double 1x1 [3]\n"
            "  {1,1}: <empty>");
  const hxArrayPtr structs = StructArray({1, 1, 2}, {"A"}, {{Scalar(1.0)}, {Scalar(2.0)}});
  EXPECT_EQ(print(structs.get()),
            "struct 1x1x2\n"
            "  (0,0,0):\n"
            "    A: double 1x1 [1]\n"
            "  (0,0,1):\n"
            "    A: double 1x1 [2]");
}

TEST(Print, ListsTheFieldNamesOfAStructWithoutElements) {
  const hxArrayPtr value = StructArray({0, 1}, {"Name", "Age"}, {});
  EXPECT_EQ(print(value.get()),
            "struct 0x1\n"
            "  Name:\n"
            "  Age:");
}

TEST(Print, ShowsElementsWithoutFields) {
  const hxArrayPtr value = StructArray({2, 1}, {}, {{}, {}});
  EXPECT_EQ(print(value.get()),
            "struct 2x1\n"
            "  (0):\n"
            "  (1):");
}

TEST(Print, QuotesFieldNamesThatAreNoIdentifiers) {
  const hxArrayPtr value = Struct({{"_ok1", Empty()},
                                   {"1st", Empty()},
                                   {"", Empty()},
                                   {"two words", Empty()},
                                   {"line\nend", Empty()},
                                   {"größe", Empty()},
                                   {"\"\xFF\"", Empty()}});
  EXPECT_EQ(print(value.get()),
            "struct 1x1\n"
            "  _ok1: <empty>\n"
            "  \"1st\": <empty>\n"
            "  \"\": <empty>\n"
            "  \"two words\": <empty>\n"
            "  \"line\\nend\": <empty>\n"
            "  \"größe\": <empty>\n"
            "  \"\\\"\\xFF\\\"\": <empty>");
}

TEST(Print, ShowsNestedValuesAsATree) {
  const hxArrayPtr value = Struct(
      {{"ArrowType", Char("array")},
       {"Type", Char("string")},
       {"Valid", Empty()},
       {"Data", Strings({u"a", std::nullopt, u"b"})},
       {"Columns", StructArray({2, 1}, {"Values"},
                               {{Matrix<double>({2, 3}, {1, -0.0, 2.5, 1e20, kNaN, kInfinity})},
                                {Column<std::int8_t>(std::vector<std::int8_t>(100))}})},
       {"Cell", Cell({1, 2}, {Logical({1, 2}, {true, false}), Complex<float>({1, 1}, {{1, 2}})})}});
  EXPECT_EQ(print(value.get()),
            "struct 1x1\n"
            "  ArrowType: char 1x5 \"array\"\n"
            "  Type: char 1x6 \"string\"\n"
            "  Valid: <empty>\n"
            "  Data: string 3x1 [\"a\" <missing> \"b\"]\n"
            "  Columns: struct 2x1\n"
            "    (0):\n"
            "      Values: double 2x3 [1 2.5 NaN; -0 1e+20 Inf]\n"
            "    (1):\n"
            "      Values: int8 100x1 [0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 ... 80 more]\n"
            "  Cell: cell 1x2\n"
            "    {0}: logical 1x2 [true false]\n"
            "    {1}: complex single 1x1 [1+2i]");
}

TEST(Print, NamesTheClassOfAnObject) {
  const hxArrayPtr value = ObjectArray("Point", {1, 1}, {"X"}, {{Scalar(1.0)}});
  EXPECT_EQ(print(value.get()),
            "object \"Point\" 1x1\n"
            "  X: double 1x1 [1]");
}

TEST(Print, TellsAnObjectCalledStringFromAStringArray) {
  const hxArrayPtr value = ObjectArray("string", {1, 1}, {}, {{}});
  EXPECT_EQ(print(value.get()), "object \"string\" 1x1");
}

TEST(Print, ListsNoElementsOfASparseArray) {
  const hxArrayPtr value = host::memory::CreateSparseArray(Dims{3, 3}, hxClassID::Double);
  EXPECT_EQ(print(value.get()), "sparse double 3x3");
}

TEST(Print, ShowsASharedCopyLikeItsOriginal) {
  const hxArrayPtr original = Struct({{"Data", Column<double>({1, 2})}});
  const hxArrayPtr copy = hxSharedCopy(original.get());
  EXPECT_EQ(print(copy.get()),
            "struct 1x1\n"
            "  Data: double 2x1 [1 2]");
}

}  // namespace
}  // namespace numera::testing
