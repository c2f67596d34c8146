#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "numera/version.h"
#include "tests/tools/program.h"
#include "tests/tools/written_files.h"

namespace numera::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

TEST(Usage, VersionGoesToStandardOutput) {
  const Outcome expected{0, "numera-arrow " + std::string(kVersion) + "\n", ""};
  EXPECT_EQ(run_program({"--version"}), expected);
}

TEST(Usage, HelpNamesTheCommands) {
  const Outcome run = run_program({"--help"});
  EXPECT_EQ(run.exit_status, 0);
  EXPECT_THAT(run.out, HasSubstr("numera-arrow [OPTIONS] SUBCOMMAND"));
  for (const char* command : {"types", "show", "convert"}) {
    EXPECT_THAT(run.out, HasSubstr(std::string("\n  ") + command + " "));
  }
  EXPECT_THAT(run.errors, IsEmpty());
}

TEST(Usage, HelpOfConvertNamesItsArguments) {
  const Outcome run = run_program({"convert", "--help"});
  EXPECT_EQ(run.exit_status, 0);
  EXPECT_THAT(run.out, HasSubstr("FILE"));
  EXPECT_THAT(run.out, HasSubstr("--batch-rows"));
  EXPECT_THAT(run.errors, IsEmpty());
}

TEST(Usage, WrongUsageExitsWith2AndSaysWhyOnStandardError) {
  struct Case {
    std::vector<std::string> arguments;
    std::string reason;
  };
  const Case cases[] = {
      {{}, "A subcommand is required"},
      {{"frobnicate"}, "frobnicate"},
      {{"convert"}, "FILE is required"},
      {{"convert", "one", "two"}, "two"},
      {{"convert", "--frobnicate", "one"}, "--frobnicate"},
      {{"--frobnicate"}, "--frobnicate"},
      {{"types", "--columns", "a", "one"}, "--columns"},
      {{"types", "--output", "out.arrow", "one"}, "--output"},
      {{"show", "--rows", "-1", "one"}, "--rows"},
      {{"show", "--rows", "ten", "one"}, "--rows"},
      {{"show", "one", "--columns"}, "--columns"},
      {{"convert", "--batch-rows", "0", "one"}, "--batch-rows"},
      {{"convert", "--output"}, "--output"},
      {{"convert", "--output", "", "one"}, "--output: the name is empty"},
      {{"convert", "--threads", "-1", "one"}, "--threads"},
      {{"convert", "--threads", "many", "one"}, "--threads"},
  };
  for (const Case& wrong : cases) {
    SCOPED_TRACE(wrong.reason);
    const Outcome run = run_program(wrong.arguments);
    EXPECT_EQ(run.exit_status, 2);
    EXPECT_THAT(run.out, IsEmpty());
    EXPECT_THAT(run.errors, HasSubstr(wrong.reason));
  }
}

TEST(Usage, WhatIsWrongWithAnArgumentNeverCommandsATerminal) {
  const Outcome run = run_program({"a\x1b[31m\xFF"});
  EXPECT_EQ(run.exit_status, 2);
  EXPECT_THAT(run.errors, HasSubstr("a?[31m?"));
  EXPECT_EQ(run.errors.find('\x1b'), std::string::npos);
}

TEST(Usage, HelpThatCannotBeWrittenIsAFailure) {
  EXPECT_EQ(run_program({"--help"}, {.out = "/dev/full"}).exit_status, 1);
}

TEST(Usage, AResultThatCannotBeWrittenIsAFailure) {
  const TemporaryFolder folder;
  const std::string file = folder.path("small.parquet");
  write_parquet(file, *table_of({{"n", ::arrow::int32(), "[1, 2]"}}));
  const Outcome expected{1, "", "numera-arrow: " + file + ": the result cannot be written\n"};
  for (const char* command : {"types", "show", "convert"}) {
    SCOPED_TRACE(command);
    EXPECT_EQ(run_program({command, file}, {.out = "/dev/full"}), expected);
  }
}

}  // namespace
}  // namespace numera::testing
