#pragma once

#include <arrow/type_fwd.h>

#include <cstdint>
#include <string>

namespace numera::tools {

/// "s", "ms", "us" or "ns".
const char* unit_text(::arrow::TimeUnit::type unit);

/// Days since 1970-01-01 as "2013-01-31", in the Gregorian calendar at all times. The year 0 is the
/// one before the year 1.
std::string date_text(std::int64_t days);

/// A time since the start of a day as "23:59:59". It has 3, 6 or 9 digits behind the seconds if
/// they are not all 0. What is no time of a day is shown as `duration_text` does.
std::string time_text(std::int64_t count, ::arrow::TimeUnit::type unit);

/// A time since 1970-01-01 as "2013-01-31 23:59:59", with digits as `time_text` has them.
std::string timestamp_text(std::int64_t count, ::arrow::TimeUnit::type unit);

/// A number and its unit: "90 s".
std::string duration_text(std::int64_t count, ::arrow::TimeUnit::type unit);

}  // namespace numera::tools
