#pragma once

#include <arrow/array/data.h>
#include <arrow/status.h>

#include <memory>

namespace numera::extras::intake {

/// Finds what Arrow's validation takes for granted: that no pointer is null, that memory is that of
/// the CPU, that extents can be added up, and that arrays and their types are not nested deeper
/// than what is taken in can be. Invalid with what was found.
::arrow::Status check_soundness(const std::shared_ptr<::arrow::ArrayData>& array);

}  // namespace numera::extras::intake
