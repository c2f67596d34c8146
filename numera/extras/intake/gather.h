#pragma once

#include <arrow/array/data.h>

#include <cstdint>
#include <span>

#include "numera/extras/intake/work.h"

namespace numera::extras::intake {

/// A place that no element is taken from: the result has a null there.
inline constexpr std::int64_t kNowhere = -1;

/// A new array of the elements of `values`, which is taken in already, at the given places: 0 up
/// to its length, or `kNowhere`. Null lists and texts become empty ones.
DataResult gather(Work& work, const ::arrow::ArrayData& values,
                  std::span<const std::int64_t> places);

}  // namespace numera::extras::intake
