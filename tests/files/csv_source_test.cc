// CSV files as tables: delimiters, nulls, types and long rows.

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/files/tables.h"

namespace numera::testing {
namespace {

class CsvSource : public ::testing::Test {
 protected:
  void expect(const std::string& text, const std::shared_ptr<::arrow::Table>& expected,
              const files::ReadOptions& options = {}) {
    write_text(file_, text);
    expect_table(file_, *expected, options);
  }

  void expect_invalid(const std::string& text, const std::string& reason) {
    write_text(file_, text);
    expect_refused(file_, "Invalid: " + reason);
  }

  TemporaryFolder folder_;
  std::string file_ = folder_.path("table.csv");
};

TEST_F(CsvSource, HasTheDelimiterThatSplitsItsHeading) {
  const auto expected = table_of({{"n", kInts, "[1, 2]"}, {"t", kTexts, R"(["a", "b"])"}});
  for (const char delimiter : {',', '\t', ';', '|'}) {
    SCOPED_TRACE(delimiter);
    std::string text = "n,t\n1,a\n2,b\n";
    std::ranges::replace(text, ',', delimiter);
    expect(text, expected);
  }
}

TEST_F(CsvSource, HasTheDelimiterThatSplitsItsHeadingMost) {
  expect("a,b;c;d\n1;2;3\n",
         table_of({{"a,b", kInts, "[1]"}, {"c", kInts, "[2]"}, {"d", kInts, "[3]"}}));
}

TEST_F(CsvSource, HasAnEarlierDelimiterIfTwoSplitItsHeadingAlike) {
  expect("a;b,c\n1,2\n", table_of({{"a;b", kInts, "[1]"}, {"c", kInts, "[2]"}}));
}

TEST_F(CsvSource, IgnoresDelimitersInQuotationMarks) {
  expect("\"a;b;c\",d\n1,2\n", table_of({{"a;b;c", kInts, "[1]"}, {"d", kInts, "[2]"}}));
}

TEST_F(CsvSource, HasTheDelimiterThatIsAskedFor) {
  expect("a,b,c:d\n1:2\n", table_of({{"a,b,c", kInts, "[1]"}, {"d", kInts, "[2]"}}),
         {.csv_delimiter = ':'});
}

TEST_F(CsvSource, IsRefusedWhereTabsSplitAllRowsButTheFirst) {
  expect_invalid("A title\n1\t2\t3\n4\t5\t6\n",
                 "its first line has one column, and the next lines have 3, separated by tabs");
}

TEST_F(CsvSource, HasATabInATextWhereRowsHaveNotOneNumberOfThem) {
  expect("t\na\tb\nc\n", table_of({{"t", kTexts, R"(["a\tb", "c"])"}}));
}

TEST_F(CsvSource, HasANullForAnEmptyFieldAndATextForAQuotedOne) {
  expect("n,t\n1,\n,\"\"\n3,x\n",
         table_of({{"n", kInts, "[1, null, 3]"}, {"t", kTexts, R"([null, "", "x"])"}}));
}

TEST_F(CsvSource, HasSpellingsOfNullAmongNumbersAndNotAmongTexts) {
  expect("n,t\n1,NA\nNA,null\nnull,x\n",
         table_of({{"n", kInts, "[1, null, null]"}, {"t", kTexts, R"(["NA", "null", "x"])"}}));
}

TEST_F(CsvSource, HasTheTypesOfArrow) {
  expect("i,d,b,day,at,t\n1,1.5,true,2024-02-29,2024-02-29 12:00:00,x\n",
         table_of({{"i", kInts, "[1]"},
                   {"d", ::arrow::float64(), "[1.5]"},
                   {"b", ::arrow::boolean(), "[true]"},
                   {"day", ::arrow::date32(), "[19782]"},
                   {"at", ::arrow::timestamp(::arrow::TimeUnit::SECOND), "[1709208000]"},
                   {"t", kTexts, R"(["x"])"}}));
}

TEST_F(CsvSource, MayHaveSeveralColumnsOfOneNameAndOfDifferentTypes) {
  std::string text = "a,a\n";
  while (text.size() < (std::size_t{1} << 21)) text += "1,x\n";
  write_text(file_, text);
  const auto table = read_table(file_).ValueOrDie();
  EXPECT_EQ(table->num_rows(), std::ssize(text) / 4 - 1);
  EXPECT_EQ(table->schema()->ToString(), "a: int64\na: string");
}

TEST_F(CsvSource, MayBeginWithAMarkOfTheByteOrder) {
  expect("\xEF\xBB\xBF\"a\nb\",c\n1,2\n", table_of({{"a\nb", kInts, "[1]"}, {"c", kInts, "[2]"}}));
}

TEST_F(CsvSource, IgnoresDelimitersInQuotationMarksBehindAMarkOfTheByteOrder) {
  expect("\xEF\xBB\xBF\"a;b;c\",d\n1,2\n",
         table_of({{"a;b;c", kInts, "[1]"}, {"d", kInts, "[2]"}}));
}

TEST_F(CsvSource, IsRefusedForALineBreakAsDelimiter) {
  write_text(file_, "a\n1\n");
  expect_refused(file_, "Invalid: ParseOptions: delimiter cannot be \\r or \\n",
                 {.csv_delimiter = '\n'});
}

TEST_F(CsvSource, GivesTheBatchesBeforeARowThatIsRefused) {
  std::string text = "a,b\n";
  while (text.size() < (std::size_t{1} << 20)) text += "1,2\n";
  write_text(file_, text + "1,2\n3\n");
  const auto source = files::open_source(file_, {.batch_rows = 1 << 20}).ValueOrDie();
  EXPECT_EQ(source->Next().ValueOrDie()->num_rows(), (1 << 18) - 1);
  EXPECT_EQ(source->Next().status().ToString(),
            "Invalid: CSV parse error: Row #262146: Expected 2 columns, got 1: 3");
}

TEST_F(CsvSource, MayEndItsLinesInAnyWay) {
  const auto expected = table_of({{"n", kInts, "[1, 2]"}, {"t", kTexts, R"(["a", "b"])"}});
  for (const char* text : {"n,t\n1,a\n2,b\n", "n,t\r\n1,a\r\n2,b\r\n", "n,t\r1,a\r2,b\r",
                           "n,t\n1,a\n2,b", "\n\nn,t\n\n1,a\n\n2,b\n\n"}) {
    SCOPED_TRACE(text);
    expect(text, expected);
  }
}

TEST_F(CsvSource, OfOneColumnHasARowForAnEmptyLine) {
  expect("\n\nn\n1\n\n3\n", table_of({{"n", kInts, "[1, null, 3]"}}));
}

TEST_F(CsvSource, OfOneColumnCountsALineBreakOfTwoCharactersOnceWhereABlockEnds) {
  std::string text = "t\r\n";
  const std::size_t block = std::size_t{1} << 20;
  text += std::string(block - text.size() - 1, 'x');  // "\r" is the last byte of the first block
  text += "\r\ny\r\n";
  write_text(file_, text);
  const auto table = read_table(file_).ValueOrDie();
  EXPECT_EQ(table->num_rows(), 2);
  EXPECT_EQ(table->column(0)->null_count(), 0);
}

TEST_F(CsvSource, WithoutRowsHasColumnsOfNulls) {
  for (const char* text : {"n,t\n", "n,t\r\n", "n,t\r"}) {
    SCOPED_TRACE(text);
    expect(text, table_of({{"n", ::arrow::null(), "[]"}, {"t", ::arrow::null(), "[]"}}));
  }
}

TEST_F(CsvSource, IsRefusedWithAReason) {
  struct Case {
    const char* text;
    const char* reason;
  };
  const Case cases[] = {
      {"\n\n", "read as CSV, it has no heading: no line with text ends with a line break"},
      {"a,b", "read as CSV, it has no heading: no line with text ends with a line break"},
      {"a,b\n1,2\n3\n", "CSV parse error: Row #3: Expected 2 columns, got 1: 3"},
      {"a,b\n1,2,3\n", "CSV parse error: Row #2: Expected 2 columns, got 3: 1,2,3"},
  };
  for (const Case& bad : cases) {
    SCOPED_TRACE(bad.text);
    expect_invalid(bad.text, bad.reason);
  }
}

TEST_F(CsvSource, IsRefusedWhereAQuotationMarkIsNotClosed) {
  expect_invalid("a,b\n1,2\n3,\"4\n5,6\n", "a quotation mark after row 2 is not closed");
}

TEST_F(CsvSource, NamesTheRowOfAValueOfAnotherType) {
  std::string text = "a,b\n";
  while (text.size() < (std::size_t{1} << 21)) text += "1,2\n";
  const std::size_t row = text.size() / 4 + 1;
  expect_invalid(text + "x,2\n", "In CSV column #0: Row #" + std::to_string(row) +
                                     ": CSV conversion error to int64: invalid value 'x'");
}

}  // namespace
}  // namespace numera::testing
