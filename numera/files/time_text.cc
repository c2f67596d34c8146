#include "numera/files/time_text.h"

#include <arrow/array/data.h>
#include <arrow/type.h>
#include <arrow/type_traits.h>

#include <chrono>
#include <cstddef>

namespace numera::files {
namespace {

using ::arrow::Type;

/// How the elements of a type count.
struct Clock {
  bool has_days = true;
  bool has_time = true;
  bool has_zone = false;
  std::int64_t per_second = 1;
  size_t decimals = 0;  ///< of the seconds
};

void set_unit(Clock& clock, ::arrow::TimeUnit::type unit) {
  for (int i = 0; i < unit; ++i) {  // seconds, then a thousandth each
    clock.per_second *= 1000;
    clock.decimals += 3;
  }
}

Clock clock_of(const ::arrow::DataType& type) {
  Clock clock;
  clock.has_time = type.id() != Type::DATE32 && type.id() != Type::DATE64;
  if (type.id() == Type::DATE64) clock.per_second = 1000;
  if (::arrow::is_time(type.id())) {
    clock.has_days = false;
    set_unit(clock, static_cast<const ::arrow::TimeType&>(type).unit());
  }
  if (type.id() == Type::TIMESTAMP) {
    const auto& timestamp = static_cast<const ::arrow::TimestampType&>(type);
    clock.has_zone = !timestamp.timezone().empty();
    set_unit(clock, timestamp.unit());
  }
  return clock;
}

/// A day since 1970, and what has passed of it.
struct Moment {
  std::int64_t day = 0;
  std::int64_t in_day = 0;
};

std::int64_t raw_value(const ::arrow::Array& array, std::int64_t row) {
  const ::arrow::ArrayData& data = *array.data();
  const bool is_narrow = data.type->id() == Type::DATE32 || data.type->id() == Type::TIME32;
  return is_narrow ? data.GetValues<std::int32_t>(1)[row] : data.GetValues<std::int64_t>(1)[row];
}

Moment moment_of(const ::arrow::Array& array, std::int64_t row, const Clock& clock) {
  const std::int64_t value = raw_value(array, row);
  if (array.type_id() == Type::DATE32) return {value, 0};
  const std::int64_t per_day = 86400 * clock.per_second;
  Moment moment{value / per_day, value % per_day};
  if (moment.in_day < 0) moment = {moment.day - 1, moment.in_day + per_day};
  return moment;
}

::arrow::Status check_moment(const Moment& moment, const Clock& clock) {
  using std::chrono::sys_days, std::chrono::year;
  constexpr auto kFirst = sys_days(year::min() / 1 / 1).time_since_epoch().count();
  constexpr auto kLast = sys_days(year::max() / 12 / 31).time_since_epoch().count();
  if (!clock.has_days && moment.day != 0) {
    return ::arrow::Status::Invalid("found a time that is not within a day");
  }
  if (moment.day < kFirst || moment.day > kLast) {
    return ::arrow::Status::Invalid("found a year that is not from -32767 to 32767");
  }
  return ::arrow::Status::OK();
}

void append_number(std::int64_t number, size_t width, std::string& text) {
  const std::string digits = std::to_string(number);
  text.append(width > digits.size() ? width - digits.size() : 0, '0');
  text += digits;
}

void append_day(std::int64_t day, std::string& text) {
  const std::chrono::sys_days since_1970{std::chrono::days(day)};
  const std::chrono::year_month_day date(since_1970);
  const int year = static_cast<int>(date.year());
  if (year < 0) text += '-';
  append_number(year < 0 ? -year : year, 4, text);
  text += '-';
  append_number(static_cast<unsigned>(date.month()), 2, text);
  text += '-';
  append_number(static_cast<unsigned>(date.day()), 2, text);
}

void append_time_of_day(std::int64_t in_day, const Clock& clock, std::string& text) {
  const std::int64_t seconds = in_day / clock.per_second;
  append_number(seconds / 3600, 2, text);
  text += ':';
  append_number(seconds / 60 % 60, 2, text);
  text += ':';
  append_number(seconds % 60, 2, text);
  if (clock.decimals == 0) return;
  text += '.';
  append_number(in_day % clock.per_second, clock.decimals, text);
}

}  // namespace

bool has_time_text(const ::arrow::DataType& type) {
  return ::arrow::is_date(type.id()) || ::arrow::is_time(type.id()) || type.id() == Type::TIMESTAMP;
}

::arrow::Status append_time(const ::arrow::Array& array, std::int64_t row, std::string& text) {
  const Clock clock = clock_of(*array.type());
  const Moment moment = moment_of(array, row, clock);
  ARROW_RETURN_NOT_OK(check_moment(moment, clock));
  if (clock.has_days) append_day(moment.day, text);
  if (clock.has_days && clock.has_time) text += ' ';
  if (clock.has_time) append_time_of_day(moment.in_day, clock, text);
  if (clock.has_zone) text += 'Z';
  return ::arrow::Status::OK();
}

::arrow::Status check_times(const ::arrow::Array& array) {
  const Clock clock = clock_of(*array.type());
  for (std::int64_t i = 0; i < array.length(); ++i) {
    if (array.IsValid(i)) ARROW_RETURN_NOT_OK(check_moment(moment_of(array, i, clock), clock));
  }
  return ::arrow::Status::OK();
}

}  // namespace numera::files
