#pragma once

#include <arrow/array/data.h>
#include <arrow/type.h>

#include <vector>

#include "numera/extras/intake/work.h"

namespace numera::extras::intake {

/// Whether not every bit pattern is a value of the type: dates of 64 bits, times of day, decimals.
bool has_bad_values(::arrow::Type::type id);

/// The array with 0 for every element that is not `shown` and no value of its type: a date64 that
/// is no whole day, a time of day beyond the day, a decimal beyond its precision. The array itself
/// where there is none. `type` is that of its memory.
DataResult with_zero_for_bad_values(const Work& work, const Data& array,
                                    const ::arrow::DataType& type, const std::vector<bool>& shown);

}  // namespace numera::extras::intake
