#pragma once

#include <arrow/array/data.h>

#include "numera/extras/intake/work.h"

namespace numera::extras::intake {

/// The array with 0 in place of every date, time of day and decimal that is none of its type and
/// that no slot shows: a null struct, list or map stands around it, or no list refers to it.
/// Arrow's full validation refuses such values all the same. Whatever is fit stays as it is, and an
/// array where nothing has to be replaced is returned itself.
///
/// `array` has passed Arrow's `Validate`, not the full one.
DataResult without_bad_values_behind_nulls(const Work& work, const Data& array);

}  // namespace numera::extras::intake
