#pragma once

#include <arrow/array/data.h>

#include <memory>

namespace numera::gauntlet {

/// The value of a valid array, copied element by element into buffers of its own: no offset at any
/// depth, no byte more than is needed, lists and maps that start at 0.
std::shared_ptr<::arrow::ArrayData> compact(const ::arrow::ArrayData& array);

}  // namespace numera::gauntlet
