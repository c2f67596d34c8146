#pragma once

/// \file
/// Finds types with a null pointer in place of an inner type. Arrow lets such lists, fields and
/// dictionaries be created, and dereferences the pointer later.

#include <arrow/extension_type.h>
#include <arrow/type.h>

#include <algorithm>
#include <memory>

namespace numera::format {

/// Whether no direct inner type is a null pointer. For a map, the entries must also be a struct
/// with two fields.
inline bool has_inner_types(const ::arrow::DataType& type) {
  using ::arrow::Type;
  if (type.id() == Type::DICTIONARY) {
    return static_cast<const ::arrow::DictionaryType&>(type).value_type() != nullptr;
  }
  if (type.id() == Type::EXTENSION) {
    return static_cast<const ::arrow::ExtensionType&>(type).storage_type() != nullptr;
  }
  const auto has_type = [](const std::shared_ptr<::arrow::Field>& field) {
    return field != nullptr && field->type() != nullptr;
  };
  if (!std::ranges::all_of(type.fields(), has_type)) return false;
  if (type.id() != Type::MAP) return true;
  const ::arrow::DataType& entries = *type.field(0)->type();
  return entries.id() == Type::STRUCT && entries.num_fields() == 2 &&
         std::ranges::all_of(entries.fields(), has_type);
}

/// Whether no type at any depth is a null pointer, and types nest at most `levels` deep, this one
/// included.
inline bool is_whole(const ::arrow::DataType& type, int levels) {
  using ::arrow::Type;
  if (levels == 0 || !has_inner_types(type)) return false;
  if (type.id() == Type::DICTIONARY) {
    return is_whole(*static_cast<const ::arrow::DictionaryType&>(type).value_type(), levels - 1);
  }
  if (type.id() == Type::EXTENSION) {
    return is_whole(*static_cast<const ::arrow::ExtensionType&>(type).storage_type(), levels - 1);
  }
  return std::ranges::all_of(
      type.fields(), [levels](const auto& field) { return is_whole(*field->type(), levels - 1); });
}

}  // namespace numera::format
