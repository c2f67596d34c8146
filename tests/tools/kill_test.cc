// Kills the program after each change of a file, one change per run. Between two changes all
// moments are equivalent.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <map>

#include "tests/tools/program.h"

namespace numera::testing {
namespace {

namespace fs = std::filesystem;

using ::testing::ElementsAre;
using ::testing::MatchesRegex;

/// The paths and sizes of files. Folders have no size.
using Folder = std::map<std::string, std::uintmax_t>;

Folder contents_of(const std::string& path) {
  Folder contents;
  for (const auto& entry : fs::recursive_directory_iterator(path)) {
    contents[entry.path()] = entry.is_directory() ? 0 : entry.file_size();
  }
  return contents;
}

/// Starts the program, traced by this process. Returns 0 if the system does not allow that.
pid_t start_traced(std::vector<std::string> arguments) {
  std::string program = NUMERA_PROGRAM;
  std::vector<char*> pointers = {program.data()};
  for (std::string& argument : arguments) pointers.push_back(argument.data());
  pointers.push_back(nullptr);
  const pid_t process = ::fork();
  if (process == 0) {
    ::setenv("LSAN_OPTIONS", "detect_leaks=0", 1);  // LeakSanitizer would need ptrace itself
    if (::dup2(::open("/dev/null", O_WRONLY | O_CLOEXEC), STDOUT_FILENO) < 0) ::_exit(126);
    if (::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) == 0) ::execv(pointers[0], pointers.data());
    ::_exit(127);
  }
  int status = 0;
  ::waitpid(process, &status, 0);
  return WIFSTOPPED(status) ? process : 0;
}

/// Kills the traced program after `changes` changes of the folder. Returns false if it ended
/// before.
bool kill_after(pid_t process, const std::string& folder, int changes) {
  ::ptrace(PTRACE_SETOPTIONS, process, nullptr, PTRACE_O_EXITKILL | PTRACE_O_TRACESYSGOOD);
  Folder last = contents_of(folder);
  long signal = 0;
  while (true) {
    int status = 0;
    ::ptrace(PTRACE_SYSCALL, process, nullptr, signal);
    ::waitpid(process, &status, 0);
    if (!WIFSTOPPED(status)) return false;
    const int reason = WSTOPSIG(status);
    const bool is_call = (reason & ~0x80) == SIGTRAP;
    signal = is_call ? 0 : reason;
    if (!is_call) continue;
    Folder now = contents_of(folder);
    if (now == last) continue;
    last = std::move(now);
    if (--changes > 0) continue;
    ::kill(process, SIGKILL);
    ::waitpid(process, &status, 0);
    return true;
  }
}

/// An output, and the inputs that become it. All of them have the same rows together.
struct KilledConversion {
  const char* output;
  std::vector<std::string> inputs;
};

std::shared_ptr<::arrow::Table> rows_of_inputs() {
  return table_of({{"a", ::arrow::int64(), "[1, 3]"}, {"b", ::arrow::int64(), "[2, 4]"}});
}

TEST(Killed, AfterAnyChangeOfAFileItLeavesTheOldOutputOrTheWholeNewOne) {
  const TemporaryFolder inputs;
  const std::string both = inputs.write("both.csv", "a,b\n1,2\n3,4\n");
  const std::string first = inputs.write("first.csv", "a,b\n1,2\n");
  const std::string second = inputs.write("second.csv", "a,b\n3,4\n");
  const KilledConversion conversions[] = {
      {"back.arrow", {both}}, {"back.parquet", {both}}, {"back.arrow", {first, second}}};
  for (const auto& [name, files] : conversions) {
    SCOPED_TRACE(std::string(name) + " of " + std::to_string(files.size()));
    int kills = 0;
    for (bool replaced = false;; ++kills) {
      SCOPED_TRACE(kills);
      const TemporaryFolder folder;
      const std::string output = folder.path(name);
      write_text(output, "older");
      std::vector<std::string> arguments = {"convert", "--output", output};
      arguments.insert(arguments.end(), files.begin(), files.end());
      const pid_t process = start_traced(arguments);
      if (process == 0) GTEST_SKIP() << "the system lets no process be traced";
      const bool killed = kill_after(process, folder.path(""), kills + 1);
      const bool intact = read_text(output) == "older";
      EXPECT_FALSE(replaced && intact);
      replaced = !intact;
      // Until the output is replaced, a part file lies beside it.
      EXPECT_EQ(folder.names().size(), replaced ? 1U : 2U);
      if (replaced) {
        const bool is_parquet = output.ends_with("parquet");
        const auto table = is_parquet ? read_parquet(output) : read_ipc(output);
        EXPECT_TRUE(table->Equals(*rows_of_inputs()));
      }
      if (!killed) break;
    }
    EXPECT_GE(kills, 6);  // the part file appears, is written in pieces, and replaces the output
  }
}

TEST(Killed, AfterAnyChangeOfAFileItLeavesAPartOrTheWholeFolderOfPartitions) {
  const TemporaryFolder inputs;
  const std::string file = inputs.write("few.csv", "k,n\n1,2\n3,4\n");
  int kills = 0;
  for (bool in_place = false;; ++kills) {
    SCOPED_TRACE(kills);
    const TemporaryFolder folder;
    const std::string output = folder.path("rows");
    const pid_t process =
        start_traced({"convert", file, "-o", output, "--partition-by", "k", "--to", "csv"});
    if (process == 0) GTEST_SKIP() << "the system lets no process be traced";
    const bool killed = kill_after(process, folder.path(""), kills + 1);
    EXPECT_FALSE(in_place && !fs::exists(output));
    in_place = fs::exists(output);
    if (in_place) {
      EXPECT_EQ(folder.names(), std::vector<std::string>{"rows"});
      EXPECT_EQ(names_in(output), (std::vector<std::string>{"k=1", "k=3"}));
      EXPECT_EQ(read_text(output + "/k=1/part-0.csv"), "\"n\"\n2\n");
      EXPECT_EQ(read_text(output + "/k=3/part-0.csv"), "\"n\"\n4\n");
    } else {
      EXPECT_THAT(folder.names(), ElementsAre(MatchesRegex("[.]rows[.]part-......")));
      const std::string read = folder.path("");
      const Outcome nothing = {1, "", "numera-arrow: " + read + ": it is a folder without files\n"};
      EXPECT_EQ(run_program({"show", read}), nothing);
    }
    if (!killed) break;
  }
  EXPECT_GE(kills, 10);  // folders and files appear, are written and renamed, and all is renamed
}

}  // namespace
}  // namespace numera::testing
