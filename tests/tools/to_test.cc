// --to: the returned columns on standard output, and the format of --output. --compression.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>

#include "tests/tools/program.h"
#include "tests/tools/small_disk.h"
#include "tests/tools/waiting.h"

namespace numera::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

class To : public ::testing::Test {
 protected:
  void SetUp() override { write_text(file_, "a,b\n1,x\n2,y\n"); }

  Outcome convert(const std::vector<std::string>& options, const RunOptions& run = {}) const {
    std::vector<std::string> arguments = {"convert", file_};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return run_program(arguments, run);
  }

  /// Many rows; the file stays small enough for a disk of some pages.
  void write_many_rows(int rows) const {
    std::string text = "a,b,c,d\n";
    for (int i = 0; i < rows; ++i) text += "1,2,3,4\n";
    write_text(file_, text);
  }

  TemporaryFolder folder_;
  std::string file_ = folder_.path("rows.csv");
};

TEST_F(To, WritesToStandardOutputWhatOutputWritesToAFile) {
  for (const char* format :
       {"parquet", "arrow", "feather", "ipc", "arrows", "csv", "tsv", "json", "jsonl", "ndjson"}) {
    SCOPED_TRACE(format);
    const std::string output = folder_.path(std::string("back.") + format);
    ASSERT_EQ(convert({"--output", output}).exit_status, 0);
    const Outcome run = convert({"--to", format});
    EXPECT_EQ(run.exit_status, 0);
    EXPECT_TRUE(run.out == read_text(output));
  }
}

TEST_F(To, WritesText) {
  EXPECT_EQ(convert({"--to", "csv"}).out, "\"a\",\"b\"\n1,\"x\"\n2,\"y\"\n");
  EXPECT_EQ(convert({"--to", "tsv"}).out, "\"a\"\t\"b\"\n1\t\"x\"\n2\t\"y\"\n");
  EXPECT_EQ(convert({"--to", "json"}).out, "{\"a\":1,\"b\":\"x\"}\n{\"a\":2,\"b\":\"y\"}\n");
}

TEST_F(To, LeavesTheTableOfColumnsToStandardError) {
  EXPECT_EQ(table_rows(convert({"--to", "csv"}).errors),
            "a | int64 | int64 | int64 | 2 | 1 | 0 | equal\n"
            "b | string | string | string | 2 | 1 | 0 | equal as large_string\n");
}

TEST_F(To, LeavesTheFirstRowsToStandardError) {
  const Outcome run = convert({"--to", "csv", "--columns", "a", "--show"});
  EXPECT_EQ(run.out, "\"a\"\n1\n2\n");
  EXPECT_THAT(run.errors, HasSubstr("\nstruct 1x1\n"));
}

TEST_F(To, SelectsTheFormatOfTheOutputWhateverItsName) {
  const std::string output = folder_.path("back.parquet");
  const Outcome run = convert({"--to", "json", "--output", output});
  EXPECT_EQ(run.exit_status, 0);
  EXPECT_EQ(run.errors, "");
  EXPECT_EQ(read_text(output), "{\"a\":1,\"b\":\"x\"}\n{\"a\":2,\"b\":\"y\"}\n");
}

TEST_F(To, SelectsTheDelimiterOfTheOutputWhateverItsName) {
  const std::string output = folder_.path("back.tsv");
  EXPECT_EQ(convert({"--to", "csv", "--output", output}).exit_status, 0);
  EXPECT_EQ(read_text(output), "\"a\",\"b\"\n1,\"x\"\n2,\"y\"\n");
}

TEST_F(To, WritesToStandardOutputThatOutputNames) {
  EXPECT_EQ(convert({"--to", "csv", "--output", "-"}).out, "\"a\",\"b\"\n1,\"x\"\n2,\"y\"\n");
}

TEST_F(To, HoldsTheColumnsAskedFor) {
  EXPECT_EQ(convert({"--to", "csv", "--columns", "b"}).out, "\"b\"\n\"x\"\n\"y\"\n");
}

TEST_F(To, WritesWhatComesBackInEveryBatch) {
  EXPECT_EQ(convert({"--to", "csv", "--columns", "a", "--batch-rows", "1", "--threads", "2"}).out,
            "\"a\"\n1\n2\n");
}

TEST_F(To, CompressesOnRequest) {
  const std::string output = folder_.path("packed");
  ASSERT_EQ(convert({"--to", "csv", "--compression", "gzip:9"}, {.out = output}).exit_status, 0);
  EXPECT_THAT(read_text(output), StartsWith("\x1f\x8b"));
  EXPECT_EQ(printed("head", output), "    a  b\nint64  string\n    1  x\n    2  y\n");
}

TEST_F(To, CompressesTheOutputOnRequest) {
  const std::string plain = folder_.path("plain.arrow");
  const std::string packed = folder_.path("packed.arrow");
  write_many_rows(1000);
  ASSERT_EQ(convert({"--output", plain}).exit_status, 0);
  ASSERT_EQ(convert({"--output", packed, "--compression", "zstd"}).exit_status, 0);
  EXPECT_LT(std::filesystem::file_size(packed), std::filesystem::file_size(plain));
  EXPECT_TRUE(read_ipc(packed)->Equals(*read_ipc(plain)));
}

TEST_F(To, RefusesACompressionThatTheFormatDoesNotHave) {
  const Outcome expected{1, "",
                         "numera-arrow: " + file_ +
                             ": cannot write standard output: compression: found 'snappy', "
                             "expected one of none, zstd, lz4, gzip, bz2\n"};
  EXPECT_EQ(convert({"--to", "csv", "--compression", "snappy"}), expected);
}

TEST_F(To, WritesNothingForAColumnThatIsRefused) {
  write_ipc(file_, *table_of({{"h", ::arrow::float16(), "[1.5]"}}));
  for (const char* format : {"arrows", "csv"}) {
    SCOPED_TRACE(format);
    const Outcome run = convert({"--to", format});
    EXPECT_EQ(run.exit_status, 1);
    EXPECT_EQ(run.out, "");
    EXPECT_THAT(run.errors, HasSubstr("1 of 1 columns were refused or came back different\n"));
  }
}

TEST_F(To, WritesNoEndAfterAFailure) {
  write_ipc(file_, *table_of({{"d", ::arrow::date32(), "[1]"}}));
  const std::string output = folder_.path("cut");
  ASSERT_EQ(convert({"--to", "arrows", "--strict"}, {.out = output}).exit_status, 1);
  EXPECT_EQ(run_program({"types", "--count", output}).exit_status, 1);
}

TEST_F(To, ShowsATerminalTextAlone) {
  EXPECT_THAT(run_on_terminal({"convert", file_, "--to", "parquet"}),
              HasSubstr("standard output is a terminal, which shows text alone"));
  EXPECT_THAT(run_on_terminal({"convert", file_, "--to", "csv", "--compression", "gzip"}),
              HasSubstr("standard output is a terminal, which shows text alone"));
  EXPECT_THAT(run_on_terminal({"convert", file_, "--to", "json"}),
              HasSubstr("{\"a\":1,\"b\":\"x\"}"));
}

TEST_F(To, EndsWithoutAMessageWhereThePipeIsClosed) {
  for (const char* format : {"parquet", "arrow", "arrows", "csv", "json"}) {
    SCOPED_TRACE(format);
    const Outcome run = convert({"--to", format}, {.closed_pipe = true});
    EXPECT_EQ(run.exit_status, 128 + SIGPIPE);
    EXPECT_THAT(run.errors, ::testing::Not(HasSubstr("numera-arrow:")));
  }
}

TEST_F(To, FailsWhereStandardOutputIsClosed) {
  const Outcome run = convert({"--to", "csv"}, {.closed = {1}});
  EXPECT_EQ(run.exit_status, 1);
  EXPECT_THAT(run.errors, HasSubstr("cannot write standard output: Bad file descriptor\n"));
}

TEST_F(To, FailsWhereTheTableOfColumnsCannotBePrinted) {
  EXPECT_EQ(convert({"--to", "csv"}, {.closed = {2}}).exit_status, 1);
}

TEST_F(To, IsInterruptedBetweenTwoBatches) {
  write_many_rows(300000);
  const std::string output = folder_.path("out");
  RunningProgram program({"convert", file_, "--to", "csv", "--batch-rows", "10"}, {.out = output});
  wait_until([&] {
    return std::filesystem::exists(output) && std::filesystem::file_size(output) >= 10000;
  });
  program.send(SIGINT);
  const Outcome expected{130, "", "numera-arrow: " + file_ + ": interrupted\n"};
  EXPECT_EQ(program.wait(), expected);
}

/// Starts with no free page and adds one page per run until the columns fit.
TEST_F(To, IsWholeOrFailsOnAFullDisk) {
  constexpr std::size_t kFewPages = 64;
  const SmallDisk disk(kFewPages);
  if (!disk.refusal().empty()) GTEST_SKIP() << disk.refusal();
  write_many_rows(2000);
  const std::string output = disk.path("out");
  std::size_t room = 0;
  for (; room < kFewPages - 2; ++room) {
    SCOPED_TRACE(room);
    std::filesystem::remove(output);
    disk.leave_free(room);
    const Outcome run = convert({"--to", "arrow"}, {.out = output});
    if (run.exit_status == 0) break;
    EXPECT_EQ(run.exit_status, 1);
    EXPECT_THAT(run.errors, HasSubstr("numera-arrow: " + file_ +
                                      ": cannot write standard output: No space left on device\n"));
  }
  EXPECT_GE(room, 3U);
  EXPECT_EQ(read_ipc(output)->num_rows(), 2000);
}

}  // namespace
}  // namespace numera::testing
