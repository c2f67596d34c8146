#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/tools/program.h"

namespace numera::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

class Terminal : public ::testing::Test {
 protected:
  void SetUp() override {
    write_parquet(file_, *table_of({{"n", ::arrow::int8(), "[1, 2, 3, 4]"}}), 2);
  }

  TemporaryFolder folder_;
  std::string file_ = folder_.path("numbers.parquet");
};

constexpr const char* kBold = "\x1b[1m";

TEST_F(Terminal, ShowsProgressAndWipesIt) {
  const std::vector<std::string> commands[] = {
      {"types", file_, "--count"}, {"summary", file_}, {"convert", file_}};
  for (const std::vector<std::string>& arguments : commands) {
    SCOPED_TRACE(arguments.front());
    const std::string written = run_on_terminal(arguments);
    const size_t shown = written.find("2 of 4 rows (50 %), ");
    ASSERT_NE(shown, std::string::npos) << written;
    const std::string line = written.substr(shown, written.find('\r') - shown);
    EXPECT_THAT(written, HasSubstr(line + "\r" + std::string(line.size(), ' ') + "\r"));
  }
}

TEST_F(Terminal, ShowsTheShareOfTheBytesWhereTheFileDoesNotSayHowManyRowsThereAre) {
  write_text(file_, "n\n1\n2\n");
  EXPECT_THAT(run_on_terminal({"types", file_, "--count"}),
              StartsWith("2 rows (100 %), 6 of 6 B\r"));
}

TEST_F(Terminal, ShowsNoProgressWhereTheFileIsNotReadThrough) {
  EXPECT_THAT(run_on_terminal({"types", file_}), Not(HasSubstr("rows (")));
}

TEST_F(Terminal, ShowsTheHeadingInBold) {
  EXPECT_THAT(run_on_terminal({"types", file_}), HasSubstr(std::string(kBold) + "column"));
}

TEST_F(Terminal, IsLeftWithoutColourOnRequest) {
  ASSERT_EQ(::setenv("NO_COLOR", "1", 1), 0);
  const std::string written = run_on_terminal({"types", file_});
  ::unsetenv("NO_COLOR");
  EXPECT_THAT(written, Not(HasSubstr("\x1b")));
}

TEST_F(Terminal, IsTheOnlyPlaceForColourAndProgress) {
  const std::vector<std::string> commands[] = {
      {"types", file_, "--count"}, {"summary", file_}, {"convert", file_}};
  for (const std::vector<std::string>& arguments : commands) {
    SCOPED_TRACE(arguments.front());
    const Outcome run = run_program(arguments);
    EXPECT_THAT(run.out, Not(HasSubstr("\x1b")));
    EXPECT_EQ(run.errors, "");
  }
}

}  // namespace
}  // namespace numera::testing
