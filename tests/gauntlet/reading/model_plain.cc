#include "tests/gauntlet/reading/model_plain.h"

#include <cmath>
#include <utility>

#include "tests/gauntlet/reading/checks.h"

namespace numera::gauntlet::reading {
namespace {

using ::arrow::TimeUnit;
using TypePtr = std::shared_ptr<::arrow::DataType>;

std::int64_t count(const hxArray* value) {
  return static_cast<std::int64_t>(hxGetNumberOfElements(value));
}

const hxArray* field(const hxArray* value, const char* name) {
  return hxGetFieldChecked(value, 0, name);
}

/// Null if the class holds no numbers.
TypePtr number_type(const hxArray* values) {
  switch (hxGetClassID(values)) {
    case hxClassID::Double:
      return ::arrow::float64();
    case hxClassID::Single:
      return ::arrow::float32();
    case hxClassID::Int8:
      return ::arrow::int8();
    case hxClassID::UInt8:
      return ::arrow::uint8();
    case hxClassID::Int16:
      return ::arrow::int16();
    case hxClassID::UInt16:
      return ::arrow::uint16();
    case hxClassID::Int32:
      return ::arrow::int32();
    case hxClassID::UInt32:
      return ::arrow::uint32();
    case hxClassID::Int64:
      return ::arrow::int64();
    case hxClassID::UInt64:
      return ::arrow::uint64();
    default:
      return nullptr;
  }
}

ArrayTree numbers(const hxArray* values, const char* name, Validity validity) {
  TypePtr type = number_type(values);
  if (type == nullptr) refuse_invalid("Invalid type for numeric NUMERA to Arrow conversion.");
  require_plain(values, name);
  return leaf(std::move(type), count(values), validity, {memory_of(values)});
}

std::int64_t truncated(const hxArray* length) {
  const double value = *static_cast<const double*>(hxGetData(length));
  const double limit = std::ldexp(1.0, 63);
  const double whole = std::trunc(value);
  if (whole >= -limit && whole < limit) return static_cast<std::int64_t>(whole);
  refuse_type("Field 'Length': found ", value, ", expected a number of elements within 64 bits.");
}

ArrayTree logical(const hxArray* data, Validity validity) {
  require(data, "Length", hxClassID::Double);
  const hxArray* length = field(data, "Length");
  require_plain(length, "Length");
  if (count(length) != 1) {
    refuse_type("Field 'Length': found ", description(length),
                ", expected a double of one element.");
  }
  const std::int64_t elements = truncated(length);
  return leaf(::arrow::boolean(), elements, validity, {buffer_of(data)});
}

/// Any other text means milliseconds.
TimeUnit::type unit_of(const std::string& text) {
  if (text == "seconds") return TimeUnit::SECOND;
  if (text == "microseconds") return TimeUnit::MICRO;
  if (text == "nanoseconds") return TimeUnit::NANO;
  return TimeUnit::MILLI;
}

const char* name_of(TimeUnit::type unit) {
  static constexpr const char* kNames[] = {"seconds", "milliseconds", "microseconds",
                                           "nanoseconds"};
  return kNames[static_cast<int>(unit)];
}

/// Arrow has no time types of other widths. It ends the process if asked for one.
TypePtr time_type(const hxArray* values, TimeUnit::type unit) {
  const bool coarse = unit == TimeUnit::SECOND || unit == TimeUnit::MILLI;
  switch (hxGetClassID(values)) {
    case hxClassID::Int32:
      if (coarse) return ::arrow::time32(unit);
      refuse_invalid("Field 'Units': found '", name_of(unit),
                     "' with 'Values' of class int32, expected 'seconds' or 'milliseconds'.");
    case hxClassID::Int64:
      if (!coarse) return ::arrow::time64(unit);
      refuse_invalid("Field 'Units': found '", name_of(unit),
                     "' with 'Values' of class int64, expected 'microseconds' or 'nanoseconds'.");
    default:
      refuse_type("The values field must be either an int32 array or an int64 array.");
  }
}

ArrayTree times(const hxArray* data, Validity validity) {
  require(data, "Values", hxClassID::Unknown);
  const hxArray* values = field(data, "Values");
  require(data, "Units", hxClassID::Char);
  TypePtr type = time_type(values, unit_of(text_of(data, "Units")));
  require_plain(values, "Values");
  return leaf(std::move(type), count(values), validity, {memory_of(values)});
}

ArrayTree timestamps(const hxArray* data, Validity validity) {
  require(data, "Values", hxClassID::Int64);
  const hxArray* values = field(data, "Values");
  require(data, "Units", hxClassID::Char);
  require(data, "TimeZone", hxClassID::Char);
  const TimeUnit::type unit = unit_of(text_of(data, "Units"));
  TypePtr type = ::arrow::timestamp(unit, text_of(data, "TimeZone"));
  require_plain(values, "Values");
  return leaf(std::move(type), count(values), validity, {memory_of(values)});
}

ArrayTree texts(TypePtr type, const hxArray* data, Validity validity) {
  require(data, "Values", hxClassID::UInt8);
  require(data, "StartOffsets", hxClassID::UInt64);
  const hxArray* values = field(data, "Values");
  const hxArray* starts = field(data, "StartOffsets");
  require_plain(values, "Values");
  require_plain(starts, "StartOffsets");
  return leaf(std::move(type), count(starts) - 1, validity, {memory_of(starts), memory_of(values)});
}

bool is_ordered(const hxArray* ordinal) {
  require_plain(ordinal, "Ordinal");
  if (count(ordinal) != 1) {
    refuse_type("Field 'Ordinal': found ", description(ordinal),
                ", expected a logical array of one element.");
  }
  return *static_cast<const std::uint8_t*>(hxGetData(ordinal)) != 0;
}

ArrayTree categories(const hxArray* data, Validity validity) {
  require(data, "Values", hxClassID::Unknown);
  require(data, "Categories", hxClassID::Struct);
  require(data, "Ordinal", hxClassID::Logical);
  const hxArray* values = field(data, "Values");
  const hxArray* entries = field(data, "Categories");
  const bool ordered = is_ordered(field(data, "Ordinal"));
  ArrayTree codes = numbers(values, "Values", validity);
  codes.dictionary.push_back(texts(::arrow::large_utf8(), entries, std::nullopt));
  const hxClassID class_id = hxGetClassID(values);
  if (class_id == hxClassID::Double || class_id == hxClassID::Single) {
    refuse_type("Field 'Values': found ", description(values),
                ", expected an array of an integer class.");
  }
  codes.type = ::arrow::dictionary(codes.type, ::arrow::large_utf8(), ordered);
  return codes;
}

}  // namespace

Region buffer_of(const hxArray* encoded) {
  require(encoded, "ArrowType", hxClassID::Char);
  require(encoded, "Values", hxClassID::UInt8);
  const std::string kind = text_of(encoded, "ArrowType");
  if (kind != "buffer") {
    refuse_type("Expected 'buffer' input type, received '", kind, "' instead.");
  }
  const hxArray* values = field(encoded, "Values");
  require_plain(values, "Values");
  return memory_of(values);
}

Validity validity_of(const hxArray* valid) {
  const Region bytes = buffer_of(valid);
  return bytes.size == 0 ? std::nullopt : std::optional(bytes);
}

ArrayTree leaf(TypePtr type, std::int64_t length, Validity validity, std::vector<Region> memory) {
  ArrayTree tree{.type = std::move(type), .length = length};
  if (!validity) tree.null_count = 0;
  tree.buffers.push_back(validity);
  for (const Region& region : memory) tree.buffers.emplace_back(region);
  return tree;
}

ArrayTree plain_array(const hxArray* data, const std::string& type_name, Validity validity) {
  if (data != nullptr && number_type(data) != nullptr) return numbers(data, "Data", validity);
  if (is_struct(data)) {
    if (type_name == "string" || type_name == "char") {
      return texts(::arrow::large_utf8(), data, validity);
    }
    if (type_name == "categorical") return categories(data, validity);
    if (type_name == "logical") return logical(data, validity);
    if (type_name == "datetime") return timestamps(data, validity);
    if (type_name == "duration") return times(data, validity);
    if (type_name == "binary_array") return texts(::arrow::large_binary(), data, validity);
  }
  refuse_invalid("Invalid type for NUMERA to Arrow conversion.");
}

}  // namespace numera::gauntlet::reading
