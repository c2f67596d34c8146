#include "tools/terminal.h"

#include <unistd.h>

#include <cstdlib>
#include <iostream>

#include "tools/text_table.h"

namespace numera::tools {

bool output_has_colour() {
  // NOLINTNEXTLINE(concurrency-mt-unsafe): nobody changes the environment
  return ::isatty(STDOUT_FILENO) == 1 && std::getenv("NO_COLOR") == nullptr;
}

Progress::Progress(std::optional<std::int64_t> rows)
    : wanted_(::isatty(STDERR_FILENO) == 1), rows_(rows) {}

void Progress::show(std::int64_t rows_done) {
  if (!wanted_) return;
  std::string line = grouped(rows_done);
  if (rows_) line += " of " + grouped(*rows_);
  line += " rows";
  if (rows_ && *rows_ > 0) line += " (" + std::to_string(rows_done * 100 / *rows_) + " %)";
  clear();
  std::cerr << line << std::flush;
  shown_ = std::move(line);
}

void Progress::clear() {
  if (shown_.empty()) return;
  std::cerr << '\r' << std::string(shown_.size(), ' ') << '\r' << std::flush;
  shown_.clear();
}

}  // namespace numera::tools
