#pragma once

#include <arrow/array/data.h>

#include <memory>

namespace numera::gauntlet {

/// Copies the value of a valid array, element by element, into new buffers. Every offset is 0, no
/// buffer has an unneeded byte, and the offsets of lists and maps start at 0.
std::shared_ptr<::arrow::ArrayData> compact(const ::arrow::ArrayData& array);

}  // namespace numera::gauntlet
