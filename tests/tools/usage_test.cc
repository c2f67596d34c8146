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
  for (const char* command :
       {"types", "head", "tail", "show", "summary", "tree", "convert", "completion", "man"}) {
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

TEST(Usage, WrongUsageExitsWith2AndSaysWhyInOneLine) {
  const std::string program = "numera-arrow: ";
  const std::string in_show = "numera-arrow show: ";
  const std::string in_convert = "numera-arrow convert: ";
  const std::string show = " Example: numera-arrow show rows.parquet";
  const std::string show_rows = show + " --rows 5";
  const std::string convert = " Example: numera-arrow convert rows.parquet --output back.parquet";
  const std::string types = " Example: numera-arrow types rows.parquet";
  const std::string commands = "types, head, tail, show, summary, tree, convert, completion, man.";
  const std::string completion = "numera-arrow completion: ";
  const std::string source = " Example: source <(numera-arrow completion bash)";
  const std::string from = ", expected a number from ";
  const std::string most = " to 9223372036854775807.";
  struct Case {
    std::vector<std::string> arguments;
    std::string message;
  };
  const Case cases[] = {
      {{}, program + "found no command, expected one of " + commands + show},
      {{"shwo"}, program + "there is no command 'shwo'; did you mean 'show'?" + show},
      {{"conv", "one"}, program + "there is no command 'conv'; did you mean 'convert'?" + show},
      {{"one.csv"}, program + "there is no command 'one.csv'; the commands are " + commands + show},
      {{"--frobnicate"}, program + "there is no option '--frobnicate'." + show},
      {{"--versoin"}, program + "there is no option '--versoin'; did you mean '--version'?" + show},
      {{"-x"}, program + "there is no option '-x'." + show},
      {{"show"}, in_show + "FILE is required." + show_rows},
      {{"convert", "one", "--partition-by", "a"},
       in_convert + "--partition-by: there is no output; add --output." + convert},
      {{"show", "one", "--csv-delimiter", "ab"},
       in_show + "--csv-delimiter: found 'ab', expected one character or tab." + show_rows},
      {{"convert", "--batchrows=3", "one"},
       in_convert + "there is no option '--batchrows'; did you mean '--batch-rows'?" + convert},
      {{"show", "--rws", "3"},
       in_show + "there is no option '--rws'; did you mean '--rows'?" + show_rows},
      {{"types", "--columns", "a", "one"},
       "numera-arrow types: there is no option '--columns'." + types},
      {{"show", "--rows", "-1", "one"},
       in_show + "--rows: found -1" + from + "0" + most + show_rows},
      {{"show", "--rows=-1", "one"}, in_show + "--rows: found -1" + from + "0" + most + show_rows},
      {{"show", "-n", "ten", "one"}, in_show + "--rows: found ten" + from + "0" + most + show_rows},
      {{"show", "-n", "9223372036854775808", "one"},
       in_show + "--rows: found 9223372036854775808" + from + "0" + most + show_rows},
      {{"show", "-n", "1.5", "one"}, in_show + "--rows: found 1.5" + from + "0" + most + show_rows},
      {{"show", "-n", "1", "-n", "2", "one"},
       in_show + "--rows: found more than one value, expected one." + show_rows},
      {{"show", "one", "--columns"},
       in_show + "--columns: found no value, expected one." + show_rows},
      {{"convert", "--batch-rows", "0", "one"},
       in_convert + "--batch-rows: found 0" + from + "1" + most + convert},
      {{"convert", "one", "-o"}, in_convert + "--output: found no value, expected one." + convert},
      {{"convert", "--output", "", "one"}, in_convert + "--output: the name is empty." + convert},
      {{"convert", "--to", "parqet", "one"},
       in_convert + "--to: there is no format 'parqet'; did you mean 'parquet'?" + convert},
      {{"convert", "--to", "excel", "one"},
       in_convert +
           "--to: there is no format 'excel'; the formats are parquet, arrow, feather, ipc, "
           "arrows, csv, tsv, json, jsonl, ndjson." +
           convert},
      {{"convert", "--to", "csv", "--compression", "gzp:9", "one"},
       in_convert + "--compression: there is no compression 'gzp'; did you mean 'gzip'?" + convert},
      {{"convert", "--compression", "gzip", "one"},
       in_convert + "--compression: there is no output; add --to or --output." + convert},
      {{"show", "one", "--json", "--vertical"},
       in_show + "--json excludes --vertical." + show_rows},
      {{"convert", "one", "--show", "--json"}, in_convert + "--json excludes --show." + convert},
      {{"completion"}, completion + "SHELL is required." + source},
      {{"completion", "ksh"},
       completion + "SHELL: found ksh, expected bash, zsh or fish." + source},
      {{"completion", "bash", "zsh"}, completion + "found 'zsh', expected nothing more." + source},
      {{"man", "types"},
       "numera-arrow man: found 'types', expected nothing more. Example: numera-arrow man | man "
       "-l -"},
      {{"convert", "--threads", "many", "one"},
       in_convert + "--threads: found many" + from + "0" + most + convert},
  };
  for (const auto& [arguments, message] : cases) {
    EXPECT_EQ(run_program(arguments), (Outcome{2, "", message + "\n"}));
  }
}

TEST(Usage, ANumberIsDecimal) {
  const TemporaryFolder folder;
  const std::string file = folder.path("numbers.csv");
  write_text(file, "n\n1\n2\n3\n4\n5\n6\n7\n8\n9\n10\n");
  const Outcome expected{
      0, "    n\nint64\n    1\n    2\n    3\n    4\n    5\n    6\n    7\n    8\n    9\n   10\n",
      ""};
  EXPECT_EQ(run_program({"head", file, "-n", "010"}), expected);
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
  for (const char* command : {"types", "head", "tail", "show", "summary", "tree", "convert"}) {
    SCOPED_TRACE(command);
    EXPECT_EQ(run_program({command, file}, {.out = "/dev/full"}), expected);
  }
}

}  // namespace
}  // namespace numera::testing
