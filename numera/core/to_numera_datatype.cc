#include "numera/core/to_numera_datatype.h"

#include "numera/core/arrow_types.h"

namespace numera::io::arrow::core {
namespace {

/// The only child of a map is the struct of key and item. It has a class name if both of them have
/// one.
bool has_name(const ::arrow::DataType& type) {
  if (arrow_type_row(type.id()).class_name == nullptr) return false;
  for (const auto& field : type.fields()) {
    if (!has_name(*field->type())) return false;
  }
  return true;
}

}  // namespace

std::optional<std::string> to_numera_datatype(const std::shared_ptr<::arrow::DataType>& type) {
  if (!check_type(type.get()).ok() || !has_name(*type)) return std::nullopt;
  return arrow_type_row(type->id()).class_name;
}

}  // namespace numera::io::arrow::core
