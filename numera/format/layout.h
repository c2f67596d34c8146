#pragma once

/// \file
/// The memory layouts of the Arrow types that have a host form. Switches over `Layout` have no
/// default: after a layout is added, the compiler names each switch that lacks it.

#include <arrow/type_fwd.h>

#include <cstdint>
#include <limits>

namespace numera::format {

/// Whether offset and length are not negative and their sum fits in 64 bits.
constexpr bool extent_is_valid(std::int64_t offset, std::int64_t length) {
  return offset >= 0 && length >= 0 && offset <= std::numeric_limits<std::int64_t>::max() - length;
}

enum class Layout : std::uint8_t {
  kNoHostForm,  ///< the type is refused, or cast before it is converted
  kNoValues,
  kBits,
  kFixedWidth,  ///< numbers, dates, times, bytes of fixed width, codes of dictionaries
  kText,        ///< text and bytes, with 32-bit offsets
  kLargeText,   ///< text and bytes, with 64-bit offsets
  kList,
  kLargeList,
  kMap,
  kStruct,
};

constexpr Layout layout_of(::arrow::Type::type id) {
  using ::arrow::Type;
  switch (id) {
    case Type::NA:
      return Layout::kNoValues;
    case Type::BOOL:
      return Layout::kBits;
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
    case Type::FIXED_SIZE_BINARY:
    case Type::DATE32:
    case Type::DATE64:
    case Type::TIMESTAMP:
    case Type::TIME32:
    case Type::TIME64:
    case Type::DURATION:
    case Type::DICTIONARY:
      return Layout::kFixedWidth;
    case Type::STRING:
    case Type::BINARY:
      return Layout::kText;
    case Type::LARGE_STRING:
    case Type::LARGE_BINARY:
      return Layout::kLargeText;
    case Type::LIST:
      return Layout::kList;
    case Type::LARGE_LIST:
      return Layout::kLargeList;
    case Type::MAP:
      return Layout::kMap;
    case Type::STRUCT:
      return Layout::kStruct;
    default:
      return Layout::kNoHostForm;
  }
}

}  // namespace numera::format
