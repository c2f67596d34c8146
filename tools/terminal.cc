#include "tools/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <charconv>
#include <cstdlib>
#include <iostream>
#include <string_view>
#include <system_error>

#include "tools/text_table.h"

namespace numera::tools {

bool output_has_colour(int stream) {
  // NOLINTNEXTLINE(concurrency-mt-unsafe): nobody changes the environment
  return ::isatty(stream) == 1 && std::getenv("NO_COLOR") == nullptr;
}

std::optional<size_t> output_width() {
  winsize size = {};
  if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) return size.ws_col;
  // NOLINTNEXTLINE(concurrency-mt-unsafe): nobody changes the environment
  const char* text = std::getenv("COLUMNS");
  if (text == nullptr) return std::nullopt;
  const std::string_view digits = text;
  size_t columns = 0;
  const auto [end, error] = std::from_chars(digits.begin(), digits.end(), columns);
  const bool read = error == std::errc() && end == digits.end();
  return read && columns > 0 ? std::optional(columns) : std::nullopt;
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
