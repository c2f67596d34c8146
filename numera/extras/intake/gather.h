#pragma once

#include <arrow/array/data.h>

#include <cstdint>
#include <span>

#include "numera/extras/intake/work.h"

namespace numera::extras::intake {

/// Stands for a null in `places`.
inline constexpr std::int64_t kNowhere = -1;

/// A new array whose element i is `values[places[i]]`, or null where `places[i]` is `kNowhere`.
/// `values` has already been taken in. Null lists and texts get an empty range.
DataResult gather(Work& work, const ::arrow::ArrayData& values,
                  std::span<const std::int64_t> places);

}  // namespace numera::extras::intake
