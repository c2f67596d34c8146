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
#include "numera/core/util/verify_struct.h"

namespace numera::io::arrow::core {
namespace {

using util::HxArrayToString;
using util::VerifyHxStructContains;

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

ArrayResult plain_to_arrow(const hxArray* envelope, size_t index, int /*level*/) {
  const std::string type_name = HxArrayToString(hxGetFieldChecked(envelope, index, "Type"));
  const hxArray* data = hxGetFieldChecked(envelope, index, "Data");
  ARROW_ASSIGN_OR_RAISE(auto validity,
                        validity_to_arrow(hxGetFieldChecked(envelope, index, "Valid")));
  return data_to_arrow(data, type_name, std::move(validity));
}

/// The readers of envelopes by kind. "array" is not nested and takes no level of its own.
constexpr KindReader kKinds[] = {
    {"list_array", ListToArrow},
    {"struct", StructToArrow},
    {"array", plain_to_arrow},
};

/// All four checks run, so that a field that the struct lacks is always reported by the host's
/// exception; of several failures the first is returned.
::arrow::Status check_envelope(const hxArray* encoded) {
  ::arrow::Status first = VerifyHxStructContains(encoded, "Data", hxClassID::Unknown, true);
  first &= VerifyHxStructContains(encoded, "ArrowType", hxClassID::Char, false);
  first &= VerifyHxStructContains(encoded, "Type", hxClassID::Char, false);
  first &= VerifyHxStructContains(encoded, "Valid", hxClassID::Struct, true);
  return first;
}

::arrow::Status unexpected_kind(const char* expected, const std::string& kind) {
  return ::arrow::Status::TypeError("Expected '", expected, "' input type, received '", kind,
                                    "' instead.");
}

}  // namespace

ArrayResult element_to_arrow(const hxArray* encoded, size_t index, int outer_levels) {
  ARROW_RETURN_NOT_OK(check_envelope(encoded));
  const std::string kind = HxArrayToString(hxGetFieldChecked(encoded, index, "ArrowType"));
  for (const KindReader& row : kKinds) {
    if (kind != row.kind) continue;
    if (row.reader != plain_to_arrow && outer_levels >= kMaxNestingLevels) {
      return messages::nested_too_deeply();
    }
    return row.reader(encoded, index, outer_levels + 1);
  }
  return unexpected_kind("array", kind);
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
  ARROW_RETURN_NOT_OK(VerifyHxStructContains(encoded, "ArrowType", hxClassID::Char, false));
  ARROW_RETURN_NOT_OK(VerifyHxStructContains(encoded, "Values", hxClassID::UInt8, false));
  const std::string kind = HxArrayToString(hxGetFieldChecked(encoded, 0, "ArrowType"));
  if (kind != "buffer") return unexpected_kind("buffer", kind);
  const hxArray* values = hxGetFieldChecked(encoded, 0, "Values");
  ARROW_RETURN_NOT_OK(check_plain(values, "Values"));
  return borrow_elements(values);
}

}  // namespace numera::io::arrow::core
