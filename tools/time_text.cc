#include "tools/time_text.h"

#include <cstdio>

namespace numera::tools {
namespace {

constexpr std::int64_t kSecondsPerDay = 86400;
constexpr std::int64_t kDaysPerEra = 146097;  // 400 years, after which the calendar repeats

std::int64_t per_second(::arrow::TimeUnit::type unit) {
  switch (unit) {
    case ::arrow::TimeUnit::SECOND:
      return 1;
    case ::arrow::TimeUnit::MILLI:
      return 1'000;
    case ::arrow::TimeUnit::MICRO:
      return 1'000'000;
    default:
      return 1'000'000'000;
  }
}

/// The largest number of whole `unit`s in `count`, and what is left, which is not negative.
struct Division {
  std::int64_t whole;
  std::int64_t rest;
};

Division divide(std::int64_t count, std::int64_t unit) {
  const std::int64_t rest = (count % unit + unit) % unit;
  return {count / unit - (count % unit < 0 ? 1 : 0), rest};
}

/// The part of a second as "" or ".500", without groups of three zeros at its end.
std::string fraction_text(std::int64_t part, std::int64_t parts_per_second) {
  std::string digits;
  for (std::int64_t unit = parts_per_second; part > 0; part %= unit) {
    unit /= 1000;
    char group[8];
    std::snprintf(group, sizeof group, "%03d", static_cast<int>(part / unit));
    digits += group;
  }
  return digits.empty() ? "" : "." + digits;
}

}  // namespace

const char* unit_text(::arrow::TimeUnit::type unit) {
  switch (unit) {
    case ::arrow::TimeUnit::SECOND:
      return "s";
    case ::arrow::TimeUnit::MILLI:
      return "ms";
    case ::arrow::TimeUnit::MICRO:
      return "us";
    default:
      return "ns";
  }
}

std::string date_text(std::int64_t days) {
  // Years that start in March end with the leap day, and their months have a regular pattern: 153
  // days in five of them.
  constexpr std::int64_t kMarchOfYear0 = 719468;  // days before 1970-01-01
  const Division era = divide(days + kMarchOfYear0, kDaysPerEra);
  const std::int64_t day = era.rest;
  const std::int64_t leap_days = day / 1460 - day / 36524 + day / 146096;
  const std::int64_t year = (day - leap_days) / 365;
  const std::int64_t day_of_year = day - (365 * year + year / 4 - year / 100);
  const std::int64_t month = (5 * day_of_year + 2) / 153;  // 0 is March
  const std::int64_t day_of_month = day_of_year - (153 * month + 2) / 5 + 1;
  const std::int64_t full_year = era.whole * 400 + year + (month >= 10 ? 1 : 0);
  char text[48];
  std::snprintf(text, sizeof text, "%s%04lld-%02d-%02d", full_year < 0 ? "-" : "",
                static_cast<long long>(full_year < 0 ? -full_year : full_year),
                static_cast<int>(month >= 10 ? month - 9 : month + 3),
                static_cast<int>(day_of_month));
  return text;
}

std::string time_text(std::int64_t count, ::arrow::TimeUnit::type unit) {
  const Division seconds = divide(count, per_second(unit));
  if (seconds.whole < 0 || seconds.whole >= kSecondsPerDay) return duration_text(count, unit);
  const int whole = static_cast<int>(seconds.whole);
  char text[48];
  std::snprintf(text, sizeof text, "%02d:%02d:%02d", whole / 3600, whole / 60 % 60, whole % 60);
  return text + fraction_text(seconds.rest, per_second(unit));
}

std::string timestamp_text(std::int64_t count, ::arrow::TimeUnit::type unit) {
  const Division days = divide(count, per_second(unit) * kSecondsPerDay);
  return date_text(days.whole) + " " + time_text(days.rest, unit);
}

std::string duration_text(std::int64_t count, ::arrow::TimeUnit::type unit) {
  return std::to_string(count) + " " + unit_text(unit);
}

}  // namespace numera::tools
