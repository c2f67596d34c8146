#include "numera/core/host_values.h"

#include "numera/core/messages.h"
#include "numera/format/values.h"

namespace numera::io::arrow::core {

::arrow::Status check_struct(const hxArray* value) {
  if (format::is_struct(value)) return ::arrow::Status::OK();
  return ::arrow::Status::TypeError("Struct array required for input");
}

::arrow::Status check_field(const hxArray* value, const char* field, hxClassID class_id) {
  if (value == nullptr) {
    return ::arrow::Status::TypeError("Missing field '", field, "' in input struct array");
  }
  if (class_id == hxClassID::Unknown || class_id == hxGetClassID(value)) {
    return ::arrow::Status::OK();
  }
  return ::arrow::Status::TypeError("Incorrect type '", hxGetClassName(value),
                                    "' for struct array field '", field, "'");
}

::arrow::Result<const hxArray*> checked_field(const hxArray* s, const char* field,
                                              hxClassID class_id) {
  ARROW_RETURN_NOT_OK(check_struct(s));
  const hxArray* value = hxGetFieldChecked(s, 0, field);
  ARROW_RETURN_NOT_OK(check_field(value, field, class_id));
  return value;
}

::arrow::Status check_plain(const hxArray* value, std::string_view field) {
  return format::is_plain(value) ? ::arrow::Status::OK() : messages::not_plain(field, value);
}

std::shared_ptr<::arrow::Buffer> borrow_elements(const hxArray* value) {
  const size_t size = hxGetElementSize(value) * hxGetNumberOfElements(value);
  return std::make_shared<::arrow::Buffer>(static_cast<const std::uint8_t*>(hxGetData(value)),
                                           static_cast<std::int64_t>(size));
}

}  // namespace numera::io::arrow::core
