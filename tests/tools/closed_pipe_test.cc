// A reader of the results that goes away, as `head -1` does: the program ends as others do.

#include <gtest/gtest.h>

#include <csignal>

#include "tests/tools/program.h"

namespace numera::testing {
namespace {

class ClosedPipe : public ::testing::Test {
 protected:
  void SetUp() override {
    write_text(file_, "a,b\n1,2\n");
    write_text(output_, "older");
  }

  TemporaryFolder folder_;
  std::string file_ = folder_.path("numbers.csv");
  std::string output_ = folder_.path("back.arrow");
};

TEST_F(ClosedPipe, EndsEveryCommandBySignalAndWithoutAMessage) {
  const Outcome expected{128 + SIGPIPE, "", ""};
  for (const char* command : {"types", "head", "tail", "show", "summary", "tree", "convert"}) {
    SCOPED_TRACE(command);
    EXPECT_EQ(run_program({command, file_}, {.closed_pipe = true}), expected);
    EXPECT_EQ(run_program({command, file_}, {.ignored = {SIGPIPE}, .closed_pipe = true}), expected);
    EXPECT_EQ(run_program({command, file_, "--json"}, {.closed_pipe = true}), expected);
  }
}

TEST_F(ClosedPipe, LeavesTheOutputIntactAndNothingBeside) {
  const Outcome expected{128 + SIGPIPE, "", ""};
  EXPECT_EQ(run_program({"convert", file_, "--output", output_}, {.closed_pipe = true}), expected);
  EXPECT_EQ(read_text(output_), "older");
  EXPECT_EQ(folder_.names(), (std::vector<std::string>{"back.arrow", "numbers.csv"}));
}

TEST_F(ClosedPipe, HidesNoFailureOfTheConversion) {
  const std::string half = folder_.path("half.arrow");
  write_ipc(half, *table_of({{"h", ::arrow::float16(), "[1.5]"}}));
  const Outcome expected{
      1, "", "numera-arrow: " + half + ": 1 of 1 columns were refused or came back different\n"};
  EXPECT_EQ(run_program({"convert", half}, {.closed_pipe = true}), expected);
}

}  // namespace
}  // namespace numera::testing
