#include "tools/json_value.h"

#include <arrow/array.h>
#include <arrow/type_traits.h>

#include "tools/characters.h"
#include "tools/element.h"
#include "tools/fixed_text.h"
#include "tools/json.h"
#include "tools/value_text.h"

namespace numera::tools {
namespace {

using ::arrow::Type;

/// An array of the values of a list from `start`.
std::string list_json(const ::arrow::Array& values, std::int64_t start, std::int64_t length) {
  std::string json = "[";
  for (std::int64_t i = 0; i < length; ++i) {
    if (i > 0) json += ',';
    json += json_value(values, start + i);
  }
  return json + ']';
}

template <typename ListType>
std::string list_json(const Element& element) {
  const auto& list = as<ListType>(element);
  return list_json(*list.values(), list.value_offset(element.row), list.value_length(element.row));
}

std::string struct_json(const Element& element) {
  const auto& structs = as<::arrow::StructArray>(element);
  std::string json = "{";
  for (int i = 0; i < structs.num_fields(); ++i) {
    if (i > 0) json += ',';
    json += json_text(structs.struct_type()->field(i)->name()) + ':';
    json += json_value(*structs.field(i), element.row);
  }
  return json + '}';
}

std::string map_json(const Element& element) {
  const auto& map = as<::arrow::MapArray>(element);
  const auto& entries = static_cast<const ::arrow::StructArray&>(*map.values());
  std::string json = "[";
  for (std::int64_t i = 0; i < map.value_length(element.row); ++i) {
    const std::int64_t entry = map.value_offset(element.row) + i;
    if (i > 0) json += ',';
    json += json_object({{"key", json_value(*entries.field(0), entry)},
                         {"value", json_value(*entries.field(1), entry)}});
  }
  return json + ']';
}

/// JSON has no form for NaN and infinities.
std::string number_json(std::string text) {
  const size_t first = text.starts_with('-') ? 1 : 0;
  return text[first] >= '0' && text[first] <= '9' ? text : "null";
}

std::string plain_json(const Element& element) {
  const ::arrow::Array& array = *element.array;
  if (array.type_id() == Type::DURATION) {
    return std::to_string(as<::arrow::DurationArray>(element).Value(element.row));
  }
  if (::arrow::is_string_or_string_view(array.type_id()))
    return json_text(bytes_of(element).value_or(""));
  std::string text = value_text(array, element.row, kUnlimited).value_or("");
  if (array.type_id() == Type::BOOL) return text;
  const bool is_number =
      ::arrow::is_integer(array.type_id()) || ::arrow::is_floating(array.type_id());
  return is_number ? number_json(std::move(text)) : json_text(text);
}

}  // namespace

std::string json_value(const ::arrow::Array& array, std::int64_t row) {
  const Element element = resolved({nullptr, &array, row});
  if (element.array->IsNull(element.row)) return "null";
  switch (element.array->type_id()) {
    case Type::LIST:
      return list_json<::arrow::ListArray>(element);
    case Type::LARGE_LIST:
      return list_json<::arrow::LargeListArray>(element);
    case Type::LIST_VIEW:
      return list_json<::arrow::ListViewArray>(element);
    case Type::LARGE_LIST_VIEW:
      return list_json<::arrow::LargeListViewArray>(element);
    case Type::FIXED_SIZE_LIST:
      return list_json<::arrow::FixedSizeListArray>(element);
    case Type::STRUCT:
      return struct_json(element);
    case Type::MAP:
      return map_json(element);
    default:
      return plain_json(element);
  }
}

}  // namespace numera::tools
