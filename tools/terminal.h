#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "numera/files/read.h"
#include "tools/progress.h"

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
  /// `source` outlives it. Another thread may read from the source.
  explicit Progress(const files::Source& source);
  ~Progress() { clear(); }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  /// Shows the line anew unless it was just shown.
  void show(std::int64_t rows_done);
  void clear();

 private:
  const files::Source& source_;
  bool wanted_;
  Work work_;
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
  Pace pace_;
  std::string shown_;
};

}  // namespace numera::tools
