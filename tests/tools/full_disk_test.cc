// A disk that becomes full during a write: one line, status 1, and existing files stay intact.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/tools/program.h"
#include "tests/tools/small_disk.h"

namespace numera::testing {
namespace {

using ::testing::EndsWith;
using ::testing::StartsWith;

constexpr std::size_t kPages = 64;
constexpr int kRows = 3000;  // two values of 8 bytes per row: 12 pages

class FullDisk : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!disk_.refusal().empty()) GTEST_SKIP() << disk_.refusal();
    std::string text = "a,b\n";
    for (int i = 0; i < kRows; ++i) {
      text += std::to_string(i * 7919) + "," + std::to_string(i * 104729) + "\n";
    }
    write_text(file_, text);
  }

  /// Starts with no free page and adds one page per run until the output fits. So each write fails
  /// once. `expect_nothing` checks the disk after each failure.
  template <class ExpectNothing>
  void fill_until_it_fits(const std::vector<std::string>& arguments, const std::string& message,
                          const ExpectNothing& expect_nothing) {
    std::size_t room = 0;
    for (;; ++room) {
      SCOPED_TRACE(room);
      ASSERT_LT(room, kPages - 2);
      disk_.leave_free(room);
      const Outcome run = run_program(arguments);
      if (run.exit_status == 0) {
        EXPECT_EQ(run.errors, "");
        break;
      }
      EXPECT_EQ(run.exit_status, 1);
      EXPECT_THAT(run.errors, StartsWith("numera-arrow: " + message));
      EXPECT_THAT(run.errors, EndsWith("No space left on device\n"));
      EXPECT_EQ(run.errors.find('\n'), run.errors.size() - 1) << run.errors;
      expect_nothing();
      EXPECT_EQ(disk_.free_pages(), room);  // nothing is left of the new output
    }
    EXPECT_GE(room, 3U);
  }

  TemporaryFolder folder_;
  std::string file_ = folder_.path("numbers.csv");
  SmallDisk disk_{kPages};
};

TEST_F(FullDisk, TakesTheWholeOutputOrLeavesTheOldOne) {
  for (const char* name : {"back.arrow", "back.parquet"}) {
    SCOPED_TRACE(name);
    const std::string output = disk_.path(name);
    write_text(output, "older");
    fill_until_it_fits({"convert", file_, "--output", output}, file_ + ": cannot write " + output,
                       [&] { EXPECT_EQ(read_text(output), "older"); });
    EXPECT_EQ(table_rows(converted(output)),
              "a | int64 | int64 | int64 | 3,000 | 1 | 0 | equal\n"
              "b | int64 | int64 | int64 | 3,000 | 1 | 0 | equal\n");
    std::filesystem::remove(output);
  }
}

TEST_F(FullDisk, TakesSeveralFilesAsOneOutputOrLeavesTheOldOne) {
  const std::string output = disk_.path("back.arrow");
  write_text(output, "older");
  const std::string small = folder_.write("small.csv", "a,b\n1,2\n");
  fill_until_it_fits({"convert", small, file_, small, "--output", output}, "cannot write " + output,
                     [&] { EXPECT_EQ(read_text(output), "older"); });
  EXPECT_EQ(table_rows(converted(output)),
            "a | int64 | int64 | int64 | 3,002 | 3 | 0 | equal\n"
            "b | int64 | int64 | int64 | 3,002 | 3 | 0 | equal\n");
}

TEST_F(FullDisk, TakesTheWholeFolderOfPartitionsOrNothing) {
  std::string text = "k,a\n";
  for (int i = 0; i < kRows; ++i) {
    text += std::to_string(i % 2) + "," + std::to_string(i * 7919) + "\n";
  }
  write_text(file_, text);
  const std::string output = disk_.path("rows");
  fill_until_it_fits({"convert", file_, "--output", output, "--to", "arrow", "--partition-by", "k"},
                     file_ + ": cannot write " + output,
                     [&] { EXPECT_EQ(disk_.names(), std::vector<std::string>{"filler"}); });
  EXPECT_EQ(table_rows(converted(output)),
            "a | int64 | int64 | int64 | 3,000 | 2 | 0 | equal\n"
            "k | int32 | int32 | int32 | 3,000 | 2 | 0 | equal\n");
}

TEST_F(FullDisk, HasNoRoomForOneMoreFile) {
  const SmallDisk disk(kPages, 1);
  const std::string output = disk.path("back.arrow");
  write_text(output, "older");
  const Outcome expected{
      1, "", "numera-arrow: " + file_ + ": cannot write " + output + ": No space left on device\n"};
  EXPECT_EQ(run_program({"convert", file_, "--output", output}), expected);
  EXPECT_EQ(read_text(output), "older");
  EXPECT_EQ(disk.names(), std::vector<std::string>{"back.arrow"});
}

/// The part of the folder takes one place, a folder in it the next one.
TEST_F(FullDisk, HasNoRoomForAFolderOrAFileOfPartitions) {
  for (const std::size_t places : {1U, 2U}) {
    SCOPED_TRACE(places);
    const SmallDisk disk(kPages, places);
    const std::string output = disk.path("rows");
    const Outcome expected{
        1, "",
        "numera-arrow: " + file_ + ": cannot write " + output + ": No space left on device\n"};
    EXPECT_EQ(run_program({"convert", file_, "--output", output, "--partition-by", "a"}), expected);
    EXPECT_EQ(disk.names(), std::vector<std::string>());
  }
}

TEST_F(FullDisk, CutsAPrintedResultWhichIsAFailure) {
  const std::string output = folder_.path("back.arrow");
  write_text(output, "older");
  const std::vector<std::string> commands[] = {{"types", file_},
                                               {"show", file_, "--rows", "3000"},
                                               {"summary", file_},
                                               {"summary", file_, "--json"},
                                               {"tree", file_, "--rows", "3000"},
                                               {"tree", file_, "--rows", "3000", "--json"},
                                               {"convert", file_, "--output", output},
                                               {"convert", file_, "--output", output, "--show"}};
  for (const std::vector<std::string>& arguments : commands) {
    SCOPED_TRACE(arguments.front());
    disk_.leave_free(0);
    const Outcome expected{1, "", "numera-arrow: " + file_ + ": the result cannot be written\n"};
    EXPECT_EQ(run_program(arguments, {.out = disk_.path("out")}), expected);
    EXPECT_EQ(read_text(output), "older");
  }
  EXPECT_EQ(folder_.names(), (std::vector<std::string>{"back.arrow", "numbers.csv"}));
}

/// One page can be written, the next one cannot.
TEST_F(FullDisk, CutsAPrintedResultInItsMiddle) {
  disk_.leave_free(1);
  const Outcome expected{1, "", "numera-arrow: " + file_ + ": the result cannot be written\n"};
  EXPECT_EQ(run_program({"tree", file_, "--rows", "3000"}, {.out = disk_.path("out")}), expected);
  EXPECT_THAT(read_text(disk_.path("out")), StartsWith("struct 1x1\n"));
}

}  // namespace
}  // namespace numera::testing
