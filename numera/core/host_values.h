#pragma once

/// \file
/// What all readers share: taking the fields of encoded structs with the errors that the
/// conversions state, and wrapping host memory as Arrow buffers.

#include <arrow/buffer.h>
#include <arrow/result.h>
#include <arrow/status.h>

#include <memory>
#include <string_view>

#include "numera/host/array.h"

namespace numera::io::arrow::core {

/// TypeError where the value is no struct.
::arrow::Status check_struct(const hxArray* value);

/// TypeError where the value of a field is missing or of another class; `hxClassID::Unknown` is
/// any.
::arrow::Status check_field(const hxArray* value, const char* field, hxClassID class_id);

/// The value of the field in element 0, with the errors of `VerifyHxStructContains`. A struct
/// without elements, which passes that check, throws the host's exception here.
::arrow::Result<const hxArray*> checked_field(const hxArray* s, const char* field,
                                              hxClassID class_id);

/// TypeError that names `field` where a numeric or logical value is complex or sparse.
::arrow::Status check_plain(const hxArray* value, std::string_view field);

/// A buffer over the element block of `value`, which must be plain. It owns nothing: the host array
/// must outlive it. This is the one place where host memory becomes Arrow memory.
std::shared_ptr<::arrow::Buffer> borrow_elements(const hxArray* value);

}  // namespace numera::io::arrow::core
