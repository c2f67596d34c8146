// The commands head, tail and show: rows as people read them.

#include <arrow/array/array_dict.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "tests/tools/program.h"

namespace numera::testing {
namespace {

class Show : public ::testing::Test {
 protected:
  void SetUp() override { ::unsetenv("COLUMNS"); }  // some shells export their width

  TemporaryFolder folder_;
  std::string file_ = folder_.path("a_file");
};

std::shared_ptr<::arrow::Table> five_rows() {
  return table_of({{"n", ::arrow::int16(), "[1, 2, null, 4, 5]"},
                   {"t", ::arrow::utf8(), R"(["a", null, "null", "d", "e"])"}});
}

/// Categories of one text.
std::shared_ptr<::arrow::Array> categories(const std::string& codes) {
  const auto table =
      table_of({{"codes", ::arrow::int8(), codes}, {"texts", ::arrow::utf8(), R"(["a", "a"])"}});
  return std::make_shared<::arrow::DictionaryArray>(
      ::arrow::dictionary(::arrow::int8(), ::arrow::utf8()), table->column(0)->chunk(0),
      table->column(1)->chunk(0));
}

/// A CSV file of the numbers from 1 to `count`.
std::string csv_to(int count) {
  std::string text = "n\n";
  for (int i = 1; i <= count; ++i) text += std::to_string(i) + "\n";
  return text;
}

TEST_F(Show, PrintsTheFirstRowsAndHowManyThereAre) {
  write_parquet(file_, *five_rows(), 2);
  const std::string head =
      "    n  t\n"
      "int16  string\n"
      "    1  a\n"
      "    2  null\n"
      " null  \"null\"\n";
  EXPECT_EQ(printed("head", file_, {"--rows", "3"}), head);
  EXPECT_EQ(printed("show", file_, {"-n", "3"}), head + "\n3 of 5 rows\n");
  EXPECT_THAT(printed("show", file_), ::testing::EndsWith("\n    5  e\n\n5 rows\n"));
}

TEST_F(Show, PrintsTheLastRows) {
  const auto table = five_rows();
  const std::string tail =
      "    n  t\n"
      "int16  string\n"
      " null  \"null\"\n"
      "    4  d\n"
      "    5  e\n";
  for (const std::int64_t row_group : {1, 2, 3, 5}) {
    SCOPED_TRACE(row_group);
    write_parquet(file_, *table, row_group);
    EXPECT_EQ(printed("tail", file_, {"-n", "3"}), tail);
  }
  EXPECT_EQ(printed("tail", file_, {"-n", "0"}), "    n  t\nint16  string\n");
  EXPECT_EQ(printed("tail", file_, {"-n", "9"}), printed("head", file_));
}

TEST_F(Show, PrintsTenRowsWhereNoneAreAskedFor) {
  write_text(file_, csv_to(12));
  const std::string heading = "    n\nint64\n";
  EXPECT_EQ(printed("head", file_),
            heading +
                "    1\n    2\n    3\n    4\n    5\n    6\n    7\n    8\n    9\n"
                "   10\n");
  EXPECT_EQ(printed("tail", file_),
            heading +
                "    3\n    4\n    5\n    6\n    7\n    8\n    9\n   10\n   11\n"
                "   12\n");
}

TEST_F(Show, CountsRowsWhereTheFileStatesThemOrIsReadToItsEnd) {
  write_text(file_, csv_to(12));
  EXPECT_THAT(printed("show", file_), ::testing::EndsWith("\n   10\n"));
  EXPECT_THAT(printed("show", file_, {"-n", "20"}), ::testing::EndsWith("\n   12\n\n12 rows\n"));
  write_text(file_, csv_to(1));
  EXPECT_EQ(printed("show", file_), "    n\nint64\n    1\n\n1 row\n");
  write_text(file_, "n\n");
  EXPECT_EQ(printed("show", file_), "n\nnull\n\n0 rows\n");
}

TEST_F(Show, PrintsTheLastOfManyRows) {
  write_text(file_, csv_to(200000));  // more than one block
  EXPECT_EQ(printed("tail", file_, {"-n", "2"}), "     n\n int64\n199999\n200000\n");
}

TEST_F(Show, PrintsABlockPerRowOnRequest) {
  write_parquet(file_, *five_rows());
  EXPECT_EQ(printed("head", file_, {"--vertical", "-n", "2"}), "n: 1\nt: a\n\nn: 2\nt: null\n");
  EXPECT_EQ(printed("tail", file_, {"--vertical", "-n", "1"}), "n: 5\nt: e\n");
}

TEST_F(Show, PrintsTheColumnsAskedFor) {
  write_parquet(file_, *five_rows());
  for (const char* command : {"head", "show", "tail"}) {
    EXPECT_THAT(printed(command, file_, {"--columns", "t,n"}),
                ::testing::StartsWith("t           n\n"));
  }
}

TEST_F(Show, PrintsTypesThatHaveNoHostForm) {
  write_ipc(file_, *table_of({{"h", ::arrow::float16(), "[1.5]"},
                              {"v", ::arrow::utf8_view(), R"(["x"])"}}));
  EXPECT_EQ(printed("head", file_), "        h  v\nhalffloat  string_view\n      1.5  x\n");
}

TEST_F(Show, FitsTheWidthThatColumnsStates) {
  write_text(file_, "first,second,third\n1,2,3\n");
  const std::string all = printed("head", file_);
  ASSERT_EQ(::setenv("COLUMNS", "12", 1), 0);
  EXPECT_EQ(printed("head", file_),
            "first\nint64\n    1\n2 more columns: second, …; --columns or --vertical show them\n");
  for (const char* none : {"0", "", "-5", "ten", "12x"}) {
    ASSERT_EQ(::setenv("COLUMNS", none, 1), 0);
    EXPECT_EQ(printed("head", file_), all) << none;
  }
  ::unsetenv("COLUMNS");
}

TEST_F(Show, PrintsTextsThatAreNotUtf8) {
  write_ipc(file_, *table_of({{"t", ::arrow::utf8(), R"(["gruxxe"])"}}));
  overwrite(file_, "gruxxe", "gr\xF6\xDF\x65!");
  EXPECT_EQ(printed("head", file_), "t\nstring\ngr??e!\n");
}

TEST_F(Show, NamesTheColumnThatCannotBeShown) {
  const auto codes = categories("[0, 7]");
  write_ipc(file_, *::arrow::Table::Make(::arrow::schema({::arrow::field("bad", codes->type())}),
                                         {codes}));
  const Outcome run = run_program({"show", file_});
  EXPECT_EQ(run.exit_status, 1);
  EXPECT_EQ(run.out, "");
  EXPECT_THAT(run.errors, ::testing::StartsWith("numera-arrow: " + file_ + ": bad: "));
}

TEST_F(Show, CutsATableOfWideRowsToATerminal) {
  write_text(file_, "first,second,third\n1,,null\n");
  EXPECT_EQ(run_on_terminal({"head", file_}, 15),
            "\x1b[1mfirst\x1b[0m  \x1b[1msecond\x1b[0m\r\n"
            "\x1b[2mint64\x1b[0m  \x1b[2mnull\x1b[0m\r\n"
            "    1  \x1b[2mnull\x1b[0m\r\n"
            "1 more column: third; --columns or --vertical show it\r\n");
}

}  // namespace
}  // namespace numera::testing
