// --skip-unsupported: columns whose type has no host form are left out, and all else is checked.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/arrow_values.h"
#include "tests/tools/program.h"

namespace numera::testing {
namespace {

using ::testing::HasSubstr;

constexpr const char* kReason = "expected one that has a host form; casts were not asked for.";

class SkipUnsupported : public ::testing::Test {
 protected:
  Outcome convert(const std::vector<std::string>& options = {}) const {
    std::vector<std::string> arguments = {"convert", file_, "--skip-unsupported"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return run_program(arguments);
  }

  TemporaryFolder folder_;
  std::string file_ = folder_.path("rows.arrow");
  std::string output_ = folder_.path("back.arrow");
};

std::shared_ptr<::arrow::Table> float_int_and_union() {
  return table_of(
      {{"h", ::arrow::float16(), "[1.5, null]"},
       {"n", ::arrow::int8(), "[1, 2]"},
       {"u", ::arrow::dense_union({::arrow::field("i", ::arrow::int8())}), "[[0, 1], [0, 2]]"}});
}

TEST_F(SkipUnsupported, LeavesColumnsOutOfTheOutput) {
  write_ipc(file_, *float_int_and_union());
  const Outcome run = convert({"--output", output_});
  EXPECT_EQ(run.exit_status, 0);
  EXPECT_EQ(run.errors, "");
  EXPECT_TRUE(read_ipc(output_)->Equals(*table_of({{"n", ::arrow::int8(), "[1, 2]"}})));
}

TEST_F(SkipUnsupported, NamesTheColumnsWithTheirReasonsAtTheEnd) {
  write_ipc(file_, *float_int_and_union());
  const std::string out = convert().out;
  EXPECT_EQ(table_rows(out),
            "h | halffloat | - | - | 2 | 1 | 1 | left out\n"
            "n | int8 | int8 | int8 | 2 | 1 | 0 | equal\n"
            "u | dense_union<i: int8=0> | - | - | 2 | 1 | 0 | left out\n");
  EXPECT_THAT(out, ::testing::EndsWith(
                       "\nleft out:     h: found type halffloat, " + std::string(kReason) +
                       "\nleft out:     u: found type dense_union<i: int8=0>, expected one that "
                       "has a host form.\n"));
}

TEST_F(SkipUnsupported, CastsWhatMayBeCast) {
  write_ipc(file_, *float_int_and_union());
  ASSERT_EQ(convert({"--cast", "--output", output_}).exit_status, 0);
  EXPECT_TRUE(read_ipc(output_)->Equals(
      *table_of({{"h", ::arrow::float64(), "[1.5, null]"}, {"n", ::arrow::int8(), "[1, 2]"}})));
}

TEST_F(SkipUnsupported, ChangesNothingWhereEveryColumnComesBack) {
  write_ipc(file_, *table_of({{"n", ::arrow::int8(), "[1]"}}));
  const Outcome run = convert();
  EXPECT_EQ(run.exit_status, 0);
  EXPECT_EQ(table_rows(run.out), "n | int8 | int8 | int8 | 1 | 1 | 0 | equal\n");
  EXPECT_EQ(line_that_starts(run.out, "left out"), "");
}

TEST_F(SkipUnsupported, LeavesColumnsOutOfAFileWithoutRows) {
  write_ipc(file_, *table_of({{"h", ::arrow::float16(), "[]"}, {"n", ::arrow::int8(), "[]"}}));
  ASSERT_EQ(convert({"--output", output_}).exit_status, 0);
  EXPECT_TRUE(read_ipc(output_)->Equals(*table_of({{"n", ::arrow::int8(), "[]"}})));
}

TEST_F(SkipUnsupported, FailsWhereNoColumnIsLeft) {
  write_ipc(file_, *table_of({{"h", ::arrow::float16(), "[1.5]"}}));
  const Outcome run = convert({"--output", output_});
  EXPECT_EQ(run.exit_status, 1);
  EXPECT_EQ(run.errors,
            "numera-arrow: " + file_ + ": no column is left: none has a type with a host form\n");
  EXPECT_EQ(folder_.names(), std::vector<std::string>{"rows.arrow"});
}

TEST_F(SkipUnsupported, ShowsTheColumnsThatAreLeft) {
  write_ipc(file_, *float_int_and_union());
  const Outcome run = convert({"--show"});
  EXPECT_EQ(run.exit_status, 0);
  EXPECT_THAT(run.out, ::testing::EndsWith("Names: cell 1x1\n    {0}: char 1x1 \"n\"\n"));
}

TEST_F(SkipUnsupported, PassesWithStrictWhereTheOthersKeepTheirTypes) {
  write_ipc(file_, *float_int_and_union());
  EXPECT_EQ(convert({"--strict"}).exit_status, 0);
}

TEST_F(SkipUnsupported, LeavesColumnsOutOnSeveralThreads) {
  write_ipc(file_, *float_int_and_union());
  ASSERT_EQ(convert({"--threads", "2", "--batch-rows", "1", "--to", "csv"}).out, "\"n\"\n1\n2\n");
}

/// The second of two batches has a text that is not UTF-8.
TEST_F(SkipUnsupported, KeepsARefusalOfValuesAFailure) {
  const auto chunks = ArrowChunks(::arrow::utf8(), {R"(["good"])", R"(["gruxxe"])"});
  write_ipc(file_, *::arrow::Table::Make(::arrow::schema({::arrow::field("t", ::arrow::utf8())}),
                                         {chunks}));
  overwrite(file_, "gruxxe", "gr\xF6\xDF\x65!");
  const Outcome run = convert({"--output", output_});
  EXPECT_EQ(run.exit_status, 1);
  EXPECT_EQ(run.errors, "numera-arrow: " + file_ +
                            ": 1 of 1 columns were refused or came back different; only those are "
                            "left out whose type has no host form\n");
  EXPECT_EQ(folder_.names(), std::vector<std::string>{"rows.arrow"});
}

}  // namespace
}  // namespace numera::testing
