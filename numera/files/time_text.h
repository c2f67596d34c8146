#pragma once

#include <arrow/array/array_base.h>
#include <arrow/status.h>

#include <cstdint>
#include <string>

namespace numera::files {

/// Whether the type is a date, a time or a timestamp.
bool has_time_text(const ::arrow::DataType& type);

/// Appends an element that is not null, as Arrow prints it: "2024-02-29", "23:59:59.250",
/// "2024-02-29 23:59:59". A timestamp with a zone is in UTC and ends with "Z". Returns Invalid for
/// what Arrow prints as out of range: a year below -32767 or above 32767, and a time that is not
/// within a day.
::arrow::Status append_time(const ::arrow::Array& array, std::int64_t row, std::string& text);

/// Invalid if `append_time` returns it for an element.
::arrow::Status check_times(const ::arrow::Array& array);

}  // namespace numera::files
