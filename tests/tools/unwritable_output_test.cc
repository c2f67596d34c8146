// An output that cannot or must not be written: one line, status 1, and existing files stay intact.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "tests/tools/program.h"

namespace numera::testing {
namespace {

class UnwritableOutput : public ::testing::Test {
 protected:
  void SetUp() override { write_text(file_, "a\n1\n2\n"); }

  /// Expects a refusal before anything is read: no result, and an unchanged folder.
  void expect_refusal(const std::string& output, const std::string& reason,
                      const RunOptions& options = {}) {
    const auto before = folder_.names();
    const Outcome expected{
        1, "", "numera-arrow: " + file_ + ": cannot write " + output + ": " + reason + "\n"};
    EXPECT_EQ(run_program({"convert", file_, "--output", output}, options), expected);
    EXPECT_EQ(folder_.names(), before);
  }

  /// Expects a refusal during the conversion or at its end: an existing output stays intact, and no
  /// other file is left.
  void expect_intact(const std::string& input, const std::string& name, const std::string& reason,
                     const RunOptions& options = {}, const std::vector<std::string>& more = {}) {
    const std::string output = folder_.path(name);
    write_text(output, "older");
    const auto before = folder_.names();
    std::vector<std::string> arguments = {"convert", input, "--output", output};
    arguments.insert(arguments.end(), more.begin(), more.end());
    const Outcome run = run_program(arguments, options);
    EXPECT_EQ(run.exit_status, 1);
    EXPECT_THAT(run.errors, ::testing::StartsWith("numera-arrow: " + input + ": "));
    EXPECT_THAT(run.errors, ::testing::HasSubstr(reason));
    EXPECT_EQ(run.errors.find('\n'), run.errors.size() - 1) << run.errors;
    EXPECT_EQ(read_text(output), "older");
    EXPECT_EQ(folder_.names(), before);
  }

  TemporaryFolder folder_;
  std::string file_ = folder_.path("numbers.csv");
};

TEST_F(UnwritableOutput, ItsNameSaysNoKnownFormat) {
  for (const char* name : {"back", "back.txt", "back.PARQUET", "back.arrow.gz"}) {
    expect_refusal(folder_.path(name),
                   "the name ends in none of .parquet, .arrow, .feather, .ipc, .arrows, .csv, "
                   ".tsv, .json, .jsonl, .ndjson");
  }
}

TEST_F(UnwritableOutput, ItIsTheInput) {
  const std::string named = folder_.path("input.arrow");
  std::filesystem::copy_file(file_, named);
  file_ = named;
  expect_refusal(named, "it is the input file");
  EXPECT_EQ(read_text(named), "a\n1\n2\n");
}

TEST_F(UnwritableOutput, ItIsALinkToTheInput) {
  std::filesystem::create_symlink(file_, folder_.path("symbolic.arrow"));
  std::filesystem::create_hard_link(file_, folder_.path("hard.arrow"));
  expect_refusal(folder_.path("symbolic.arrow"), "it is the input file");
  expect_refusal(folder_.path("hard.arrow"), "it is the input file");
}

TEST_F(UnwritableOutput, ItIsALinkThatLeadsToItself) {
  std::filesystem::create_symlink("loop.arrow", folder_.path("loop.arrow"));
  expect_refusal(folder_.path("loop.arrow"), "Too many levels of symbolic links");
}

TEST_F(UnwritableOutput, ItIsADirectory) {
  std::filesystem::create_directory(folder_.path("folder.arrow"));
  expect_refusal(folder_.path("folder.arrow"), "it is not a regular file");
}

TEST_F(UnwritableOutput, ItIsAPipe) {
  ASSERT_EQ(::mkfifo(folder_.path("pipe.arrow").c_str(), 0600), 0);
  expect_refusal(folder_.path("pipe.arrow"), "it is not a regular file");
}

TEST_F(UnwritableOutput, ItsFolderIsMissing) {
  expect_refusal(folder_.path("nowhere/back.arrow"), "No such file or directory");
}

TEST_F(UnwritableOutput, ItsFolderIsNotWritable) {
  std::filesystem::permissions(folder_.path(""), std::filesystem::perms(0555));
  expect_refusal(folder_.path("back.arrow"), "Permission denied", {.unprivileged = true});
  std::filesystem::permissions(folder_.path(""), std::filesystem::perms(0755));
}

TEST_F(UnwritableOutput, ItIsNotWritableItself) {
  const std::string output = folder_.path("back.arrow");
  write_text(output, "older");
  std::filesystem::permissions(output, std::filesystem::perms(0444));
  std::filesystem::permissions(folder_.path(""), std::filesystem::perms(0777));
  expect_refusal(output, "Permission denied", {.unprivileged = true});
}

TEST_F(UnwritableOutput, AColumnIsRefused) {
  const std::string input = folder_.path("half.arrow");
  write_ipc(input, *table_of({{"h", ::arrow::float16(), "[1.5]"}}));
  expect_intact(input, "back.arrow", "1 of 1 columns were refused or came back different");
}

TEST_F(UnwritableOutput, AChangeOfTypeIsNotWanted) {
  const std::string input = folder_.path("dates.arrow");
  write_ipc(input, *table_of({{"d", ::arrow::date32(), "[1]"}}));
  expect_intact(input, "back.arrow", "column 'd' returns as timestamp[s]", {}, {"--strict"});
}

TEST_F(UnwritableOutput, ALaterRowCannotBeRead) {
  std::string text = "a\n";
  for (int i = 0; i < 600000; ++i) text += "1\n";  // more than one block
  write_text(file_, text + "x\n");
  for (const char* output : {"back.arrow", "back.parquet"}) {
    expect_intact(file_, output, "CSV conversion error to int64: invalid value 'x'");
  }
}

TEST_F(UnwritableOutput, TheInputIsTruncated) {
  const std::string input = folder_.path("numbers.stream");
  write_ipc_stream(input, *table_of({{"n", ::arrow::int64(), "[1, 2, 3, 4, 5, 6, 7, 8, 9]"}}));
  std::filesystem::resize_file(input, std::filesystem::file_size(input) - 40);
  expect_intact(input, "back.arrow", "Expected to be able to read");
}

TEST_F(UnwritableOutput, TheDiskIsFull) {
  std::string text = "a,b\n";
  for (int i = 0; i < 50000; ++i) text += std::to_string(i * 7919) + "," + std::to_string(i) + "\n";
  write_text(file_, text);
  for (const char* output : {"back.arrow", "back.parquet"}) {
    SCOPED_TRACE(output);
    expect_intact(file_, output, std::string("cannot write ") + folder_.path(output),
                  {.file_size = 65536});
    expect_intact(file_, output, "File too large", {.file_size = 65536});
  }
}

TEST_F(UnwritableOutput, TheResultCannotBePrinted) {
  expect_intact(file_, "back.arrow", "the result cannot be written", {.out = "/dev/full"});
}

}  // namespace
}  // namespace numera::testing
