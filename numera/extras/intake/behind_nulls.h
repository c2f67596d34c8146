#pragma once

#include <arrow/array/data.h>

#include "numera/extras/intake/work.h"

namespace numera::extras::intake {

/// Replaces hidden invalid values by 0: dates, times of day and decimals that are not valid for
/// their type, and that lie below a null struct, list or map or are not referred to by any list.
/// Arrow's full validation refuses even hidden values. Valid values stay as they are. If nothing
/// has to be replaced, the result is `array` itself.
///
/// `array` has passed Arrow's `Validate`, but not `ValidateFull`.
DataResult without_bad_values_behind_nulls(const Work& work, const Data& array);

}  // namespace numera::extras::intake
