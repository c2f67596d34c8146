#include "tools/host_json.h"

#include <arrow/array/util.h>
#include <arrow/buffer.h>
#include <arrow/type.h>

#include <cstdint>
#include <map>
#include <memory>
#include <utility>
#include <vector>

#include "numera/host/string_array.h"
#include "numera/host/text_codec.h"
#include "tools/json.h"
#include "tools/json_value.h"

namespace numera::tools {
namespace {

using HostMembers = std::vector<std::pair<std::string_view, std::string>>;

std::string host_json(const hxArray* value);

/// The type of an Arrow array that has the elements of a host array as its values; null where there
/// is none.
std::shared_ptr<::arrow::DataType> arrow_type_of(const hxArray* value) {
  static const std::map<hxClassID, std::shared_ptr<::arrow::DataType>> kTypes = {
      {hxClassID::Double, ::arrow::float64()}, {hxClassID::Single, ::arrow::float32()},
      {hxClassID::Int8, ::arrow::int8()},      {hxClassID::UInt8, ::arrow::uint8()},
      {hxClassID::Int16, ::arrow::int16()},    {hxClassID::UInt16, ::arrow::uint16()},
      {hxClassID::Int32, ::arrow::int32()},    {hxClassID::UInt32, ::arrow::uint32()},
      {hxClassID::Int64, ::arrow::int64()},    {hxClassID::UInt64, ::arrow::uint64()}};
  if (hxIsSparse(value) || hxIsComplex(value)) return nullptr;
  const auto found = kTypes.find(hxGetClassID(value));
  return found == kTypes.end() ? nullptr : found->second;
}

/// Calls `json_of` with the number of each element.
template <class JsonOf>
std::string array_json(size_t elements, const JsonOf& json_of) {
  std::vector<std::string> values;
  values.reserve(elements);
  for (size_t i = 0; i < elements; ++i) values.push_back(json_of(i));
  return json_array(values);
}

std::string numbers_json(const hxArray* value, std::shared_ptr<::arrow::DataType> type) {
  const size_t elements = hxGetNumberOfElements(value);
  const auto length = static_cast<std::int64_t>(elements);
  const auto block = ::arrow::Buffer::Wrap(static_cast<const std::uint8_t*>(hxGetData(value)),
                                           elements * hxGetElementSize(value));
  const auto numbers =
      ::arrow::MakeArray(::arrow::ArrayData::Make(std::move(type), length, {nullptr, block}));
  return array_json(elements,
                    [&](size_t i) { return json_value(*numbers, static_cast<std::int64_t>(i)); });
}

std::string truth_values_json(const hxArray* value) {
  const auto* truths = static_cast<const bool*>(hxGetData(value));
  return array_json(hxGetNumberOfElements(value),
                    [&](size_t i) { return std::string(truths[i] ? "true" : "false"); });
}

std::string texts_json(const hxStringArray& texts) {
  const hxUTF16ToUTF8 codec("UTF-8");
  return array_json(texts.size(), [&](size_t i) {
    const auto text = texts.element(i);
    return text ? json_text(codec.convert(text->data(), text->size())) : "null";
  });
}

/// Adds the members that tell what the value holds. There are none where the host lets nobody read
/// the elements.
void add_contents(const hxArray* value, HostMembers& members) {
  const hxClassID class_id = hxGetClassID(value);
  const size_t elements = hxGetNumberOfElements(value);
  if (hxIsStringArray(value)) {
    members.emplace_back("values", texts_json(hxGetStringArray(value)));
  } else if (class_id == hxClassID::Char) {
    members.emplace_back("text", json_text(hxGetString(value)));
  } else if (class_id == hxClassID::Cell) {
    members.emplace_back(
        "values", array_json(elements, [&](size_t i) { return host_json(hxGetCell(value, i)); }));
  } else if (class_id == hxClassID::Struct) {
    members.emplace_back(
        "values", array_json(elements, [&](size_t i) { return host_fields_json(value, i); }));
  } else if (class_id == hxClassID::Logical && !hxIsSparse(value)) {
    members.emplace_back("values", truth_values_json(value));
  } else if (auto type = arrow_type_of(value)) {
    members.emplace_back("values", numbers_json(value, std::move(type)));
  }
}

std::string host_json(const hxArray* value) {
  if (value == nullptr) return "null";
  const auto size = hxGetDimensions(value);
  HostMembers members = {
      {"class", json_text(hxGetClassName(value))},
      {"size", array_json(size.size(), [&](size_t i) { return std::to_string(size[i]); })}};
  add_contents(value, members);
  return json_object(members);
}

}  // namespace

std::string host_fields_json(const hxArray* structs, size_t element) {
  HostMembers fields;
  for (int i = 0; i < hxGetNumberOfFields(structs); ++i) {
    const char* name = hxGetFieldName(structs, i);
    fields.emplace_back(name, host_json(hxGetField(structs, element, name)));
  }
  return json_object(fields);
}

}  // namespace numera::tools
