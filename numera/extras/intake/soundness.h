#pragma once

#include <arrow/array/data.h>
#include <arrow/status.h>

#include <memory>

namespace numera::extras::intake {

/// Checks what Arrow's validation assumes: no pointer is null, all memory is CPU memory, offset
/// plus length fits 64 bits, and arrays and types are not nested too deeply. Returns Invalid with
/// what was found. After this check and Arrow's validation a value is sound: it holds for every
/// Arrow type, and for the values too. `check_column` of the core demands less: that the conversion
/// reads nothing past its end.
::arrow::Status check_soundness(const std::shared_ptr<::arrow::ArrayData>& array);

}  // namespace numera::extras::intake
