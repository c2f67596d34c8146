#pragma once

#include <arrow/array/array_base.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

namespace numera::tools {

/// An element of an array.
struct Element {
  std::shared_ptr<::arrow::Array> owner;  ///< of `array`, if that is a part of another one
  const ::arrow::Array* array;
  std::int64_t row;
};

template <typename ArrayType>
const ArrayType& as(const Element& element) {
  return static_cast<const ArrayType&>(*element.array);
}

Element element_of(std::shared_ptr<::arrow::Array> owner, std::int64_t row);

/// The element that a code, a run or an extension type stands for. It may be null itself.
Element resolved(Element element);

/// The bytes of a text or of binary data; none for other types.
std::optional<std::string_view> bytes_of(const Element& element);

}  // namespace numera::tools
