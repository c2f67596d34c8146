// Kills the program after each change of a file, one change per run. Between two changes all
// moments are equivalent.

#include <fcntl.h>
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

/// The names and sizes of the files.
using Folder = std::map<std::string, std::uintmax_t>;

Folder contents_of(const std::string& path) {
  Folder contents;
  for (const auto& entry : fs::directory_iterator(path)) {
    contents[entry.path().filename()] = entry.file_size();
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

TEST(Killed, AfterAnyChangeOfAFileItLeavesTheOldOutputOrTheWholeNewOne) {
  for (const char* name : {"back.arrow", "back.parquet"}) {
    SCOPED_TRACE(name);
    const TemporaryFolder inputs;
    const std::string file = inputs.path("few.csv");
    write_text(file, "a,b\n1,2\n3,4\n");
    const auto expected =
        table_of({{"a", ::arrow::int64(), "[1, 3]"}, {"b", ::arrow::int64(), "[2, 4]"}});
    int kills = 0;
    for (bool replaced = false;; ++kills) {
      SCOPED_TRACE(kills);
      const TemporaryFolder folder;
      const std::string output = folder.path(name);
      write_text(output, "older");
      const pid_t process = start_traced({"convert", file, "--output", output});
      if (process == 0) GTEST_SKIP() << "the system lets no process be traced";
      const bool killed = kill_after(process, folder.path(""), kills + 1);
      const bool intact = read_text(output) == "older";
      EXPECT_FALSE(replaced && intact);
      replaced = !intact;
      // Until the output is replaced, a part file lies beside it.
      EXPECT_EQ(folder.names().size(), replaced ? 1U : 2U);
      if (replaced) {
        const bool is_parquet = output.ends_with("parquet");
        EXPECT_TRUE((is_parquet ? read_parquet(output) : read_ipc(output))->Equals(*expected));
      }
      if (!killed) break;
    }
    EXPECT_GE(kills, 6);  // the part file appears, is written in pieces, and replaces the output
  }
}

}  // namespace
}  // namespace numera::testing
