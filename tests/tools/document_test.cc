// The sessions in docs/program.md must match what the program prints. Every "$" line of a console
// block runs in a copy of examples/data, one after another.

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <regex>
#include <sstream>

#include "tests/tools/program.h"

namespace numera::testing {
namespace {

namespace fs = std::filesystem;

/// Masks times, which vary from run to run.
std::string without_times(const std::string& text) {
  static const std::regex kSeconds("in [0-9]+[.][0-9]{6} s");
  return std::regex_replace(text, kSeconds, "in TIME s");
}

/// The document with the current output of its commands.
std::string renewed(const std::string& document) {
  std::istringstream lines(document);
  std::string renewed;
  std::string line;
  bool in_session = false;
  bool in_output = false;
  while (std::getline(lines, line)) {
    if (line == "```console") in_session = true;
    if (line == "```") in_session = in_output = false;
    const bool command = in_session && line.starts_with("$ ");
    if (command || !in_output) renewed += line + "\n";
    if (!command) continue;
    renewed += printed_by_shell(line.substr(2));
    in_output = true;
  }
  return renewed;
}

/// A copy of the examples, with one more file of which two columns have no host form.
class CopyOfTheExamples {
 public:
  CopyOfTheExamples() : before_(fs::current_path()) {
    fs::copy(NUMERA_EXAMPLE_DATA, folder_.path("data"));
    write_ipc(folder_.path("data/prices.arrow"),
              *table_of({{"price", ::arrow::decimal128(9, 2), R"(["1.25", null])"},
                         {"of", ::arrow::utf8_view(), R"(["tea", "milk"])"},
                         {"sold", ::arrow::int64(), "[3, 4]"}}));
    fs::current_path(folder_.path("data"));
  }
  ~CopyOfTheExamples() { fs::current_path(before_); }
  CopyOfTheExamples(const CopyOfTheExamples&) = delete;
  CopyOfTheExamples& operator=(const CopyOfTheExamples&) = delete;

 private:
  fs::path before_;
  TemporaryFolder folder_;
};

TEST(Document, ShowsWhatTheProgramPrints) {
  const std::string path = std::getenv("PATH");
  ::setenv("PATH", (fs::path(NUMERA_PROGRAM).parent_path().string() + ":" + path).c_str(), 1);
  ::unsetenv("COLUMNS");  // some shells export their width
  const CopyOfTheExamples here;
  const std::string document = read_text(NUMERA_PROGRAM_DOCUMENT);
  ASSERT_NE(document.find("```console\n$ numera-arrow "), std::string::npos);
  EXPECT_EQ(without_times(document), without_times(renewed(document)));
  ::setenv("PATH", path.c_str(), 1);
}

}  // namespace
}  // namespace numera::testing
