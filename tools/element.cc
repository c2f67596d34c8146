#include "tools/element.h"

#include <arrow/array.h>
#include <arrow/extension_type.h>

#include <utility>

namespace numera::tools {

using ::arrow::Type;

Element element_of(std::shared_ptr<::arrow::Array> owner, std::int64_t row) {
  const ::arrow::Array* array = owner.get();
  return {std::move(owner), array, row};
}

Element resolved(Element element) {
  while (element.array->IsValid(element.row)) {
    const std::int64_t row = element.row;
    if (element.array->type_id() == Type::DICTIONARY) {
      const auto& codes = as<::arrow::DictionaryArray>(element);
      element = element_of(codes.dictionary(), codes.GetValueIndex(row));
    } else if (element.array->type_id() == Type::RUN_END_ENCODED) {
      const auto run = element.array->Slice(row, 1);
      const auto& runs = static_cast<const ::arrow::RunEndEncodedArray&>(*run);
      element = element_of(runs.values(), runs.FindPhysicalOffset());
    } else if (element.array->type_id() == Type::EXTENSION) {
      element = element_of(as<::arrow::ExtensionArray>(element).storage(), row);
    } else {
      break;
    }
  }
  return element;
}

std::optional<std::string_view> bytes_of(const Element& element) {
  const std::int64_t row = element.row;
  switch (element.array->type_id()) {
    case Type::STRING:
    case Type::BINARY:
      return as<::arrow::BinaryArray>(element).GetView(row);
    case Type::LARGE_STRING:
    case Type::LARGE_BINARY:
      return as<::arrow::LargeBinaryArray>(element).GetView(row);
    case Type::STRING_VIEW:
    case Type::BINARY_VIEW:
      return as<::arrow::BinaryViewArray>(element).GetView(row);
    case Type::FIXED_SIZE_BINARY:
      return as<::arrow::FixedSizeBinaryArray>(element).GetView(row);
    default:
      return std::nullopt;
  }
}

}  // namespace numera::tools
