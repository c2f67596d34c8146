#pragma once

/// \file
/// The check of a field, for functions that take structs as the conversions do.

#include <arrow/status.h>

#include "numera/arrow_version.h"
#include "numera/export.h"
#include "numera/host/array.h"

namespace numera::io::arrow::core::util {

/// Checks that element 0 of a struct (or object) carries a field of a given class.
///
/// `classId` `hxClassID::Unknown` asks for any class. The flag is accepted and not used. A struct
/// without elements passes every check; other elements than the first are not looked at.
///
/// Errors:
/// - `s` is null or neither struct nor object: TypeError "Struct array required for input"
/// - the struct has no such field: the host's `std::invalid_argument` "Wrong field name."
/// - the slot is empty: TypeError "Missing field 'F' in input struct array"
/// - another class: TypeError "Incorrect type 'C' for struct array field 'F'"
///
/// Any number of threads may check at a time. Cost: one look-up of the name.
NUMERA_EXPORT ::arrow::Status VerifyHxStructContains(const hxArray* s, const char* fieldName,
                                                     hxClassID classId, bool flag);

}  // namespace numera::io::arrow::core::util
