#pragma once

#include <arrow/array/array_base.h>

#include <cstdint>
#include <optional>

namespace numera::tools {

/// The first row in which two arrays of one length hold different values, or none.
///
/// `came` is of the type of `went`, or of the type that such a value returns as from the host:
/// wider text, bytes and lists, dictionaries of wider text, dates as timestamps, maps as lists of
/// structs, nulls as doubles. NaN equals NaN, and -0 is not 0.
std::optional<std::int64_t> first_differing_row(const ::arrow::Array& went,
                                                const ::arrow::Array& came);

}  // namespace numera::tools
