#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace numera::tools {

/// How far a command is.
struct Work {
  std::int64_t rows = 0;
  std::optional<std::int64_t> all_rows = {};
  std::int64_t bytes = 0;
  std::optional<std::int64_t> all_bytes = {};
  double seconds = 0;  ///< since the start
};

/// "2 of 4 rows (50 %), 1.2 of 2.3 MB, 1.1 MB/s, 1 s left". The rate and the time that is left need
/// a second of work.
std::string progress_text(const Work& work);

/// Says when a line is shown anew: at most ten times a second.
class Pace {
 public:
  using Time = std::chrono::steady_clock::time_point;

  bool is_due(Time now);

 private:
  std::optional<Time> last_;
};

}  // namespace numera::tools
