#include "numera/core/to_arrow.h"

#include <arrow/array/util.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>

#include "numera/core/dispatch.h"
#include "numera/core/host_values.h"
#include "numera/core/limits.h"
#include "numera/core/messages.h"
#include "numera/core/types/binary.h"
#include "numera/core/types/categorical.h"
#include "numera/core/types/datetime.h"
#include "numera/core/types/duration.h"
#include "numera/core/types/list.h"
#include "numera/core/types/numeric.h"
#include "numera/core/types/string.h"
#include "numera/core/types/struct.h"
#include "numera/core/util/text.h"
#include "numera/format/names.h"
#include "numera/format/values.h"

namespace numera::io::arrow::core {
namespace {

using util::HxArrayToString;

struct NamedReader {
  const char* type_name;
  Reader reader;
};

/// The readers of struct "Data" by type name. No other place lists them.
constexpr NamedReader kReaders[] = {
    {format::kStringType, MakeLargeStringArray},
    {format::kCharType, MakeLargeStringArray},  // the same under another name
    {format::kCategoricalType, categorical_to_arrow},
    {format::kLogicalType, logical_to_arrow},
    {format::kDatetimeType, datetime_to_arrow},
    {format::kDurationType, duration_to_arrow},
    {format::kBinaryType, MakeLargeBinaryArray},
};

ArrayResult data_to_arrow(const hxArray* data, const std::string& type_name,
                          std::shared_ptr<::arrow::Buffer> validity) {
  if (data != nullptr && hxIsNumeric(data)) return numeric_to_arrow(data, std::move(validity));
  if (format::is_struct(data)) {
    for (const NamedReader& row : kReaders) {
      if (type_name == row.type_name) return row.reader(data, std::move(validity));
    }
  }
  return ::arrow::Status::Invalid("Invalid type for NUMERA to Arrow conversion.");
}

ArrayResult plain_to_arrow(const EnvelopeFields& envelope) {
  const std::string type_name = HxArrayToString(envelope.type);
  ARROW_ASSIGN_OR_RAISE(auto validity, validity_to_arrow(envelope.valid));
  return data_to_arrow(envelope.data, type_name, std::move(validity));
}

struct Kind {
  const char* name;
  NestedReader reader;
};

/// Every kind of envelope. "array" is not nested and takes no nesting level.
constexpr Kind kKinds[] = {
    {format::kListKind, ListToArrow},
    {format::kStructKind, StructToArrow},
    {format::kArrayKind, nullptr},
};

EnvelopeFields fields_of(const hxArray* encoded, size_t index) {
  return {.arrow_type = hxGetFieldChecked(encoded, index, format::kArrowType),
          .type = hxGetFieldChecked(encoded, index, format::kType),
          .data = hxGetFieldChecked(encoded, index, format::kData),
          .valid = hxGetFieldChecked(encoded, index, format::kValid)};
}

/// Returns the first failure.
::arrow::Status check_classes(const EnvelopeFields& fields) {
  ARROW_RETURN_NOT_OK(check_field(fields.data, format::kData, hxClassID::Unknown));
  ARROW_RETURN_NOT_OK(check_field(fields.arrow_type, format::kArrowType, hxClassID::Char));
  ARROW_RETURN_NOT_OK(check_field(fields.type, format::kType, hxClassID::Char));
  return check_field(fields.valid, format::kValid, hxClassID::Struct);
}

::arrow::Status unexpected_kind(const char* expected, const std::string& kind) {
  return ::arrow::Status::TypeError("Expected '", expected, "' input type, received '", kind,
                                    "' instead.");
}

/// Null if the envelope is not nested.
::arrow::Result<NestedReader> find_reader(const EnvelopeFields& fields, int outer_levels) {
  const std::string kind = HxArrayToString(fields.arrow_type);
  const auto* const row = std::ranges::find(kKinds, kind, &Kind::name);
  if (row == std::end(kKinds)) return unexpected_kind(format::kArrayKind, kind);
  if (row->reader != nullptr && outer_levels >= kMaxNestingLevels) {
    return messages::nested_too_deeply();
  }
  return row->reader;
}

::arrow::Result<EnvelopeFields> checked_fields(const hxArray* encoded, size_t index) {
  ARROW_RETURN_NOT_OK(check_struct(encoded));
  // A struct without elements passes the checks. Getting its fields throws.
  if (hxIsEmpty(encoded)) return fields_of(encoded, index);
  // Get all fields before checking any, so that a missing field always gives the host's exception.
  const EnvelopeFields first = fields_of(encoded, 0);
  ARROW_RETURN_NOT_OK(check_classes(first));
  return index == 0 ? first : fields_of(encoded, index);
}

ArrayResult fields_to_arrow(const EnvelopeFields& fields) {
  ARROW_ASSIGN_OR_RAISE(const NestedReader reader, find_reader(fields, 0));
  if (reader == nullptr) return plain_to_arrow(fields);
  DataPtr data;
  ARROW_RETURN_NOT_OK(reader(fields, 1, data));
  return ::arrow::MakeArray(data);
}

[[gnu::noinline]] ::arrow::Status plain_child_to_arrow(const EnvelopeFields& fields,
                                                       DataPtr& data) {
  ARROW_ASSIGN_OR_RAISE(const auto array, plain_to_arrow(fields));
  data = array->data();
  return ::arrow::Status::OK();
}

[[gnu::noinline]] ::arrow::Status open_child(const hxArray* encoded, int outer_levels,
                                             EnvelopeFields& fields, NestedReader& reader) {
  ARROW_ASSIGN_OR_RAISE(fields, checked_fields(encoded, 0));
  return find_reader(fields, outer_levels).Value(&reader);
}

}  // namespace

ArrayResult element_to_arrow(const hxArray* encoded, size_t index) {
  ARROW_ASSIGN_OR_RAISE(const EnvelopeFields fields, checked_fields(encoded, index));
  return fields_to_arrow(fields);
}

ArrayResult later_element_to_arrow(const hxArray* encoded, size_t index) {
  return fields_to_arrow(fields_of(encoded, index));
}

::arrow::Status child_to_arrow(const hxArray* encoded, int outer_levels, DataPtr& data) {
  EnvelopeFields fields{};
  NestedReader reader = nullptr;
  ARROW_RETURN_NOT_OK(open_child(encoded, outer_levels, fields, reader));
  if (reader == nullptr) return plain_child_to_arrow(fields, data);
  return reader(fields, outer_levels + 1, data);
}

::arrow::Result<std::shared_ptr<::arrow::Buffer>> validity_to_arrow(const hxArray* valid) {
  ARROW_ASSIGN_OR_RAISE(auto bitmap, to_arrow<::arrow::Buffer>(valid));
  if (bitmap->size() == 0) return nullptr;
  return bitmap;
}

template <>
::arrow::Result<std::shared_ptr<::arrow::Array>> to_arrow<::arrow::Array>(const hxArray* encoded) {
  return element_to_arrow(encoded, 0);
}

::arrow::Result<std::shared_ptr<::arrow::Array>> to_arrow(const hxArray* encoded, size_t index) {
  return element_to_arrow(encoded, index);
}

template <>
::arrow::Result<std::shared_ptr<::arrow::Buffer>> to_arrow<::arrow::Buffer>(
    const hxArray* encoded) {
  ARROW_ASSIGN_OR_RAISE(const hxArray* arrow_type,
                        checked_field(encoded, format::kArrowType, hxClassID::Char));
  ARROW_ASSIGN_OR_RAISE(const hxArray* values,
                        checked_field(encoded, format::kValues, hxClassID::UInt8));
  const std::string kind = HxArrayToString(arrow_type);
  if (kind != format::kBufferKind) return unexpected_kind(format::kBufferKind, kind);
  ARROW_RETURN_NOT_OK(check_plain(values, format::kValues));
  return borrow_elements(values);
}

}  // namespace numera::io::arrow::core
