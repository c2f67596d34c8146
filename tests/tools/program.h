#pragma once

/// \file
/// Runs the real program, and reads what it prints.

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "tests/tools/written_files.h"

namespace numera::testing {

/// How a run of the program ended.
struct Outcome {
  int exit_status = -1;  ///< -1: ended by a signal
  std::string out;
  std::string errors;

  bool operator==(const Outcome&) const = default;
};

void PrintTo(const Outcome& run, std::ostream* stream);

struct RunOptions {
  std::string out = {};  ///< a file for standard output, which is not read then
  std::optional<std::uint64_t> file_size = {};    ///< most bytes of a file that it writes
  std::optional<std::uint64_t> cpu_seconds = {};  ///< a signal ends what takes longer
  bool unprivileged = false;                      ///< as nobody, where the tests run as root
  std::vector<int> closed = {};                   ///< standard streams that it is started without
  std::vector<int> ignored = {};                  ///< signals that it is started to ignore
};

/// The program while it runs. Ends it where nobody has waited for it.
class RunningProgram {
 public:
  /// Throws where it cannot be started.
  explicit RunningProgram(const std::vector<std::string>& arguments,
                          const RunOptions& options = {});
  ~RunningProgram();
  RunningProgram(const RunningProgram&) = delete;
  RunningProgram& operator=(const RunningProgram&) = delete;

  void send(int signal) const;
  Outcome wait();
  /// The most memory that it held at once. After `wait`.
  std::int64_t peak_bytes() const { return peak_bytes_; }

 private:
  TemporaryFolder folder_;
  std::string out_;
  pid_t process_ = 0;
  std::int64_t peak_bytes_ = 0;
};

/// Runs the program with the arguments and waits for it.
Outcome run_program(const std::vector<std::string>& arguments, const RunOptions& options = {});

/// What the program writes to a terminal, which is its standard output and its standard error.
std::string run_on_terminal(const std::vector<std::string>& arguments);

/// What `convert` prints for a file that is read and returns; a failed expectation otherwise.
std::string converted(const std::string& file, const std::vector<std::string>& options = {});

/// Expects of `convert` one line on standard error that names the file and gives the reason,
/// nothing on standard output, exit status 1.
void expect_refusal(const std::string& file, const std::string& reason,
                    const RunOptions& options = {});

/// The rows of a printed table down to the first empty line, cells apart by " | " however wide its
/// columns are, the heading left out.
std::string table_rows(const std::string& printed);

/// The one line of `printed` that starts with `start`, or "".
std::string line_that_starts(const std::string& printed, const std::string& start);

}  // namespace numera::testing
