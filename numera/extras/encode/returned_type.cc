#include <arrow/type.h>

#include <string>

#include "numera/core/limits.h"
#include "numera/extras/encode/encode.h"
#include "numera/format/names.h"
#include "numera/format/whole_type.h"
#include "numera/host/text_codec.h"

namespace numera::extras {
namespace {

using ::arrow::Type;
using TypePtr = std::shared_ptr<::arrow::DataType>;
using io::arrow::core::kMaxNestingLevels;

std::optional<TypePtr> returned(const ::arrow::DataType& type, int levels);

bool is_text(const ::arrow::DataType& type) {
  return type.id() == Type::STRING || type.id() == Type::LARGE_STRING;
}

std::optional<TypePtr> returned_dictionary(const ::arrow::DictionaryType& type) {
  if (!is_text(*type.value_type())) return std::nullopt;
  return ::arrow::dictionary(type.index_type(), ::arrow::large_utf8(), type.ordered());
}

std::optional<TypePtr> returned_list(const ::arrow::DataType& values, int levels) {
  if (levels == 0) return std::nullopt;
  const auto child = returned(values, levels - 1);
  if (!child) return std::nullopt;
  return ::arrow::large_list(*child);
}

std::optional<TypePtr> returned_struct(const ::arrow::FieldVector& fields, int levels) {
  if (levels == 0 || fields.empty()) return std::nullopt;
  ::arrow::FieldVector children;
  for (const auto& field : fields) {
    const auto child = returned(*field->type(), levels - 1);
    if (!child) return std::nullopt;
    children.push_back(::arrow::field(field->name(), *child));
  }
  return ::arrow::struct_(children);
}

std::optional<TypePtr> returned_map(const ::arrow::MapType& type, int levels) {
  if (levels == 0) return std::nullopt;
  const auto entry = returned_struct({::arrow::field(format::kKey, type.key_type()),
                                      ::arrow::field(format::kValue, type.item_type())},
                                     levels - 1);
  if (!entry) return std::nullopt;
  return ::arrow::large_list(*entry);
}

bool is_utf8(const std::string& text) {
  try {
    hxUTF8ToUTF16("UTF-8").convert(text);
    return true;
  } catch (const hxCodecError&) {
    return false;
  }
}

/// The core writes a time zone with one character per byte. `make_readable` decodes the bytes if
/// they are valid UTF-8; otherwise the characters stay.
TypePtr returned_timestamp(const ::arrow::TimestampType& type) {
  const std::string& bytes = type.timezone();
  if (is_utf8(bytes)) return ::arrow::timestamp(type.unit(), bytes);
  std::u16string characters;
  for (const char byte : bytes) characters += static_cast<unsigned char>(byte);
  return ::arrow::timestamp(type.unit(),
                            hxUTF16ToUTF8("UTF-8").convert(characters.data(), characters.size()));
}

/// Types without children. Each comes back unchanged or as one fixed type, whatever its parameters
/// are. Only the time zone of a timestamp may change.
std::optional<TypePtr> returned_plain(const ::arrow::DataType& type) {
  switch (type.id()) {
    case Type::BOOL:
    case Type::UINT8:
    case Type::INT8:
    case Type::UINT16:
    case Type::INT16:
    case Type::UINT32:
    case Type::INT32:
    case Type::UINT64:
    case Type::INT64:
    case Type::FLOAT:
    case Type::DOUBLE:
    case Type::TIME32:
    case Type::TIME64:
      return type.GetSharedPtr();
    case Type::TIMESTAMP:
      return returned_timestamp(static_cast<const ::arrow::TimestampType&>(type));
    case Type::NA:
      return ::arrow::float64();
    case Type::STRING:
    case Type::LARGE_STRING:
      return ::arrow::large_utf8();
    case Type::BINARY:
    case Type::LARGE_BINARY:
    case Type::FIXED_SIZE_BINARY:
      return ::arrow::large_binary();
    case Type::DATE32:
      return ::arrow::timestamp(::arrow::TimeUnit::SECOND);
    case Type::DATE64:
      return ::arrow::timestamp(::arrow::TimeUnit::MILLI);
    case Type::DURATION:
      return ::arrow::int64();
    default:
      return std::nullopt;
  }
}

std::optional<TypePtr> returned(const ::arrow::DataType& type, int levels) {
  if (!format::has_inner_types(type)) return std::nullopt;
  switch (type.id()) {
    case Type::DICTIONARY:
      return returned_dictionary(static_cast<const ::arrow::DictionaryType&>(type));
    case Type::LIST:
    case Type::LARGE_LIST:
      return returned_list(*static_cast<const ::arrow::BaseListType&>(type).value_type(), levels);
    case Type::STRUCT:
      return returned_struct(type.fields(), levels);
    case Type::MAP:
      return returned_map(static_cast<const ::arrow::MapType&>(type), levels);
    default:
      return returned_plain(type);
  }
}

}  // namespace

std::optional<TypePtr> returned_type(const ::arrow::DataType& type) {
  return returned(type, kMaxNestingLevels);
}

bool returns_as(const ::arrow::DataType& from, const ::arrow::DataType& to) {
  const std::optional<TypePtr> returned = returned_type(from);
  // No returned type is nested deeper, so a deeper `to` cannot be equal.
  if (!returned || !format::is_whole(to, 2 * kMaxNestingLevels)) return false;
  if ((*returned)->Equals(to)) return true;
  // Dictionaries of several chunks are merged, with an index type that fits the merged dictionary.
  if (from.id() != Type::DICTIONARY || to.id() != Type::DICTIONARY) return false;
  const auto& merged = static_cast<const ::arrow::DictionaryType&>(to);
  return !merged.ordered() && merged.value_type()->id() == Type::LARGE_STRING;
}

}  // namespace numera::extras
