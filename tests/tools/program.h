#pragma once

/// \file
/// Runs the real program, and reads what it prints.

#include <ostream>
#include <string>
#include <vector>

namespace numera::testing {

/// How a run of the program ended.
struct Outcome {
  int exit_status = -1;  ///< -1: ended by a signal
  std::string out;
  std::string errors;

  bool operator==(const Outcome&) const = default;
};

void PrintTo(const Outcome& run, std::ostream* stream);

/// Runs the program with the arguments and waits for it. Throws where it cannot be started.
Outcome run_program(const std::vector<std::string>& arguments);
/// The same with standard output written into the file, which exists.
Outcome run_program_into(const std::string& output_file, const std::vector<std::string>& arguments);

/// The rows of a printed table down to the first empty line, cells apart by " | " however wide its
/// columns are, the heading left out.
std::string table_rows(const std::string& printed);

/// The one line of `printed` that starts with `start`, or "".
std::string line_that_starts(const std::string& printed, const std::string& start);

}  // namespace numera::testing
