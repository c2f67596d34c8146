#include "numera/format/time_units.h"

#include <algorithm>
#include <iterator>

namespace numera::format {
namespace {

using ::arrow::TimeUnit;

struct Unit {
  TimeUnit::type unit;
  const char* name;
};

constexpr Unit kMilliseconds = {TimeUnit::MILLI, "milliseconds"};
constexpr Unit kAllUnits[] = {
    {TimeUnit::SECOND, "seconds"},
    kMilliseconds,
    {TimeUnit::MICRO, "microseconds"},
    {TimeUnit::NANO, "nanoseconds"},
};

}  // namespace

const char* unit_name(TimeUnit::type unit) {
  const auto* const row = std::ranges::find(kAllUnits, unit, &Unit::unit);
  return row != std::end(kAllUnits) ? row->name : kMilliseconds.name;
}

std::optional<TimeUnit::type> unit_of(std::string_view name) {
  const auto* const row = std::ranges::find(kAllUnits, name, &Unit::name);
  if (row == std::end(kAllUnits)) return std::nullopt;
  return row->unit;
}

}  // namespace numera::format
