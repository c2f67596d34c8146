#include "tools/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <charconv>
#include <cstdlib>
#include <iostream>
#include <string_view>
#include <system_error>

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

Progress::Progress(const files::Source& source)
    : source_(source), wanted_(::isatty(STDERR_FILENO) == 1) {
  work_.all_rows = source.rows();
  work_.all_bytes = source.bytes();
}

void Progress::show(std::int64_t rows_done) {
  const auto now = std::chrono::steady_clock::now();
  if (!wanted_ || !pace_.is_due(now)) return;
  work_.rows = rows_done;
  work_.bytes = source_.bytes_read();
  work_.seconds = std::chrono::duration<double>(now - start_).count();
  clear();
  shown_ = progress_text(work_);
  std::cerr << shown_ << std::flush;
}

void Progress::clear() {
  if (shown_.empty()) return;
  std::cerr << '\r' << std::string(shown_.size(), ' ') << '\r' << std::flush;
  shown_.clear();
}

}  // namespace numera::tools
