#pragma once

#include <arrow/array/array_base.h>

#include <cstdint>
#include <optional>

namespace numera::tools {

/// The first row in which two arrays of equal length hold different values, or none.
///
/// `came` has the type of `went`, or the type that `went` gets on the way through the host: wider
/// text, bytes and lists, dictionaries of wider text, dates as timestamps, maps as lists of
/// structs, nulls as doubles, durations as int64. NaN equals NaN, and -0 differs from 0.
std::optional<std::int64_t> first_differing_row(const ::arrow::Array& went,
                                                const ::arrow::Array& came);

}  // namespace numera::tools
