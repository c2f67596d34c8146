#include "tests/gauntlet/model_to_arrow.h"

#include <string>
#include <utility>

namespace numera::gauntlet {
namespace {

using ::arrow::TimeUnit;
using TypePtr = std::shared_ptr<::arrow::DataType>;

const hxArray* field(const hxArray* value, const char* name) {
  return hxGetFieldChecked(value, 0, name);
}

std::string text(const hxArray* value, const char* name) { return hxGetString(field(value, name)); }

std::int64_t count(const hxArray* value) {
  return static_cast<std::int64_t>(hxGetNumberOfElements(value));
}

Region memory_of(const hxArray* value) {
  return {hxGetData(value), count(value) * static_cast<std::int64_t>(hxGetElementSize(value))};
}

/// No bytes mean no bitmap.
Region bitmap(const hxArray* envelope) {
  const Region bytes = memory_of(field(field(envelope, "Valid"), "Values"));
  return bytes.size == 0 ? Region{} : bytes;
}

TypePtr number_type(hxClassID class_id) {
  switch (class_id) {
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

/// Any other text means milliseconds.
TimeUnit::type unit_of(const hxArray* data) {
  const std::string units = text(data, "Units");
  if (units == "seconds") return TimeUnit::SECOND;
  if (units == "microseconds") return TimeUnit::MICRO;
  if (units == "nanoseconds") return TimeUnit::NANO;
  return TimeUnit::MILLI;
}

ArrowModel fixed_width(TypePtr type, const hxArray* values, Region valid) {
  return {std::move(type), count(values), {valid, memory_of(values)}, {}, {}};
}

ArrowModel numbers(const hxArray* values, Region valid) {
  return fixed_width(number_type(hxGetClassID(values)), values, valid);
}

ArrowModel texts(TypePtr type, const hxArray* data, Region valid) {
  const hxArray* starts = field(data, "StartOffsets");
  return {std::move(type),
          count(starts) - 1,
          {valid, memory_of(starts), memory_of(field(data, "Values"))},
          {},
          {}};
}

ArrowModel logical(const hxArray* data, Region valid) {
  const double length = *static_cast<const double*>(hxGetData(field(data, "Length")));
  return {::arrow::boolean(),
          static_cast<std::int64_t>(length),
          {valid, memory_of(field(data, "Values"))},
          {},
          {}};
}

ArrowModel times(const hxArray* data, Region valid) {
  const hxArray* values = field(data, "Values");
  const TimeUnit::type unit = unit_of(data);
  const bool narrow = hxGetClassID(values) == hxClassID::Int32;
  return fixed_width(narrow ? ::arrow::time32(unit) : ::arrow::time64(unit), values, valid);
}

ArrowModel categorical(const hxArray* data, Region valid) {
  ArrowModel codes = numbers(field(data, "Values"), valid);
  const bool ordered = *static_cast<const std::uint8_t*>(hxGetData(field(data, "Ordinal"))) != 0;
  codes.type = ::arrow::dictionary(codes.type, ::arrow::large_utf8(), ordered);
  codes.dictionary.push_back(texts(::arrow::large_utf8(), field(data, "Categories"), {}));
  return codes;
}

ArrowModel plain(const hxArray* envelope, Region valid) {
  const hxArray* data = field(envelope, "Data");
  if (hxIsNumeric(data)) return numbers(data, valid);
  const std::string type = text(envelope, "Type");
  if (type == "string" || type == "char") return texts(::arrow::large_utf8(), data, valid);
  if (type == "binary_array") return texts(::arrow::large_binary(), data, valid);
  if (type == "categorical") return categorical(data, valid);
  if (type == "logical") return logical(data, valid);
  if (type == "duration") return times(data, valid);
  return fixed_width(::arrow::timestamp(unit_of(data), text(data, "TimeZone")),
                     field(data, "Values"), valid);
}

ArrowModel lists(const hxArray* envelope, Region valid) {
  const hxArray* data = field(envelope, "Data");
  const hxArray* starts = field(data, "StartOffsets");
  ArrowModel child = model_to_arrow(field(data, "Values"));
  TypePtr type = ::arrow::large_list(child.type);
  return {std::move(type), count(starts) - 1, {valid, memory_of(starts)}, {std::move(child)}, {}};
}

ArrowModel structs(const hxArray* envelope, Region valid) {
  const hxArray* data = field(envelope, "Data");
  const hxArray* names = field(data, "FieldName");
  ArrowModel model{nullptr, 0, {valid}, {}, {}};
  ::arrow::FieldVector fields;
  for (size_t i = 0; i < hxGetNumberOfElements(names); ++i) {
    model.children.push_back(model_to_arrow(hxGetCellChecked(field(data, "FieldData"), i)));
    fields.push_back(
        ::arrow::field(hxGetString(hxGetCellChecked(names, i)), model.children.back().type));
  }
  model.type = ::arrow::struct_(fields);
  model.length = model.children.front().length;
  return model;
}

}  // namespace

ArrowModel model_to_arrow(const hxArray* envelope) {
  const std::string kind = text(envelope, "ArrowType");
  const Region valid = bitmap(envelope);
  if (kind == "list_array") return lists(envelope, valid);
  if (kind == "struct") return structs(envelope, valid);
  return plain(envelope, valid);
}

}  // namespace numera::gauntlet
