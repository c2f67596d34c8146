#pragma once

/// \file
/// Runs the real program and reads its output.

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "tests/tools/written_files.h"

namespace numera::testing {

/// The result of a run of the program.
struct Outcome {
  int exit_status = -1;  ///< 128 and the number of the signal if one ended it
  std::string out;
  std::string errors;

  bool operator==(const Outcome&) const = default;
};

void PrintTo(const Outcome& run, std::ostream* stream);

struct RunOptions {
  std::string in = {};   ///< a file for standard input
  std::string out = {};  ///< a file for standard output; `Outcome::out` is then empty
  std::optional<std::uint64_t> file_size = {};    ///< maximum size of a file that it writes
  std::optional<std::uint64_t> cpu_seconds = {};  ///< CPU time after which a signal ends it
  bool unprivileged = false;                      ///< runs as nobody if the tests run as root
  std::vector<int> closed = {};                   ///< standard streams that are closed at its start
  std::vector<int> ignored = {};                  ///< signals that are ignored from its start
  bool closed_pipe = false;                       ///< standard output is a pipe that nobody reads
};

/// A running program. The destructor kills it if nobody has waited for it.
class RunningProgram {
 public:
  /// Throws if it cannot be started.
  explicit RunningProgram(const std::vector<std::string>& arguments,
                          const RunOptions& options = {});
  ~RunningProgram();
  RunningProgram(const RunningProgram&) = delete;
  RunningProgram& operator=(const RunningProgram&) = delete;

  void send(int signal) const;
  Outcome wait();
  /// The peak memory use. Valid after `wait`.
  std::int64_t peak_bytes() const { return peak_bytes_; }

 private:
  TemporaryFolder folder_;
  std::string out_;
  pid_t process_ = 0;
  std::int64_t peak_bytes_ = 0;
};

/// Runs the program with the arguments and waits for it.
Outcome run_program(const std::vector<std::string>& arguments, const RunOptions& options = {});

/// The output of the program on a terminal, which is both its standard output and standard error. A
/// width of 0 is not known to the program.
std::string run_on_terminal(const std::vector<std::string>& arguments, unsigned short width = 0);

/// What a shell command prints on both streams.
std::string printed_by_shell(const std::string& command);

/// What a command prints for a file. Expects success and nothing on standard error.
std::string printed(const std::string& command, const std::string& file,
                    const std::vector<std::string>& options = {});

/// The output of `convert`. Expects that the file is read and comes back.
std::string converted(const std::string& file, const std::vector<std::string>& options = {});

/// Expects that `convert` prints one line on standard error with the file and the reason, prints
/// nothing on standard output, and exits with status 1.
void expect_refusal(const std::string& file, const std::string& reason,
                    const RunOptions& options = {});

/// The rows of a printed table up to the first empty line, without the heading. Cells are separated
/// by " | ", whatever the widths of the columns.
std::string table_rows(const std::string& printed);

/// The one line of `printed` that starts with `start`, or "".
std::string line_that_starts(const std::string& printed, const std::string& start);

}  // namespace numera::testing
