#pragma once

/// \file
/// The type "datetime": timestamps with their unit and time zone, and calendar dates.
///
/// A timestamp is a 1-by-1 struct of "Values" (int64, counted in the unit since 1970-01-01 00:00:00
/// UTC), "Units" (char row), "TimeZone" (char row; empty: none) and "DateType" ("Timestamp";
/// written, but not read). A date goes to the host only, as a struct of "Values" (int32 days or
/// int64 milliseconds since 1970-01-01) and "DateType" ("Date").

#include <arrow/type_fwd.h>

#include <memory>

#include "numera/core/dispatch.h"
#include "numera/host/array.h"

namespace numera::io::arrow::core {

/// The type of a timestamp struct. An unknown unit means milliseconds. The time zone is read as
/// UTF-8 and not checked.
::arrow::Result<std::shared_ptr<::arrow::DataType>> timestamp_type_from_struct(
    const hxArray* encoded);

/// Converts a timestamp struct to an array over its "Values", which may have any shape.
ArrayResult datetime_to_arrow(const hxArray* encoded, std::shared_ptr<::arrow::Buffer> validity);

/// Converts timestamps to the timestamp struct. The time zone is written with one character per
/// byte.
::arrow::Result<hxArrayPtr> timestamp_to_numera(const ColumnView& chunks);

/// Converts dates to the date struct: an int32 column for date32, int64 for date64.
::arrow::Result<hxArrayPtr> date_to_numera(const ColumnView& chunks);

}  // namespace numera::io::arrow::core
