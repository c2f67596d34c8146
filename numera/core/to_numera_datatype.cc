#include "numera/core/to_numera_datatype.h"

#include <algorithm>

#include "numera/core/arrow_types.h"

namespace numera::io::arrow::core {
namespace {

/// A map's one child is the struct of its key and item, which has a name when both have.
bool has_name(const ::arrow::DataType& type) {
  return arrow_type_row(type.id()).class_name != nullptr &&
         std::ranges::all_of(type.fields(),
                             [](const auto& field) { return has_name(*field->type()); });
}

}  // namespace

std::optional<std::string> to_numera_datatype(const std::shared_ptr<::arrow::DataType>& type) {
  if (type == nullptr || !check_nesting(*type).ok() || !has_name(*type)) return std::nullopt;
  return arrow_type_row(type->id()).class_name;
}

}  // namespace numera::io::arrow::core
