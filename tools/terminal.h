#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace numera::tools {

/// Whether the stream is a terminal that wants colours (NO_COLOR is not set). Results go to
/// standard output unless a caller says otherwise.
bool output_has_colour(int stream = 1);

/// The number of cells in a line of the terminal that results go to, else the environment variable
/// COLUMNS; none if neither says it.
std::optional<size_t> output_width();

/// One line on standard error that shows the progress of a command. Prints nothing unless standard
/// error is a terminal. The destructor wipes the line; call `clear` before other output.
class Progress {
 public:
  explicit Progress(std::optional<std::int64_t> rows);
  ~Progress() { clear(); }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void show(std::int64_t rows_done);
  void clear();

 private:
  bool wanted_;
  std::optional<std::int64_t> rows_;
  std::string shown_;
};

}  // namespace numera::tools
