#pragma once

#include <arrow/result.h>

#include <string_view>

#include "numera/extras/encode/located.h"
#include "numera/extras/encode/readable.h"

namespace numera::extras::encoding {

/// Reads timestamps and dates. Timestamps do not change, except that their time zone is decoded.
/// Dates ("DateType" is "Date" and there is no field "Units") become timestamps without time zone.
::arrow::Result<ReadableValue> read_datetime(const Located& data);

/// Reads times of day, which do not change.
::arrow::Result<ReadableValue> read_time_of_day(const Located& data);

/// Makes the readable "Data" of timestamps.
hxArrayPtr make_datetime(hxArrayPtr values, hxArrayPtr units, hxArrayPtr time_zone);

}  // namespace numera::extras::encoding
