#include "tools/progress.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <utility>

#include "tools/text_table.h"

namespace numera::tools {
namespace {

/// A unit of bytes, and how many bytes it has.
using Unit = std::pair<const char*, double>;

Unit unit_of(double bytes) {
  constexpr std::array<Unit, 4> kUnits = {{{"B", 1}, {"kB", 1e3}, {"MB", 1e6}, {"GB", 1e9}}};
  const auto* unit = kUnits.begin();
  while (unit + 1 != kUnits.end() && bytes >= (unit + 1)->second) ++unit;
  return *unit;
}

std::string in_unit(double bytes, const Unit& unit) {
  char text[32];
  std::snprintf(text, sizeof text, unit.second > 1 ? "%.1f" : "%.0f", bytes / unit.second);
  return text;
}

/// How much of the work is done, from 0 to 1; none if nobody knows.
std::optional<double> share_done(const Work& work) {
  const auto share = [](std::int64_t part, std::optional<std::int64_t> all) {
    const double ratio = static_cast<double>(part) / static_cast<double>(all.value_or(1));
    return all.value_or(0) > 0 ? std::optional(std::min(ratio, 1.0)) : std::nullopt;
  };
  const auto rows = share(work.rows, work.all_rows);
  return rows ? rows : share(work.bytes, work.all_bytes);
}

std::string duration_text(double seconds) {
  const auto left = static_cast<std::int64_t>(std::ceil(seconds));
  if (left < 60) return std::to_string(left) + " s";
  if (left < 3600) return std::to_string(left / 60) + " min " + std::to_string(left % 60) + " s";
  return grouped(left / 3600) + " h " + std::to_string(left / 60 % 60) + " min";
}

}  // namespace

std::string progress_text(const Work& work) {
  std::string text = grouped(work.rows);
  if (work.all_rows) text += " of " + grouped(*work.all_rows);
  text += " rows";
  const auto share = share_done(work);
  if (share) text += " (" + std::to_string(static_cast<int>(*share * 100)) + " %)";
  const auto bytes = static_cast<double>(work.bytes);
  if (work.all_bytes) {
    const auto all = static_cast<double>(*work.all_bytes);
    const Unit unit = unit_of(all);
    text += ", " + in_unit(bytes, unit) + " of " + in_unit(all, unit) + " " + unit.first;
  }
  if (work.seconds < 1) return text;
  if (work.bytes > 0) {
    const double rate = bytes / work.seconds;
    const Unit unit = unit_of(rate);
    text += ", " + in_unit(rate, unit) + " " + unit.first + "/s";
  }
  constexpr double kLeast = 1e-6;  // less says nothing about the time
  if (share && *share > kLeast) {
    text += ", " + duration_text(work.seconds * (1 - *share) / *share) + " left";
  }
  return text;
}

bool Pace::is_due(Time now) {
  if (last_ && now - *last_ < std::chrono::milliseconds(100)) return false;
  last_ = now;
  return true;
}

}  // namespace numera::tools
