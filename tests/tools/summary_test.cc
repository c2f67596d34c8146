// The command summary: what the values of each column are like.

#include <arrow/array/util.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/tools/summary.h"

namespace numera::testing {
namespace {

/// The integers from 1 to `count` as JSON.
std::string json_to(int count) {
  std::string json = "[1";
  for (int i = 2; i <= count; ++i) json += "," + std::to_string(i);
  return json + "]";
}

TEST_F(Summary, HasALineForEachFigureOfTheNumbers) {
  EXPECT_EQ(of(::arrow::int16(), "[3, 1, null, 4, 1, 5, 9, 2, 6, 5, 3]"),
            "                      c\n"
            "                  int16\n"
            "nulls                 1\n"
            "distinct              7\n"
            "min                   1\n"
            "5 %                   1\n"
            "25 %                  2\n"
            "50 %                  3\n"
            "75 %                  5\n"
            "95 %                  9\n"
            "max                   9\n"
            "mean                3.9\n"
            "histogram  █▅▁█▅▁█▅▁▁▁▅\n"
            "\n"
            "11 rows\n");
}

TEST_F(Summary, HasTheLinesThatAnyColumnOfTheTableHas) {
  write_ipc(file_, *table_of({{"n", ::arrow::int8(), "[7, null]"},
                              {"b", ::arrow::boolean(), "[true, null]"},
                              {"t", ::arrow::utf8(), R"(["äöü", "a"])"}}));
  EXPECT_EQ(printed("summary", file_),
            "                      n  b     t\n"
            "                   int8  bool  string\n"
            "nulls                 1  1     0\n"
            "distinct              1  1     2\n"
            "false                    0\n"
            "true                     1\n"
            "min                   7        a\n"
            "5 %                   7\n"
            "25 %                  7\n"
            "50 %                  7\n"
            "75 %                  7\n"
            "95 %                  7\n"
            "max                   7        äöü\n"
            "mean                  7\n"
            "shortest                       1\n"
            "longest                        3\n"
            "histogram  █▁▁▁▁▁▁▁▁▁▁▁\n"
            "\n"
            "2 rows\n");
}

TEST_F(Summary, IsTheSameHoweverTheRowsAreDivided) {
  const auto table = table_of({{"n", ::arrow::int16(), json_to(1000)}});
  write_parquet(file_, *table, 1000);
  const std::string whole = printed("summary", file_);
  write_parquet(file_, *table, 7);
  EXPECT_EQ(printed("summary", file_), whole);
}

TEST_F(Summary, HasTheColumnsAskedFor) {
  write_text(file_, "a,b,c\n1,2,3\n");
  EXPECT_THAT(printed("summary", file_, {"--columns", "c,a"}),
              ::testing::StartsWith("                      c             a\n"));
}

TEST_F(Summary, OfNullsAloneHasNoBounds) {
  EXPECT_EQ(of(::arrow::float64(), "[null, null]"),
            "                c\n"
            "           double\n"
            "nulls           2\n"
            "distinct        0\n"
            "\n"
            "2 rows\n");
}

TEST_F(Summary, OfAFileWithoutRowsHasItsColumns) {
  write_ipc(file_, *table_of({{"n", ::arrow::int8(), "[]"}, {"t", ::arrow::utf8(), "[]"}}));
  EXPECT_EQ(printed("summary", file_),
            "              n  t\n"
            "           int8  string\n"
            "nulls         0  0\n"
            "distinct      0  0\n"
            "\n"
            "0 rows\n");
}

TEST_F(Summary, OfAFileWithoutColumnsCountsItsRows) {
  write_ipc(file_, *::arrow::Table::Make(::arrow::schema({}), ::arrow::ArrayVector{}, 0));
  EXPECT_EQ(printed("summary", file_), "0 rows\n");
}

TEST_F(Summary, CountsDistinctValuesToTenThousand) {
  EXPECT_EQ(line_that_starts(of(::arrow::int32(), json_to(10000)), "distinct"),
            "distinct         10,000");
  EXPECT_EQ(line_that_starts(of(::arrow::int32(), json_to(10001)), "distinct"),
            "distinct   more than 10,000");
}

TEST_F(Summary, CountsDistinctValuesToAMillionBytes) {
  const std::string first(600000, 'x');
  const std::string second(600000, 'y');
  EXPECT_EQ(
      line_that_starts(of(::arrow::utf8(), "[\"" + first + "\", \"" + second + "\"]"), "distinct"),
      "distinct   more than 1");
}

TEST_F(Summary, HasExactQuantilesOfAHundredThousandValues) {
  const std::string printed = of(::arrow::int32(), json_to(100000));
  EXPECT_EQ(line_that_starts(printed, "5 %"), "5 %                    5000");
  EXPECT_EQ(line_that_starts(printed, "50 %"), "50 %                  50000");
  EXPECT_EQ(line_that_starts(printed, "95 %"), "95 %                  95000");
}

TEST_F(Summary, MarksQuantilesOfMoreValues) {
  const auto sevens = ::arrow::MakeArrayFromScalar(::arrow::Int8Scalar(7), 100001).ValueOrDie();
  const std::string printed = of(sevens);
  EXPECT_EQ(line_that_starts(printed, "5 %"), "5 %                  ~7");
  EXPECT_EQ(line_that_starts(printed, "50 %"), "50 %                 ~7");
  EXPECT_EQ(line_that_starts(printed, "max"), "max                   7");
  EXPECT_EQ(line_that_starts(printed, "mean"), "mean                  7");
}

TEST_F(Summary, GoesOnInFurtherTablesWhereTheWidthIsUsedUp) {
  write_text(file_, "first,second,third\n1,2,3\n");
  ASSERT_EQ(::setenv("COLUMNS", "40", 1), 0);
  const std::string printed_narrow = printed("summary", file_);
  ::unsetenv("COLUMNS");
  EXPECT_THAT(printed_narrow, ::testing::StartsWith("                  first        second\n"));
  EXPECT_THAT(printed_narrow, ::testing::HasSubstr("\n\n                  third\n"));
}

TEST_F(Summary, NamesTheColumnThatLeadsOutOfItsBuffers) {
  const auto codes = std::make_shared<::arrow::DictionaryArray>(
      ::arrow::dictionary(::arrow::int8(), ::arrow::utf8()), ArrowArray(::arrow::int8(), "[0, 7]"),
      ArrowArray(::arrow::utf8(), R"(["a"])"));
  write_ipc(file_, *::arrow::Table::Make(::arrow::schema({::arrow::field("bad", codes->type())}),
                                         {codes}));
  const Outcome run = run_program({"summary", file_});
  EXPECT_EQ(run.exit_status, 1);
  EXPECT_EQ(run.out, "");
  EXPECT_THAT(run.errors, ::testing::StartsWith("numera-arrow: " + file_ + ": bad: "));
}

}  // namespace
}  // namespace numera::testing
