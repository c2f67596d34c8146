#include "tools/short_type.h"

#include <arrow/extension_type.h>

#include <string_view>

namespace numera::tools {
namespace {

using ::arrow::Type;

std::string fields_of(const ::arrow::DataType& type) {
  std::string text;
  for (const auto& field : type.fields()) {
    text += (text.empty() ? "" : ", ") + field->name() + ": " + short_type(*field->type());
  }
  return text;
}

std::string around(const ::arrow::DataType& type, const ::arrow::DataType& inner) {
  return type.name() + "<" + short_type(inner) + ">";
}

std::string map_name(const ::arrow::MapType& type) {
  return "map<" + short_type(*type.key_type()) + ", " + short_type(*type.item_type()) + ">";
}

std::string timestamp_name(const ::arrow::TimestampType& type) {
  constexpr std::string_view kZone = "tz=";
  std::string name = type.ToString();
  if (!type.timezone().empty()) name.erase(name.find(kZone), kZone.size());
  return name;
}

}  // namespace

std::string short_type(const ::arrow::DataType& type) {
  switch (type.id()) {
    case Type::LIST:
    case Type::LARGE_LIST:
    case Type::LIST_VIEW:
    case Type::LARGE_LIST_VIEW:
      return around(type, *type.field(0)->type());
    case Type::FIXED_SIZE_LIST: {
      const auto size = static_cast<const ::arrow::FixedSizeListType&>(type).list_size();
      return around(type, *type.field(0)->type()) + "[" + std::to_string(size) + "]";
    }
    case Type::STRUCT:
      return "struct<" + fields_of(type) + ">";
    case Type::MAP:
      return map_name(static_cast<const ::arrow::MapType&>(type));
    case Type::DICTIONARY:
      return around(type, *static_cast<const ::arrow::DictionaryType&>(type).value_type());
    case Type::RUN_END_ENCODED:
      return around(type, *static_cast<const ::arrow::RunEndEncodedType&>(type).value_type());
    case Type::EXTENSION:
      return static_cast<const ::arrow::ExtensionType&>(type).extension_name();
    case Type::DATE32:
    case Type::DATE64:
      return type.name();
    case Type::TIMESTAMP:
      return timestamp_name(static_cast<const ::arrow::TimestampType&>(type));
    default:
      return type.ToString();
  }
}

}  // namespace numera::tools
