#pragma once

#include <arrow/result.h>

#include <string_view>

#include "numera/extras/encode/located.h"
#include "numera/extras/encode/readable.h"

namespace numera::extras::encoding {

/// Timestamps as they are, but for the text of their time zone; dates ("DateType" is "Date" and
/// there are no "Units") as timestamps without time zone.
::arrow::Result<ReadableValue> read_datetime(const Located& data);

/// Times of day as they are.
::arrow::Result<ReadableValue> read_time_of_day(const Located& data);

/// The readable "Data" of timestamps.
hxArrayPtr make_datetime(hxArrayPtr values, hxArrayPtr units, hxArrayPtr time_zone);

}  // namespace numera::extras::encoding
