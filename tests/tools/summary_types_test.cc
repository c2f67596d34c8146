// Summaries of types that are no numbers.

#include <arrow/api.h>
#include <arrow/extension/uuid.h>
#include <gtest/gtest.h>

#include "tests/tools/summary.h"

namespace numera::testing {
namespace {

class SummaryOfTypes : public Summary {};

TEST_F(SummaryOfTypes, OfTruthValuesCountsThem) {
  EXPECT_EQ(of(::arrow::boolean(), "[true, false, null, true]"),
            "           c\n"
            "           bool\n"
            "nulls      1\n"
            "distinct   2\n"
            "false      1\n"
            "true       2\n"
            "\n"
            "4 rows\n");
}

TEST_F(SummaryOfTypes, OfTextsCountsCharacters) {
  EXPECT_EQ(of(::arrow::utf8(), R"(["null", "", "日本", null])"),
            "           c\n"
            "           string\n"
            "nulls      1\n"
            "distinct   3\n"
            "min        \"\"\n"
            "max        日本\n"
            "shortest   0\n"
            "longest    4\n"
            "\n"
            "4 rows\n");
}

TEST_F(SummaryOfTypes, CutsLongTexts) {
  EXPECT_EQ(
      line_that_starts(of(::arrow::utf8_view(), "[\"" + std::string(5000, 'x') + "\"]"), "min"),
      "min        " + std::string(39, 'x') + "…");
}

TEST_F(SummaryOfTypes, NeverCommandsATerminal) {
  EXPECT_EQ(line_that_starts(of(::arrow::utf8(), R"(["a\u001b[31m"])"), "min"),
            "min        a?[31m");
}

TEST_F(SummaryOfTypes, OfBytesCountsBytes) {
  EXPECT_EQ(of(::arrow::binary(), R"(["ä", "", null])"),
            "           c\n"
            "           binary\n"
            "nulls      1\n"
            "distinct   2\n"
            "min        0x\n"
            "max        0xc3a4\n"
            "shortest   0\n"
            "longest    2\n"
            "\n"
            "3 rows\n");
}

TEST_F(SummaryOfTypes, OfDictionariesIsOneOfTheirValues) {
  const auto codes =
      ::arrow::DictionaryArray::FromArrays(ArrowArray(::arrow::int8(), "[2, 0, 1, null, 0]"),
                                           ArrowArray(::arrow::int8(), "[5, null, 6]"));
  EXPECT_EQ(of(codes.ValueOrDie()),
            "                          c\n"
            "           dictionary<int8>\n"
            "nulls                     2\n"
            "distinct                  2\n"
            "min                       5\n"
            "5 %                       5\n"
            "25 %                      5\n"
            "50 %                      5\n"
            "75 %                      6\n"
            "95 %                      6\n"
            "max                       6\n"
            "mean                5.33333\n"
            "histogram      █▁▁▁▁▁▁▁▁▁▁▅\n"
            "\n"
            "5 rows\n");
}

TEST_F(SummaryOfTypes, OfRunsIsOneOfTheirValues) {
  const auto runs =
      ::arrow::RunEndEncodedArray::Make(5, ArrowArray(::arrow::int32(), "[1, 3, 5]"),
                                        ArrowArray(::arrow::utf8(), R"(["a", null, "bc"])"));
  const std::string printed = of(*runs);
  EXPECT_EQ(line_that_starts(printed, "nulls"), "nulls      2");
  EXPECT_EQ(line_that_starts(printed, "distinct"), "distinct   2");
  EXPECT_EQ(line_that_starts(printed, "max"), "max        bc");
}

TEST_F(SummaryOfTypes, OfExtensionTypesIsOneOfTheirStorage) {
  const auto storage = ArrowArray(::arrow::fixed_size_binary(16), R"(["0123456789abcdef", null])");
  const std::string printed =
      of(::arrow::ExtensionType::WrapArray(::arrow::extension::uuid(), storage));
  EXPECT_EQ(line_that_starts(printed, "nulls"), "nulls      1");
  EXPECT_EQ(line_that_starts(printed, "min"), "min        0x30313233343536373839616263646566");
}

TEST_F(SummaryOfTypes, OfListsCountsTheirElements) {
  const auto item = ::arrow::int8();
  for (const auto& type : {::arrow::list(item), ::arrow::large_list(item), ::arrow::list_view(item),
                           ::arrow::large_list_view(item)}) {
    const std::string printed = of(type, "[[1], [1, 2, null], null, []]");
    EXPECT_EQ(line_that_starts(printed, "nulls"), "nulls      1");
    EXPECT_EQ(line_that_starts(printed, "shortest"), "shortest   0");
    EXPECT_EQ(line_that_starts(printed, "longest"), "longest    3");
  }
}

TEST_F(SummaryOfTypes, OfMapsCountsTheirEntries) {
  EXPECT_EQ(of(::arrow::map(::arrow::utf8(), ::arrow::int8()), R"([[["k", 1]], [], null])"),
            "           c\n"
            "           map<string, int8>\n"
            "nulls      1\n"
            "shortest   0\n"
            "longest    1\n"
            "\n"
            "3 rows\n");
}

TEST_F(SummaryOfTypes, OfOtherTypesCountsNulls) {
  EXPECT_EQ(of(::arrow::struct_({::arrow::field("x", ::arrow::int8())}), R"([{"x": 1}, null])"),
            "           c\n"
            "           struct<x: int8>\n"
            "nulls      1\n"
            "\n"
            "2 rows\n");
  EXPECT_EQ(of(::arrow::null(), "[null, null]"),
            "           c\n           null\nnulls      2\n\n2 rows\n");
}

}  // namespace
}  // namespace numera::testing
