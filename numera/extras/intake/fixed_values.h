#pragma once

#include <arrow/array/data.h>
#include <arrow/type.h>

#include <vector>

#include "numera/extras/intake/work.h"

namespace numera::extras::intake {

/// Whether some bit patterns are not valid values: true for date64, times of day and decimals.
bool has_bad_values(::arrow::Type::type id);

/// Replaces by 0 every element that is not `shown` and not a valid value: a date64 that is not a
/// whole day, a time of day outside the day, a decimal beyond its precision. Returns `array` itself
/// if there is none. `type` is the storage type if `array` is an extension array.
DataResult with_zero_for_bad_values(const Work& work, const Data& array,
                                    const ::arrow::DataType& type, const std::vector<bool>& shown);

}  // namespace numera::extras::intake
