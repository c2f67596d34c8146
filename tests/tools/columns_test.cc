// --columns: the selected columns and their order.

#include <gtest/gtest.h>

#include "tests/tools/program.h"

namespace numera::testing {
namespace {

std::shared_ptr<::arrow::Table> three_columns() {
  return table_of({{"a", ::arrow::int8(), "[1]"},
                   {"s",
                    ::arrow::struct_({::arrow::field("x", ::arrow::int8()),
                                      ::arrow::field("y", ::arrow::float64())}),
                    R"([{"x": 1, "y": 2}])"},
                   {"z", ::arrow::float64(), "[0.5]"}});
}

/// The same three columns in every format that supports structs.
class Columns : public ::testing::TestWithParam<void (*)(const std::string&)> {
 protected:
  void SetUp() override { GetParam()(file_); }

  TemporaryFolder folder_;
  std::string file_ = folder_.path("a_file");
};

TEST_P(Columns, StandInTheOrderAskedFor) {
  EXPECT_EQ(table_rows(converted(file_, {"--columns", "z,s,a"})),
            "z | double | double | double | 1 | 1 | 0 | equal\n"
            "s | struct<x: int8, y: double> | struct | table | 1 | 1 | 0 | equal\n"
            "a | int8 | int8 | int8 | 1 | 1 | 0 | equal\n");
}

TEST_P(Columns, MayBeNamedOneByOneAndBeforeTheFile) {
  EXPECT_EQ(table_rows(converted("--columns", {"z", "--columns", "a", file_})),
            "z | double | double | double | 1 | 1 | 0 | equal\n"
            "a | int8 | int8 | int8 | 1 | 1 | 0 | equal\n");
}

TEST_P(Columns, AreAskedForInTheOrderOfBothOptions) {
  EXPECT_EQ(table_rows(converted("--column", {"z", "--columns", "s", "--column=a", file_})),
            "z | double | double | double | 1 | 1 | 0 | equal\n"
            "s | struct<x: int8, y: double> | struct | table | 1 | 1 | 0 | equal\n"
            "a | int8 | int8 | int8 | 1 | 1 | 0 | equal\n");
}

TEST_P(Columns, ThatAreNotThereAreNamed) {
  const Outcome expected{1, "", "numera-arrow: " + file_ + ": there is no column 'nowhere'\n"};
  for (const char* command : {"head", "tail", "show", "summary", "tree", "convert"}) {
    EXPECT_EQ(run_program({command, file_, "--columns", "a,nowhere"}), expected);
  }
}

TEST_P(Columns, AreNotToBeAskedForTwice) {
  const Outcome expected{1, "", "numera-arrow: " + file_ + ": column 'a' is asked for twice\n"};
  EXPECT_EQ(run_program({"convert", file_, "--columns", "a,z,a"}), expected);
}

TEST_P(Columns, OfAStructAreNoColumns) {
  const Outcome expected{1, "", "numera-arrow: " + file_ + ": there is no column 's.x'\n"};
  EXPECT_EQ(run_program({"convert", file_, "--columns", "s.x"}), expected);
}

INSTANTIATE_TEST_SUITE_P(
    Formats, Columns,
    ::testing::Values([](const std::string& file) { write_parquet(file, *three_columns()); },
                      [](const std::string& file) { write_ipc(file, *three_columns()); },
                      [](const std::string& file) { write_ipc_stream(file, *three_columns()); }));

class ColumnsOfOneName : public ::testing::Test {
 protected:
  void SetUp() override {
    write_ipc(file_, *table_of({{"a", ::arrow::int8(), "[1]"},
                                {"b", ::arrow::int8(), "[2]"},
                                {"a", ::arrow::int16(), "[3]"}}));
  }

  TemporaryFolder folder_;
  std::string file_ = folder_.path("a_file");
};

TEST_F(ColumnsOfOneName, AllReturn) {
  EXPECT_EQ(table_rows(converted(file_)),
            "a | int8 | int8 | int8 | 1 | 1 | 0 | equal\n"
            "b | int8 | int8 | int8 | 1 | 1 | 0 | equal\n"
            "a | int16 | int16 | int16 | 1 | 1 | 0 | equal\n");
}

TEST_F(ColumnsOfOneName, CannotBeAskedFor) {
  const Outcome expected{
      1, "",
      "numera-arrow: " + file_ + ": 2 columns have the name 'a', so the name selects none\n"};
  EXPECT_EQ(run_program({"convert", file_, "--columns", "a"}), expected);
}

TEST(ColumnsOfAnyName, AreAskedForOneByOne) {
  const TemporaryFolder folder;
  const std::string file = folder.path("a_file");
  write_ipc(file, *table_of({{"a, b", ::arrow::int8(), "[1]"},
                             {"[c,d]", ::arrow::int8(), "[2]"},
                             {"-e", ::arrow::int8(), "[3]"},
                             {"f", ::arrow::int8(), "[4]"}}));
  const Outcome expected{0, "  -e  [c,d]  a, b\nint8   int8  int8\n   3      2     1\n", ""};
  EXPECT_EQ(run_program({"head", "--column=-e", "--column", "[c,d]", "--column", "a, b", file}),
            expected);
}

TEST(ColumnsWithoutFields, CannotReturnAndSayWhereTheyLackThem) {
  const TemporaryFolder folder;
  const std::string file = folder.path("a_file");
  write_ipc(file, *table_of({{"n", ::arrow::int8(), "[1]"},
                             {"s", ::arrow::struct_({}), "[{}]"},
                             {"l", ::arrow::list(::arrow::struct_({})), "[[{}]]"}}));
  const Outcome run = run_program({"convert", file});
  EXPECT_EQ(run.exit_status, 1);
  EXPECT_EQ(table_rows(run.out),
            "n | int8 | int8 | int8 | 1 | 1 | 0 | equal\n"
            "s | struct<> | - | table | 1 | 1 | 0 | .Data.FieldData: found no fields, expected at "
            "least one.\n"
            "l | list<item: struct<>> | - | cell | 1 | 1 | 0 | .Data.Values.Data.FieldData: found "
            "no fields, expected at least one.\n");
  EXPECT_EQ(run.errors,
            "numera-arrow: " + file + ": 2 of 3 columns were refused or came back different\n");
}

}  // namespace
}  // namespace numera::testing
