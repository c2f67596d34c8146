// Several files, folders, patterns, standard input and partitions, and options of CSV.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <thread>

#include "tests/tools/program.h"
#include "tests/tools/waiting.h"

namespace numera::testing {
namespace {

class SeveralFiles : public ::testing::Test {
 protected:
  TemporaryFolder folder_;
};

TEST_F(SeveralFiles, AreShownAsOneTable) {
  const std::string one = folder_.write("rows/1.csv", "n\n1\n");
  const std::string other = folder_.write("rows/2.csv", "n\n2\n");
  const std::string expected = "    n\nint64\n    1\n    2\n\n2 rows\n";
  EXPECT_EQ(run_program({"show", one, other}), (Outcome{0, expected, ""}));
  EXPECT_EQ(run_program({"show", folder_.path("rows")}), (Outcome{0, expected, ""}));
  EXPECT_EQ(run_program({"show", folder_.path("rows/*.csv")}), (Outcome{0, expected, ""}));
}

TEST_F(SeveralFiles, AreNamedInMessages) {
  const std::string one = folder_.write("rows/1.csv", "n\n1\n");
  const std::string other = folder_.write("rows/2.csv", "n\nx\n");
  const std::string reason =
      other + ": column 'n': found type string, and int64 in the files before it\n";
  EXPECT_EQ(run_program({"show", one, other}), (Outcome{1, "", "numera-arrow: " + reason}));
  const std::string folder = folder_.path("rows");
  EXPECT_EQ(run_program({"show", folder}),
            (Outcome{1, "", "numera-arrow: " + folder + ": " + reason}));
}

TEST_F(SeveralFiles, AreConvertedAsOneTable) {
  const std::string one = folder_.write("1.csv", "n\n1\n");
  const std::string output = folder_.path("back.arrow");
  EXPECT_EQ(run_program({"convert", one, one, "-o", output}).errors, "");
  EXPECT_TRUE(read_ipc(output)->Equals(*table_of({{"n", ::arrow::int64(), "[1, 1]"}})));
}

TEST_F(SeveralFiles, OfAFolderAreNotReplacedByTheOutput) {
  const std::string one = folder_.write("rows/1.csv", "n\n1\n");
  const std::string folder = folder_.path("rows");
  EXPECT_EQ(
      run_program({"convert", folder, "-o", one}),
      (Outcome{1, "",
               "numera-arrow: " + folder + ": cannot write " + one + ": it is the input file\n"}));
  EXPECT_EQ(read_text(one), "n\n1\n");
}

TEST_F(SeveralFiles, MayComeFromStandardInput) {
  const std::string one = folder_.write("1.csv", "n\n1\n");
  EXPECT_EQ(run_program({"show", "-"}, {.in = one}),
            (Outcome{0, "    n\nint64\n    1\n\n1 row\n", ""}));
  EXPECT_EQ(run_program({"show", "-"}),
            (Outcome{1, "", "numera-arrow: standard input: it is empty\n"}));
}

TEST_F(SeveralFiles, MayComeThroughANamedPipe) {
  const std::string pipe = folder_.path("pipe");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  RunningProgram program({"show", pipe});
  write_text(pipe, "n\n1\n");
  EXPECT_EQ(program.wait(), (Outcome{0, "    n\nint64\n    1\n\n1 row\n", ""}));
}

TEST_F(SeveralFiles, AreWrittenByTheValuesOfColumns) {
  const std::string one = folder_.write("1.csv", "k,n\na,1\nb,2\na,3\n");
  const std::string output = folder_.path("rows");
  EXPECT_EQ(run_program({"convert", one, "-o", output, "--partition-by", "k"}).errors, "");
  EXPECT_EQ(names_in(output), (std::vector<std::string>{"k=a", "k=b"}));
  EXPECT_EQ(printed("head", output),
            "    n  k\nint64  dictionary<string>\n    1  a\n    3  a\n"
            "    2  b\n");
}

TEST_F(SeveralFiles, OfPartitionsAreGoneAfterAFailure) {
  const std::string one = folder_.write("1.csv", "k,n\na,1\n");
  const std::string output = folder_.path("rows");
  EXPECT_EQ(run_program({"convert", one, "-o", output, "--partition-by", "x"}).errors,
            "numera-arrow: " + one + ": cannot write " + output + ": there is no column 'x'\n");
  EXPECT_EQ(folder_.names(), std::vector<std::string>{"1.csv"});
}

TEST_F(SeveralFiles, OfPartitionsAreGoneAfterAnInterrupt) {
  const std::string pipe = folder_.path("pipe");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  RunningProgram program({"convert", pipe, "-o", folder_.path("rows"), "--partition-by", "k"});
  std::string rows = "k,n\n";
  for (int i = 0; i < 300'000; ++i) rows += "a,1\nb,2\n";
  std::FILE* writer = std::fopen(pipe.c_str(), "w");
  ASSERT_NE(writer, nullptr);
  ASSERT_EQ(std::fwrite(rows.data(), 1, rows.size(), writer), rows.size());
  std::fflush(writer);  // all but what a pipe holds was read: the folder is begun
  ASSERT_EQ(folder_.names().size(), 2U);
  program.send(SIGINT);
  EXPECT_EQ(program.wait(), (Outcome{130, "", "numera-arrow: " + pipe + ": interrupted\n"}));
  std::fclose(writer);
  EXPECT_EQ(folder_.names(), std::vector<std::string>{"pipe"});
}

TEST_F(SeveralFiles, AreInterruptedWhileAPipeHasNoWriter) {
  const std::string pipe = folder_.path("pipe");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  RunningProgram program({"convert", pipe});
  std::this_thread::sleep_for(std::chrono::milliseconds(300));
  program.send(SIGINT);
  EXPECT_EQ(program.wait(), (Outcome{130, "", "numera-arrow: " + pipe + ": interrupted\n"}));
}

/// A change of an input before it is read, and why it is refused.
struct EarlyChange {
  const char* name;
  void (*apply)(const std::string& file);
  const char* reason;
};

constexpr EarlyChange kEarlyChanges[] = {
    {"cut", [](const std::string& file) { write_text(file, "a\n5\n"); },
     "it changed while it was read"},
    {"longer", [](const std::string& file) { write_text(file, "a\n5\n6\n7\n"); },
     "it changed while it was read"},
    {"of another type", [](const std::string& file) { write_text(file, "a\nx\ny\n"); },
     "it changed while it was read"},
    {"empty", [](const std::string& file) { write_text(file, ""); }, "it is empty"},
    {"removed", [](const std::string& file) { std::filesystem::remove(file); },
     "No such file or directory"}};

/// The first input is a pipe, for which the program waits while the second one changes.
TEST_F(SeveralFiles, AreRefusedIfOneChangesBeforeItsTurn) {
  const std::string pipe = folder_.path("pipe");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  for (const EarlyChange& change : kEarlyChanges) {
    SCOPED_TRACE(change.name);
    const std::string later = folder_.write("later.csv", "a\n5\n6\n");
    const std::string output = folder_.write("back.arrow", "older");
    RunningProgram program({"convert", pipe, later, "-o", output});
    std::ofstream first(pipe, std::ios::binary);
    first << "a\n";
    for (int i = 0; i < 600'000; ++i) first << "1\n";  // more than decides the types
    first.flush();
    wait_until([this] { return folder_.names().size() == 4; });  // the part of the output is there
    change.apply(later);
    first.close();
    const Outcome expected{1, "", "numera-arrow: " + later + ": " + change.reason + "\n"};
    EXPECT_EQ(program.wait(), expected);
    EXPECT_EQ(read_text(output), "older");
    folder_.write("later.csv", "");
    EXPECT_EQ(folder_.names(), (std::vector<std::string>{"back.arrow", "later.csv", "pipe"}));
  }
}

TEST_F(SeveralFiles, OfCsvAreReadAsTheOptionsSay) {
  struct Case {
    const char* text;
    std::vector<std::string> options;
    const char* printed;
  };
  const Case cases[] = {
      {"a,b;c\n1,2;3\n", {"--csv-delimiter", ";"}, "a,b         c\nstring  int64\n1,2         3\n"},
      {"a\tb,c\n1\t2,3\n", {"--csv-delimiter", "tab"}, "    a  b,c\nint64  string\n    1  2,3\n"},
      {"1\n2\n", {"--csv-no-heading"}, "   f0\nint64\n    1\n    2\n"},
      {"a\n-9\n2\n-\n",
       {"--csv-null", "-9", "--csv-null=-"},
       "    a\nint64\n null\n    2\n null\n"},
      {"a\nna\xEFve\n", {"--csv-encoding", "latin1"}, "a\nstring\nnaïve\n"},
  };
  for (const Case& one : cases) {
    SCOPED_TRACE(one.text);
    EXPECT_EQ(printed("head", folder_.write("1.csv", one.text), one.options), one.printed);
  }
}

TEST_F(SeveralFiles, OfCsvHaveTheTypesOfAllRowsIfAsked) {
  std::string text = "a\n";
  while (text.size() < (std::size_t{1} << 20)) text += "1\n";
  const std::string file = folder_.write("1.csv", text + "x\n");
  EXPECT_EQ(printed("head", file, {"-n", "1", "--csv-types-of-all-rows"}), "a\nstring\n1\n");
}

}  // namespace
}  // namespace numera::testing
