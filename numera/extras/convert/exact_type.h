#pragma once

#include <arrow/array/array_base.h>
#include <arrow/result.h>
#include <arrow/type.h>

#include <memory>
#include <string>

namespace numera::extras {

/// Whether both have the same field names in the same order.
bool same_names(const ::arrow::FieldVector& one, const ::arrow::FieldVector& other);

/// Casts `array` to exactly the type of `field`. Returns `array` itself if it already has this
/// type. Invalid if the type of `field` is null or contains a null pointer. `array` has passed full
/// validation and has no offset at any depth. Error messages start with `path`, the position of the
/// field. convert.h lists the casts and the errors.
::arrow::Result<std::shared_ptr<::arrow::Array>> exact_field(
    const std::shared_ptr<::arrow::Array>& array, const ::arrow::Field& field,
    const std::string& path);

}  // namespace numera::extras
