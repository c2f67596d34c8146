#include "numera/extras/intake/type_text.h"

#include <arrow/extension_type.h>

#include <algorithm>

namespace numera::extras::intake {
namespace {

bool nests_within(const ::arrow::DataType& type, int levels) {
  if (levels == 0) return false;
  if (type.id() == ::arrow::Type::DICTIONARY) {
    const auto& dictionary = static_cast<const ::arrow::DictionaryType&>(type);
    return nests_within(*dictionary.value_type(), levels - 1);
  }
  if (type.id() == ::arrow::Type::EXTENSION) {
    const auto& extension = static_cast<const ::arrow::ExtensionType&>(type);
    return nests_within(*extension.storage_type(), levels - 1);
  }
  return std::ranges::all_of(type.fields(), [levels](const auto& field) {
    return nests_within(*field->type(), levels - 1);
  });
}

}  // namespace

std::string type_text(const ::arrow::DataType& type) {
  constexpr int kPrintedLevels = 64;
  return nests_within(type, kPrintedLevels) ? type.ToString() : type.name();
}

}  // namespace numera::extras::intake
