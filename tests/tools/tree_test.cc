#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/tools/program.h"

namespace numera::testing {
namespace {

class Tree : public ::testing::Test {
 protected:
  std::string shown(const std::vector<std::string>& options) const {
    return printed("tree", file_, options);
  }

  TemporaryFolder folder_;
  std::string file_ = folder_.path("a_file");
};

TEST_F(Tree, PrintsTheFirstRowsAsAnEncodedTable) {
  write_parquet(file_, *table_of({{"n", ::arrow::int16(), "[1, 2, null, 4]"},
                                  {"b", ::arrow::boolean(), "[true, true, false, false]"}}));
  EXPECT_EQ(shown({"--rows", "3"}),
            R"(struct 1x1
  ArrowType: char 1x5 "table"
  Columns: struct 2x1
    (0):
      ArrowType: char 1x5 "array"
      Type: char 1x5 "int16"
      Data: int16 3x1 [1 2 0]
      Valid: struct 1x1
        ArrowType: char 1x6 "buffer"
        Values: uint8 1x1 [251]
        Length: double 1x1 [3]
    (1):
      ArrowType: char 1x5 "array"
      Type: char 1x7 "logical"
      Data: struct 1x1
        Values: uint8 1x1 [3]
        Length: double 1x1 [3]
        ArrowType: char 1x6 "buffer"
      Valid: struct 1x1
        ArrowType: char 1x6 "buffer"
        Values: uint8 0x1 []
        Length: double 1x1 [3]
  Names: cell 1x2
    {0}: char 1x1 "n"
    {1}: char 1x1 "b"
)");
}

TEST_F(Tree, IsWhatConvertPrintsLastOnRequest) {
  write_text(file_, "n,t\n1,a\n2,b\n");
  const std::string tree = shown({});
  EXPECT_THAT(tree, ::testing::HasSubstr("Data: string 2x1 [\"a\" \"b\"]\n"));
  EXPECT_THAT(converted(file_, {"--show"}), ::testing::EndsWith(" s\n\n" + tree));
}

TEST_F(Tree, IsWhatConvertPrintsOfAPipeWhichItReadsOnce) {
  const std::string text = "n\n1\n2\n3\n4\n5\n6\n7\n8\n9\n10\n11\n12\n";
  write_text(file_, text);
  const std::string tree = shown({});
  const std::string pipe = folder_.path("pipe");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  RunningProgram program({"convert", pipe, "--show", "--batch-rows", "4"});
  write_text(pipe, text);
  const Outcome run = program.wait();
  EXPECT_EQ(run.exit_status, 0) << run.errors;
  EXPECT_THAT(run.out, ::testing::EndsWith(" s\n\n" + tree));
  const Outcome of_input = run_program({"convert", "-", "--show"}, {.in = file_});
  EXPECT_EQ(of_input.exit_status, 0) << of_input.errors;
  EXPECT_THAT(of_input.out, ::testing::EndsWith(" s\n\n" + tree));
}

TEST_F(Tree, PrintsTenRowsWhereNoneAreAskedFor) {
  write_text(file_, "n\n1\n2\n3\n4\n5\n6\n7\n8\n9\n10\n11\n12\n");
  EXPECT_THAT(shown({}), ::testing::HasSubstr("Data: int64 10x1 [1 2 3 4 5 6 7 8 9 10]\n"));
}

TEST_F(Tree, PrintsEveryRowAskedFor) {
  std::string numbers = "1";
  std::string text = "n\n1\n";
  for (int i = 2; i <= 100; ++i) {
    numbers += " " + std::to_string(i);
    text += std::to_string(i) + "\n";
  }
  write_text(file_, text);
  EXPECT_THAT(shown({"--rows", "1000"}),
              ::testing::HasSubstr("Data: int64 100x1 [" + numbers + "]\n"));
}

TEST_F(Tree, PrintsNoRowsOnRequest) {
  write_text(file_, "n\n1\n2\n");
  EXPECT_THAT(shown({"--rows", "0"}), ::testing::HasSubstr("Data: int64 0x1 []\n"));
}

TEST_F(Tree, PrintsRowsOfSeveralRowGroups) {
  write_parquet(file_, *table_of({{"n", ::arrow::int8(), "[1, 2, 3, 4, 5]"}}), 2);
  EXPECT_THAT(shown({"--rows", "4"}), ::testing::HasSubstr("Data: int8 4x1 [1 2 3 4]\n"));
}

TEST_F(Tree, PrintsTheColumnsAskedFor) {
  write_text(file_, "a,b,c\n1,2,3\n");
  EXPECT_THAT(shown({"--columns", "c,a"}), ::testing::HasSubstr("  Names: cell 1x2\n"
                                                                "    {0}: char 1x1 \"c\"\n"
                                                                "    {1}: char 1x1 \"a\"\n"));
}

TEST_F(Tree, NamesTheColumnThatHasNoHostForm) {
  write_ipc(file_, *table_of({{"n", ::arrow::int8(), "[1]"}, {"h", ::arrow::float16(), "[1]"}}));
  const Outcome expected{1, "",
                         "numera-arrow: " + file_ +
                             ": Column 'h' (index 1): found type halffloat, expected one that has "
                             "a host form; casts were not asked for.\n"};
  EXPECT_EQ(run_program({"tree", file_}), expected);
}

TEST_F(Tree, CastsWhereItIsAskedTo) {
  write_ipc(file_, *table_of({{"h", ::arrow::float16(), "[1.5, null]"}}));
  const std::string tree = shown({"--cast"});
  EXPECT_THAT(tree, ::testing::HasSubstr("Data: double 2x1 [1.5 0]\n"));
  const std::string output = folder_.path("back.arrow");
  EXPECT_THAT(converted(file_, {"--cast", "--show", "--output", output}),
              ::testing::EndsWith(" s\n\n" + tree));
  EXPECT_EQ(read_ipc(output)->num_rows(), 2);
}

}  // namespace
}  // namespace numera::testing
