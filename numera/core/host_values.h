#pragma once

/// \file
/// Helpers of all readers. They get the fields of encoded structs, with the documented errors of
/// the conversions, and wrap host memory as Arrow buffers.

#include <arrow/buffer.h>
#include <arrow/result.h>
#include <arrow/status.h>

#include <memory>
#include <string_view>

#include "numera/host/array.h"

namespace numera::io::arrow::core {

/// TypeError if the value is not a struct.
::arrow::Status check_struct(const hxArray* value);

/// TypeError if the value of a field is missing or has another class. `hxClassID::Unknown` accepts
/// any class.
::arrow::Status check_field(const hxArray* value, const char* field, hxClassID class_id);

/// The value of the field in element 0. The errors are those of `VerifyHxStructContains`, with one
/// difference: a struct without elements passes that check, but throws the host's exception here.
::arrow::Result<const hxArray*> checked_field(const hxArray* s, const char* field,
                                              hxClassID class_id);

/// TypeError that names `field` if a numeric or logical value is complex or sparse.
::arrow::Status check_plain(const hxArray* value, std::string_view field);

/// A buffer over the elements of `value`, which must be plain. The buffer owns nothing: the host
/// array must outlive it. Only this function turns host memory into Arrow memory.
std::shared_ptr<::arrow::Buffer> borrow_elements(const hxArray* value);

}  // namespace numera::io::arrow::core
