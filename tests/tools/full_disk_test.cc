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

  TemporaryFolder folder_;
  std::string file_ = folder_.path("numbers.csv");
  SmallDisk disk_{kPages};
};

/// Starts with no free page and adds one page per run until the output fits. So each write fails
/// once.
TEST_F(FullDisk, TakesTheWholeOutputOrLeavesTheOldOne) {
  for (const char* name : {"back.arrow", "back.parquet"}) {
    SCOPED_TRACE(name);
    const std::string output = disk_.path(name);
    write_text(output, "older");
    const auto before = disk_.names();
    std::size_t room = 0;
    for (Outcome run; run.exit_status != 0; ++room) {
      SCOPED_TRACE(room);
      ASSERT_LT(room, kPages - 2);
      disk_.leave_free(room);
      run = run_program({"convert", file_, "--output", output});
      if (run.exit_status == 0) {
        EXPECT_EQ(run.errors, "");
        break;
      }
      EXPECT_EQ(run.exit_status, 1);
      EXPECT_THAT(run.errors, StartsWith("numera-arrow: " + file_ + ": cannot write " + output));
      EXPECT_THAT(run.errors, EndsWith("No space left on device\n"));
      EXPECT_EQ(run.errors.find('\n'), run.errors.size() - 1) << run.errors;
      EXPECT_EQ(read_text(output), "older");
      EXPECT_EQ(disk_.free_pages(), room);  // nothing is left of the new output
    }
    EXPECT_GE(room, 3U);
    EXPECT_EQ(table_rows(converted(output)),
              "a | int64 | int64 | int64 | 3,000 | 1 | 0 | equal\n"
              "b | int64 | int64 | int64 | 3,000 | 1 | 0 | equal\n");
    std::filesystem::remove(output);
  }
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

TEST_F(FullDisk, CutsAPrintedResultWhichIsAFailure) {
  const std::string output = folder_.path("back.arrow");
  write_text(output, "older");
  const std::vector<std::string> commands[] = {{"types", file_},
                                               {"show", file_, "--rows", "3000"},
                                               {"summary", file_},
                                               {"tree", file_, "--rows", "3000"},
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
