#include "tools/element_rows.h"

#include <arrow/array.h>
#include <arrow/extension_type.h>

#include <numeric>
#include <utility>

namespace numera::tools {
namespace {

using ::arrow::Type;

void follow_codes(ElementRows& elements) {
  const auto held = elements.values;
  const auto& codes = static_cast<const ::arrow::DictionaryArray&>(*held);
  for (std::int64_t& row : elements.rows) row = codes.GetValueIndex(row);
  elements.values = codes.dictionary();
}

void follow_runs(ElementRows& elements) {
  const auto held = elements.values;
  for (std::int64_t& row : elements.rows) {
    const auto run = held->Slice(row, 1);
    row = static_cast<const ::arrow::RunEndEncodedArray&>(*run).FindPhysicalOffset();
  }
  elements.values = static_cast<const ::arrow::RunEndEncodedArray&>(*held).values();
}

void drop_nulls(ElementRows& elements) {
  const ::arrow::Array& values = *elements.values;
  std::erase_if(elements.rows, [&](std::int64_t row) { return values.IsNull(row); });
}

}  // namespace

ElementRows element_rows(std::shared_ptr<::arrow::Array> column) {
  ElementRows elements{std::move(column), {}};
  elements.rows.resize(static_cast<size_t>(elements.values->length()));
  std::iota(elements.rows.begin(), elements.rows.end(), std::int64_t{0});
  while (true) {
    drop_nulls(elements);
    switch (elements.values->type_id()) {
      case Type::DICTIONARY:
        follow_codes(elements);
        break;
      case Type::RUN_END_ENCODED:
        follow_runs(elements);
        break;
      case Type::EXTENSION:
        elements.values = static_cast<const ::arrow::ExtensionArray&>(*elements.values).storage();
        break;
      default:
        return elements;
    }
  }
}

std::shared_ptr<::arrow::DataType> resolved_type(std::shared_ptr<::arrow::DataType> type) {
  switch (type->id()) {
    case Type::DICTIONARY:
      return resolved_type(static_cast<const ::arrow::DictionaryType&>(*type).value_type());
    case Type::RUN_END_ENCODED:
      return resolved_type(static_cast<const ::arrow::RunEndEncodedType&>(*type).value_type());
    case Type::EXTENSION:
      return resolved_type(static_cast<const ::arrow::ExtensionType&>(*type).storage_type());
    default:
      return type;
  }
}

}  // namespace numera::tools
