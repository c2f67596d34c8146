#include <string>
#include <string_view>

#include "numera/extras/intake/plain_text.h"
#include "numera/extras/intake/takes.h"

namespace numera::extras::intake {
namespace {

/// Appends `count` units of 10^-digits seconds, such as "-0.005S".
void append_seconds(std::int64_t count, int digits, std::string* text) {
  std::uint64_t magnitude = static_cast<std::uint64_t>(count);
  if (count < 0) magnitude = 0 - magnitude;
  std::string units = std::to_string(magnitude);
  const auto fraction = static_cast<size_t>(digits);
  if (units.size() <= fraction) units.insert(0, fraction + 1 - units.size(), '0');
  units.insert(units.size() - fraction, 1, '.');
  units.erase(units.find_last_not_of('0') + 1);
  if (units.back() == '.') units.pop_back();
  if (count < 0) *text += '-';
  *text += units + "S";
}

/// Parts that are 0 are left out, unless all are.
void write_duration(std::int64_t months, std::int64_t days, std::int64_t time, int digits,
                    std::string* text) {
  *text = "P";
  if (months != 0) *text += std::to_string(months) + "M";
  if (days != 0) *text += std::to_string(days) + "D";
  if (time != 0) {
    *text += "T";
    append_seconds(time, digits, text);
  }
  if (text->size() == 1) *text += "0D";
}

/// In `write(i, &text)`, `i` is the index of the element in the buffer, array offset included.
template <class Write>
DataResult make_durations(Work& work, const ::arrow::ArrayData& array, Write write) {
  ARROW_ASSIGN_OR_RAISE(const Data slots, without_offset(work, array));
  std::string text;
  return make_text(work, ::arrow::utf8(), ::arrow::large_utf8(), *slots, [&](std::int64_t i) {
    write(array.offset + i, &text);
    return std::string_view(text);
  });
}

}  // namespace

DataResult cast_month_interval(Work& work, const std::string&, const ::arrow::ArrayData& array) {
  return make_durations(work, array, [&](std::int64_t i, std::string* text) {
    write_duration(load<std::int32_t>(*array.buffers[1], i), 0, 0, 0, text);
  });
}

DataResult cast_day_time_interval(Work& work, const std::string&, const ::arrow::ArrayData& array) {
  using Value = ::arrow::DayTimeIntervalType::DayMilliseconds;
  return make_durations(work, array, [&](std::int64_t i, std::string* text) {
    const auto value = load<Value>(*array.buffers[1], i);
    write_duration(0, value.days, value.milliseconds, 3, text);
  });
}

DataResult cast_month_day_nano_interval(Work& work, const std::string&,
                                        const ::arrow::ArrayData& array) {
  using Value = ::arrow::MonthDayNanoIntervalType::MonthDayNanos;
  return make_durations(work, array, [&](std::int64_t i, std::string* text) {
    const auto value = load<Value>(*array.buffers[1], i);
    write_duration(value.months, value.days, value.nanoseconds, 9, text);
  });
}

}  // namespace numera::extras::intake
