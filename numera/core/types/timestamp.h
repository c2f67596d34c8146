#pragma once

/// \file
/// Timestamps, with their unit and time zone.
///
/// A timestamp travels as the 1-by-1 struct of "Values" (int64, counted in the unit since
/// 1970-01-01 00:00:00 UTC), "Units" (char row), "TimeZone" (char row; empty: none) and, written
/// only, "DateType" ("Timestamp").

#include <arrow/type_fwd.h>

#include <memory>

#include "numera/core/dispatch.h"
#include "numera/host/array.h"

namespace numera::io::arrow::core {

/// The type of a timestamp struct. An unknown unit means milliseconds; the time zone is taken as it
/// stands, read as UTF-8.
::arrow::Result<std::shared_ptr<::arrow::DataType>> timestamp_type_from_struct(
    const hxArray* encoded);

/// A timestamp struct to an array over its "Values", which may be of any shape.
ArrayResult datetime_to_arrow(const hxArray* encoded, std::shared_ptr<::arrow::Buffer> validity);

/// Timestamps to the timestamp struct. The time zone is written with one character a byte.
::arrow::Result<hxArrayPtr> timestamp_to_numera(const ColumnView& chunks);

}  // namespace numera::io::arrow::core
