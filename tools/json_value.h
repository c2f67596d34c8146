#pragma once

#include <arrow/array/array_base.h>

#include <cstdint>
#include <string>

namespace numera::tools {

/// An element of a column as JSON. The array has passed `check_memory`.
///
/// Truth values, numbers, texts, lists and structs have their form in JSON, maps are arrays of
/// objects such as {"key": 1, "value": 2}, durations are integers, and NaN and infinities are null:
/// as in files of JSON lines. All else is the text that people read: bytes, dates, times, decimals,
/// unions, intervals. Dictionaries, run-end encoded values and extension types give the value that
/// they stand for.
std::string json_value(const ::arrow::Array& array, std::int64_t row);

}  // namespace numera::tools
