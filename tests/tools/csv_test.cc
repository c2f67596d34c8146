// CSV rows that are longer than the blocks in which the program reads a file.

#include <arrow/scalar.h>
#include <gtest/gtest.h>

#include "tests/tools/damage.h"
#include "tests/tools/program.h"

namespace numera::testing {
namespace {

constexpr std::size_t kBlock = std::size_t{1} << 20;

class LongRows : public ::testing::Test {
 protected:
  /// Reads the file back. Column n counts the rows from 1; column t holds texts.
  std::shared_ptr<::arrow::Table> read(const std::string& text) {
    write_text(file_, text);
    converted(file_, {"--output", output_, "--batch-rows", "100000"});
    return read_ipc(output_);
  }

  static void expect_counted(const ::arrow::Table& table, std::int64_t rows) {
    std::string json = "[1";
    for (std::int64_t i = 2; i <= rows; ++i) json += "," + std::to_string(i);
    const auto expected = table_of({{"n", ::arrow::int64(), json + "]"}});
    EXPECT_TRUE(table.SelectColumns({0}).ValueOrDie()->Equals(*expected));
  }

  static std::string text_in(const ::arrow::Table& table, std::int64_t row) {
    return table.column(1)->GetScalar(row).ValueOrDie()->ToString();
  }

  TemporaryFolder folder_;
  std::string file_ = folder_.path("long.csv");
  std::string output_ = folder_.path("back.arrow");
};

TEST_F(LongRows, StandWhereverTheyMay) {
  const std::string text(5 * kBlock, 'x');
  for (const std::int64_t at : {1, 2, 300000}) {  // in the first block, and after several blocks
    SCOPED_TRACE(at);
    std::string file = "n,t\n";
    for (std::int64_t i = 1; i < at; ++i) file += std::to_string(i) + ",a\n";
    file += std::to_string(at) + "," + text + "\n" + std::to_string(at + 1) + ",b\n";
    const auto table = read(file);
    expect_counted(*table, at + 1);
    EXPECT_TRUE(text_in(*table, at - 1) == text);
    EXPECT_EQ(text_in(*table, at), "b");
  }
}

TEST_F(LongRows, GrowFromBlockToBlock) {
  std::string file = "n,t\n1,a\n\n\n2,b\n";  // empty lines are no rows
  for (const std::size_t blocks : {2U, 6U, 20U}) {
    while (file.size() % kBlock != 0) file += '\n';
    file += (blocks == 2 ? "3,\"" : blocks == 6 ? "4,\"" : "5,\"");
    file += std::string(blocks * kBlock, '\n') + "\"\n";
  }
  const auto table = read(file + "6,c\n");
  expect_counted(*table, 6);
  for (const auto& [row, blocks] : {std::pair{2, 2U}, {3, 6U}, {4, 20U}}) {
    EXPECT_TRUE(text_in(*table, row) == std::string(blocks * kBlock, '\n')) << row;
  }
  EXPECT_EQ(text_in(*table, 5), "c");
}

TEST_F(LongRows, OfOneColumnKeepTheirEmptyLines) {
  write_text(file_, "t\na\n\n" + std::string(3 * kBlock, 'x') + "\n\nb\n");
  EXPECT_EQ(table_rows(converted(file_)),
            "t | string | string | string | 5 | 2 | 2 | equal as large_string\n");
}

TEST_F(LongRows, HaveTheTypesGuessedFromTheFirstBlock) {
  std::string file = "n,t\n";
  while (file.size() < 2 * kBlock) file += "1,2\n";
  write_text(file_, file + "1," + std::string(3 * kBlock, 'x') + "\n");
  const Outcome run = run_program({"types", file_, "--count"});
  EXPECT_EQ(run.exit_status, 1);
  EXPECT_NE(run.errors.find("CSV conversion error to int64"), std::string::npos) << run.errors;
}

TEST_F(LongRows, MayStandInColumnsOfOneNameAndOfDifferentTypes) {
  std::string file = "a,a\n";
  while (file.size() < 2 * kBlock) file += "1,b\n";
  write_text(file_, file + "1," + std::string(3 * kBlock, 'x') + "\n");
  EXPECT_EQ(table_rows(run_program({"types", file_, "--count"}).out),
            "a | int64 | int64 | int64 | 524,288 | 3 | 0\n"
            "a | string | string | string | 524,288 | 3 | 0\n");
}

TEST_F(LongRows, HaveAnEnd) {
  if (rounds(0, 1) == 0) GTEST_SKIP() << "takes a file of 140 MiB";
  write_text(file_, "n,t\n1,a\n2,\"" + std::string(140 * kBlock, 'x') + "\"\n");
  const Outcome expected{1, "",
                         "numera-arrow: " + file_ +
                             ": a row is longer than 64 MiB, or a quotation mark in it is not "
                             "closed\n"};
  EXPECT_EQ(run_program({"types", file_, "--count"}), expected);
}

}  // namespace
}  // namespace numera::testing
