#pragma once

/// \file
/// A check of struct fields, for functions that accept the same structs as the conversions.

#include <arrow/status.h>

#include "numera/arrow_version.h"
#include "numera/export.h"
#include "numera/host/array.h"

namespace numera::io::arrow::core::util {

/// Checks that element 0 of a struct (or object) has a field of a given class.
///
/// If `classId` is `hxClassID::Unknown`, any class is accepted. `flag` is ignored. A struct without
/// elements passes every check. Elements after the first are not checked.
///
/// Errors:
/// - `s` is null or neither struct nor object: TypeError "Struct array required for input"
/// - the struct has no such field: the host's `std::invalid_argument` "Wrong field name."
/// - the slot is empty: TypeError "Missing field 'F' in input struct array"
/// - another class: TypeError "Incorrect type 'C' for struct array field 'F'"
///
/// Any number of threads may check at the same time. Cost: one look-up of the name.
NUMERA_EXPORT ::arrow::Status VerifyHxStructContains(const hxArray* s, const char* fieldName,
                                                     hxClassID classId, bool flag);

}  // namespace numera::io::arrow::core::util
