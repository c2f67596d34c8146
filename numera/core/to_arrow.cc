#include "numera/core/to_arrow.h"

#include <string>
#include <utility>

#include "numera/core/dispatch.h"
#include "numera/core/host_values.h"
#include "numera/core/limits.h"
#include "numera/core/messages.h"
#include "numera/core/types/binary.h"
#include "numera/core/types/categorical.h"
#include "numera/core/types/date_time.h"
#include "numera/core/types/list.h"
#include "numera/core/types/numeric.h"
#include "numera/core/types/string.h"
#include "numera/core/types/struct.h"
#include "numera/core/types/timestamp.h"
#include "numera/core/util/text.h"

namespace numera::io::arrow::core {
namespace {

using util::HxArrayToString;

struct NamedReader {
  const char* type_name;
  Reader reader;
};

/// The readers of struct "Data" by type name: the one place that knows them.
constexpr NamedReader kReaders[] = {
    {"string", MakeLargeStringArray},
    {"char", MakeLargeStringArray},  // the same under another name
    {"categorical", categorical_to_arrow},
    {"logical", logical_to_arrow},
    {"datetime", datetime_to_arrow},
    {"duration", duration_to_arrow},
    {"binary_array", MakeLargeBinaryArray},
};

struct KindReader {
  const char* kind;
  NestedReader reader;
};

ArrayResult data_to_arrow(const hxArray* data, const std::string& type_name,
                          std::shared_ptr<::arrow::Buffer> validity) {
  if (data != nullptr && hxIsNumeric(data)) return numeric_to_arrow(data, std::move(validity));
  if (is_struct(data)) {
    for (const NamedReader& row : kReaders) {
      if (type_name == row.type_name) return row.reader(data, std::move(validity));
    }
  }
  return ::arrow::Status::Invalid("Invalid type for NUMERA to Arrow conversion.");
}

ArrayResult plain_to_arrow(const EnvelopeFields& envelope, int /*level*/) {
  const std::string type_name = HxArrayToString(envelope.type);
  ARROW_ASSIGN_OR_RAISE(auto validity, validity_to_arrow(envelope.valid));
  return data_to_arrow(envelope.data, type_name, std::move(validity));
}

/// The readers of envelopes by kind. "array" is not nested and takes no level of its own.
constexpr KindReader kKinds[] = {
    {"list_array", ListToArrow},
    {"struct", StructToArrow},
    {"array", plain_to_arrow},
};

EnvelopeFields fields_of(const hxArray* encoded, size_t index) {
  return {.arrow_type = hxGetFieldChecked(encoded, index, "ArrowType"),
          .type = hxGetFieldChecked(encoded, index, "Type"),
          .data = hxGetFieldChecked(encoded, index, "Data"),
          .valid = hxGetFieldChecked(encoded, index, "Valid")};
}

/// Of several failures the first is returned.
::arrow::Status check_classes(const EnvelopeFields& fields) {
  ARROW_RETURN_NOT_OK(check_field(fields.data, "Data", hxClassID::Unknown));
  ARROW_RETURN_NOT_OK(check_field(fields.arrow_type, "ArrowType", hxClassID::Char));
  ARROW_RETURN_NOT_OK(check_field(fields.type, "Type", hxClassID::Char));
  return check_field(fields.valid, "Valid", hxClassID::Struct);
}

::arrow::Status unexpected_kind(const char* expected, const std::string& kind) {
  return ::arrow::Status::TypeError("Expected '", expected, "' input type, received '", kind,
                                    "' instead.");
}

ArrayResult fields_to_arrow(const EnvelopeFields& fields, int outer_levels) {
  const std::string kind = HxArrayToString(fields.arrow_type);
  for (const KindReader& row : kKinds) {
    if (kind != row.kind) continue;
    if (row.reader != plain_to_arrow && outer_levels >= kMaxNestingLevels) {
      return messages::nested_too_deeply();
    }
    return row.reader(fields, outer_levels + 1);
  }
  return unexpected_kind("array", kind);
}

}  // namespace

ArrayResult element_to_arrow(const hxArray* encoded, size_t index, int outer_levels) {
  ARROW_RETURN_NOT_OK(check_struct(encoded));
  // A struct without elements passes the checks; taking its fields throws.
  if (hxIsEmpty(encoded)) return later_element_to_arrow(encoded, index, outer_levels);
  // All fields are taken before one is checked, so that a field that the struct lacks is always
  // reported by the host's exception.
  const EnvelopeFields first = fields_of(encoded, 0);
  ARROW_RETURN_NOT_OK(check_classes(first));
  if (index == 0) return fields_to_arrow(first, outer_levels);
  return later_element_to_arrow(encoded, index, outer_levels);
}

ArrayResult later_element_to_arrow(const hxArray* encoded, size_t index, int outer_levels) {
  return fields_to_arrow(fields_of(encoded, index), outer_levels);
}

::arrow::Result<std::shared_ptr<::arrow::Buffer>> validity_to_arrow(const hxArray* valid) {
  ARROW_ASSIGN_OR_RAISE(auto bitmap, to_arrow<::arrow::Buffer>(valid));
  if (bitmap->size() == 0) return nullptr;
  return bitmap;
}

template <>
::arrow::Result<std::shared_ptr<::arrow::Array>> to_arrow<::arrow::Array>(const hxArray* encoded) {
  return element_to_arrow(encoded, 0, 0);
}

::arrow::Result<std::shared_ptr<::arrow::Array>> to_arrow(const hxArray* encoded, size_t index) {
  return element_to_arrow(encoded, index, 0);
}

template <>
::arrow::Result<std::shared_ptr<::arrow::Buffer>> to_arrow<::arrow::Buffer>(
    const hxArray* encoded) {
  ARROW_ASSIGN_OR_RAISE(const hxArray* arrow_type,
                        checked_field(encoded, "ArrowType", hxClassID::Char));
  ARROW_ASSIGN_OR_RAISE(const hxArray* values, checked_field(encoded, "Values", hxClassID::UInt8));
  const std::string kind = HxArrayToString(arrow_type);
  if (kind != "buffer") return unexpected_kind("buffer", kind);
  ARROW_RETURN_NOT_OK(check_plain(values, "Values"));
  return borrow_elements(values);
}

}  // namespace numera::io::arrow::core
