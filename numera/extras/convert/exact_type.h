#pragma once

#include <arrow/array/array_base.h>
#include <arrow/result.h>
#include <arrow/type.h>

#include <memory>
#include <string>

namespace numera::extras {

/// The values of `array` as exactly the type of `field`, which need not be complete; `array` itself
/// where it has that type. `array` has passed full validation and has no offset at any depth.
/// `path` says in failures where the field is. convert.h lists the casts and the errors.
::arrow::Result<std::shared_ptr<::arrow::Array>> exact_field(
    const std::shared_ptr<::arrow::Array>& array, const ::arrow::Field& field,
    const std::string& path);

}  // namespace numera::extras
