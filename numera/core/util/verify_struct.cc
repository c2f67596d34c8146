#include "numera/core/util/verify_struct.h"

#include "numera/core/host_values.h"

namespace numera::io::arrow::core::util {

::arrow::Status VerifyHxStructContains(const hxArray* s, const char* fieldName, hxClassID classId,
                                       bool /*flag*/) {
  ARROW_RETURN_NOT_OK(check_struct(s));
  if (hxIsEmpty(s)) return ::arrow::Status::OK();
  return checked_field(s, fieldName, classId).status();
}

}  // namespace numera::io::arrow::core::util
