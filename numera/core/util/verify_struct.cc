#include "numera/core/util/verify_struct.h"

#include "numera/core/host_values.h"

namespace numera::io::arrow::core::util {

::arrow::Status VerifyHxStructContains(const hxArray* s, const char* fieldName, hxClassID classId,
                                       bool /*flag*/) {
  if (!is_struct(s)) return ::arrow::Status::TypeError("Struct array required for input");
  if (hxIsEmpty(s)) return ::arrow::Status::OK();
  const hxArray* value = hxGetFieldChecked(s, 0, fieldName);
  if (value == nullptr) {
    return ::arrow::Status::TypeError("Missing field '", fieldName, "' in input struct array");
  }
  if (classId == hxClassID::Unknown || classId == hxGetClassID(value)) {
    return ::arrow::Status::OK();
  }
  return ::arrow::Status::TypeError("Incorrect type '", hxGetClassName(value),
                                    "' for struct array field '", fieldName, "'");
}

}  // namespace numera::io::arrow::core::util
