#pragma once

/// \file
/// The type "duration": times of day, and the names of time units.
///
/// A time of day is a 1-by-1 struct of "Values" (int32 or int64, counted in the unit) and "Units"
/// (char row).

#include <arrow/type_fwd.h>

#include <memory>
#include <string>

#include "numera/core/dispatch.h"
#include "numera/host/array.h"

namespace numera::io::arrow::core {

/// "seconds", "microseconds" and "nanoseconds"; every other text means milliseconds.
::arrow::TimeUnit::type parse_time_unit(const std::string& text);

/// Char row of the name of a unit; "milliseconds" for an invalid value.
hxArrayPtr time_unit_name(::arrow::TimeUnit::type unit);

/// time32 for int32 "Values", time64 for int64 "Values", with the unit of "Units", which is checked
/// first. Another class is a TypeError. A unit that does not fit the width is Invalid.
::arrow::Result<std::shared_ptr<::arrow::DataType>> time_type_from_struct(const hxArray* encoded);

/// Converts a time-of-day struct to an array over its "Values", which may have any shape.
ArrayResult duration_to_arrow(const hxArray* encoded, std::shared_ptr<::arrow::Buffer> validity);

/// Converts times of day to the time-of-day struct: an int32 column for time32, int64 for time64.
::arrow::Result<hxArrayPtr> time_to_numera(const ColumnView& chunks);

}  // namespace numera::io::arrow::core
