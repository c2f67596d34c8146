// What the program writes about itself: completion for shells, and the manual.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>
#include <set>
#include <sstream>

#include "tests/tools/program.h"
#include "tools/exit_status.h"

namespace numera::testing {
namespace {

using ::testing::HasSubstr;

const std::vector<std::string> kCommands = {"types", "head",    "tail",       "show", "summary",
                                            "tree",  "convert", "completion", "man"};

std::string printed_by(const std::vector<std::string>& arguments) {
  Outcome run = run_program(arguments);
  EXPECT_EQ(run.exit_status, 0);
  EXPECT_EQ(run.errors, "");
  return std::move(run.out);
}

bool is_installed(const std::string& program) {
  return !printed_by_shell("command -v " + program).empty();
}

/// The long options in the help of a command.
std::set<std::string> options_of(const std::string& command) {
  static const std::regex kOption("\n  (?:-[a-zA-Z],)?(--[a-z-]+)");
  const std::string help = printed_by({command, "--help"});
  std::set<std::string> options;
  for (auto found = std::sregex_iterator(help.begin(), help.end(), kOption);
       found != std::sregex_iterator(); ++found) {
    options.insert((*found)[1]);
  }
  return options;
}

/// From `start` up to `end`, or to the end of the text.
std::string part(const std::string& text, const std::string& start, const std::string& end) {
  const size_t from = text.find(start);
  if (from == std::string::npos) return "";
  return text.substr(from, text.find(end, from + start.size()) - from);
}

/// What bash completes the last of some words to, one a line. "(files)" are names of files.
class BashCompletion : public ::testing::Test {
 protected:
  BashCompletion() { write_text(script_, printed_by({"completion", "bash"})); }

  std::string completed(const std::string& words) const {
    const std::string last = "$((${#COMP_WORDS[@]} - 1))";
    const std::string commands = "compopt() { echo '(files)'; }; source " + script_ +
                                 "; COMP_WORDS=(" + words + "); COMP_CWORD=" + last +
                                 "; _numera_arrow; printf '%s\\n' \"${COMPREPLY[@]}\"";
    write_text(folder_.path("run"), commands);
    std::string text = printed_by_shell("bash " + folder_.path("run"));
    text.erase(text.find_last_not_of('\n') + 1);
    return text;
  }

  TemporaryFolder folder_;
  std::string script_ = folder_.path("completion");
};

TEST_F(BashCompletion, KnowsEveryCommand) {
  EXPECT_EQ(
      completed("numera-arrow ''"),
      "types\nhead\ntail\nshow\nsummary\ntree\nconvert\ncompletion\nman\n-h\n--help\n--version");
}

TEST_F(BashCompletion, KnowsEveryOptionOfACommand) {
  for (const std::string& command : kCommands) {
    SCOPED_TRACE(command);
    std::istringstream lines(completed("numera-arrow " + command + " --"));
    std::set<std::string> found;
    for (std::string line; std::getline(lines, line);) found.insert(line);
    EXPECT_EQ(found, options_of(command));
  }
}

TEST_F(BashCompletion, CompletesWhatIsBegun) {
  EXPECT_EQ(completed("numera-arrow co"), "convert\ncompletion");
  EXPECT_EQ(completed("numera-arrow convert rows.csv --b"), "--batch-rows");
  EXPECT_EQ(completed("numera-arrow completion z"), "zsh");
}

TEST_F(BashCompletion, CompletesFilesWhereTheyStand) {
  EXPECT_EQ(completed("numera-arrow show ro"), "(files)");
  EXPECT_EQ(completed("numera-arrow convert rows.csv -o ''"), "(files)");
  EXPECT_EQ(completed("numera-arrow convert rows.csv --output = ba"), "(files)");
}

TEST_F(BashCompletion, CompletesNoNumbersAndNoNames) {
  EXPECT_EQ(completed("numera-arrow show -n ''"), "");
  EXPECT_EQ(completed("numera-arrow show --rows = ''"), "");
  EXPECT_EQ(completed("numera-arrow show --column ''"), "");
}

TEST(ZshCompletion, KnowsEveryCommandAndItsOptions) {
  const std::string script = printed_by({"completion", "zsh"});
  for (const std::string& command : kCommands) {
    SCOPED_TRACE(command);
    EXPECT_THAT(script, HasSubstr("\n    '" + command + ":"));
    const std::string own = part(script, "\n        " + command + ")\n", ";;");
    for (const std::string& option : options_of(command)) EXPECT_THAT(own, HasSubstr(option));
  }
}

TEST(ZshCompletion, DescribesEachOptionOnce) {
  const std::string script = printed_by({"completion", "zsh"});
  EXPECT_EQ(part(script, "        head)\n", ";;"),
            R"(        head)
          _arguments \
            '(-h --help)'{-h,--help}'[Print this help message and exit]' \
            '*:FILE:_files' \
            '*'--columns='[Read only these columns, in this order, separated by commas]:NAMES: ' \
            '*'--column='[Read this column; may be repeated. A name may have commas and blanks]:NAME: ' \
            '(-n --rows)'{-n+,--rows=}'[Number of rows to print (default\: 10)]:NUMBER: ' \
            --json'[Print JSON\: an object per row and line, with every column]' \
            --vertical'[Print a block of lines per row, with every column]' \
            --csv-delimiter='[What separates the fields of CSV (default\: what splits the first line into most columns)]:CHARACTER: ' \
            --csv-no-heading'[The first line of CSV is a row; columns are called f0, f1 and so on]' \
            '*'--csv-null='[A further text that is null in CSV; may be repeated]:TEXT: ' \
            --csv-encoding='[The encoding of CSV, such as latin1 (default\: UTF-8)]:NAME: ' \
            --csv-types-of-all-rows'[Let all rows of CSV decide the types, not only the first MiB; reads it twice]' )");
}

TEST(ZshCompletion, IsReadByZsh) {
  if (!is_installed("zsh")) GTEST_SKIP() << "zsh is not installed";
  const TemporaryFolder folder;
  write_text(folder.path("script"), printed_by({"completion", "zsh"}));
  EXPECT_EQ(printed_by_shell("zsh -n " + folder.path("script")), "");
}

TEST(FishCompletion, KnowsEveryCommandAndItsOptions) {
  const std::string script = printed_by({"completion", "fish"});
  for (const std::string& command : kCommands) {
    SCOPED_TRACE(command);
    EXPECT_THAT(script, HasSubstr("-n __fish_use_subcommand -a " + command + " -d '"));
    for (const std::string& option : options_of(command)) {
      const std::regex line("-n '__fish_seen_subcommand_from " + command + "'(?: -s .)? -l " +
                            option.substr(2) + " ");
      EXPECT_TRUE(std::regex_search(script, line)) << option;
    }
  }
}

TEST(FishCompletion, DescribesEachOptionOnALine) {
  const std::string script = printed_by({"completion", "fish"});
  const std::string start = "complete -c numera-arrow -n '__fish_seen_subcommand_from convert' ";
  EXPECT_EQ(line_that_starts(script, start + "-s o"),
            start +
                "-s o -l output -r -F -d 'Write the returned columns to this file: .parquet, "
                ".arrow, .csv, .jsonl and others'");
  EXPECT_EQ(line_that_starts(script, start + "-l strict"),
            start + "-l strict -d 'Treat a change of type as a failure'");
}

TEST(FishCompletion, IsReadByFish) {
  if (!is_installed("fish")) GTEST_SKIP() << "fish is not installed";
  const TemporaryFolder folder;
  write_text(folder.path("script"), printed_by({"completion", "fish"}));
  EXPECT_EQ(printed_by_shell("fish -n " + folder.path("script")), "");
}

/// The text with the hyphens and minus signs of roff as "-".
std::string manual() { return std::regex_replace(printed_by({"man"}), std::regex(R"(\\-)"), "-"); }

TEST(Manual, HasItsSectionsInTheirOrder) {
  std::istringstream lines(manual());
  std::string sections;
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with(".SH ")) sections += line.substr(4) + "\n";
  }
  EXPECT_EQ(sections,
            "NAME\nSYNOPSIS\nDESCRIPTION\nOPTIONS\nCOMMANDS\nEXIT STATUS\nENVIRONMENT\nEXAMPLES\n");
}

TEST(Manual, HasEveryCommandAndItsOptions) {
  const std::string page = manual();
  for (const std::string& command : kCommands) {
    SCOPED_TRACE(command);
    const std::string own = part(page, "\n.SS " + command + "\n", "\n.S");
    for (const std::string& option : options_of(command)) {
      EXPECT_THAT(own, HasSubstr("\\fB" + option + "\\fR"));
    }
  }
}

TEST(Manual, HasEveryExitStatus) {
  const std::string own = part(manual(), "\n.SH EXIT STATUS\n", "\n.SH");
  std::string labels;
  static const std::regex kLabel("\n[.]TP\n\\\\fB(.*)\\\\fR\n");
  for (auto found = std::sregex_iterator(own.begin(), own.end(), kLabel);
       found != std::sregex_iterator(); ++found) {
    labels += (*found)[1].str() + " ";
  }
  EXPECT_EQ(labels, "0 1 2 129 130 141 143 128+N ");
}

TEST(Manual, HasTheExitStatusesOfTheDocument) {
  std::istringstream rows(part(read_text(NUMERA_PROGRAM_DOCUMENT), "| exit status |", "\n\n"));
  std::vector<std::string> stated;
  for (std::string row; std::getline(rows, row);)
    stated.push_back(row.substr(2, row.find(" |") - 2));
  std::vector<std::string> expected = {"exit status", "--|---|"};
  for (const tools::ExitStatus& exit : tools::kExitStatuses) expected.emplace_back(exit.status);
  EXPECT_EQ(stated, expected);
}

TEST(Manual, IsFormattedWithoutAWarning) {
  if (!is_installed("groff")) GTEST_SKIP() << "groff is not installed";
  const TemporaryFolder folder;
  write_text(folder.path("page"), printed_by({"man"}));
  EXPECT_EQ(printed_by_shell("groff -man -Tutf8 -ww -z " + folder.path("page")), "");
}

TEST(SelfDescriptions, ThatCannotBeWrittenAreAFailure) {
  EXPECT_EQ(run_program({"man"}, {.out = "/dev/full"}).exit_status, 1);
  EXPECT_EQ(run_program({"completion", "bash"}, {.out = "/dev/full"}).exit_status, 1);
}

}  // namespace
}  // namespace numera::testing
