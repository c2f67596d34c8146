#pragma once

/// \file
/// Numbers, dates, times and decimals of every type as one of four: std::int64_t, std::uint64_t,
/// double and arrow::Decimal256. All integers, dates and times but those of uint64 are
/// std::int64_t.

#include <arrow/array.h>
#include <arrow/type.h>
#include <arrow/util/decimal.h>
#include <arrow/util/float16.h>

#include <cstdint>
#include <string>
#include <type_traits>

#include "tools/element_rows.h"

namespace numera::tools {

template <typename Stored, typename Add>
void each_stored(const ElementRows& elements, const Add& add) {
  const Stored* stored = elements.values->data()->template GetValues<Stored>(1);
  for (const std::int64_t row : elements.rows) add(stored[row]);
}

/// \name Calls `add` with each value as one of the four types, which the second argument selects
/// @{
template <typename Add>
void each_number(const ElementRows& elements, std::int64_t /*as*/, const Add& add) {
  switch (elements.values->type_id()) {
    case ::arrow::Type::INT8:
      return each_stored<std::int8_t>(elements, add);
    case ::arrow::Type::UINT8:
      return each_stored<std::uint8_t>(elements, add);
    case ::arrow::Type::INT16:
      return each_stored<std::int16_t>(elements, add);
    case ::arrow::Type::UINT16:
      return each_stored<std::uint16_t>(elements, add);
    case ::arrow::Type::UINT32:
      return each_stored<std::uint32_t>(elements, add);
    case ::arrow::Type::INT32:
    case ::arrow::Type::DATE32:
    case ::arrow::Type::TIME32:
      return each_stored<std::int32_t>(elements, add);
    default:
      return each_stored<std::int64_t>(elements, add);
  }
}

template <typename Add>
void each_number(const ElementRows& elements, std::uint64_t /*as*/, const Add& add) {
  each_stored<std::uint64_t>(elements, add);
}

template <typename Add>
void each_number(const ElementRows& elements, double /*as*/, const Add& add) {
  switch (elements.values->type_id()) {
    case ::arrow::Type::HALF_FLOAT:
      return each_stored<std::uint16_t>(elements, [&](std::uint16_t bits) {
        add(::arrow::util::Float16::FromBits(bits).ToDouble());
      });
    case ::arrow::Type::FLOAT:
      return each_stored<float>(elements, add);
    default:
      return each_stored<double>(elements, add);
  }
}

template <typename Add>
void each_number(const ElementRows& elements, const ::arrow::Decimal256& /*as*/, const Add& add) {
  const auto& values = static_cast<const ::arrow::FixedSizeBinaryArray&>(*elements.values);
  for (const std::int64_t row : elements.rows) {
    const std::uint8_t* bytes = values.GetValue(row);
    switch (values.byte_width()) {
      case 4:
        add(::arrow::Decimal256(::arrow::Decimal32(bytes).value()));
        break;
      case 8:
        add(::arrow::Decimal256(::arrow::Decimal64(bytes).value()));
        break;
      case 16:
        add(::arrow::Decimal256(::arrow::Decimal128(bytes)));
        break;
      default:
        add(::arrow::Decimal256(bytes));
    }
  }
}
/// @}

/// The bytes in which an array stores the value.
template <typename Value>
std::string stored_bytes(const Value& value, const ::arrow::DataType& type) {
  const auto bytes = [](const auto& number) {
    return std::string(reinterpret_cast<const char*>(&number), sizeof number);
  };
  if constexpr (std::is_same_v<Value, ::arrow::Decimal256>) {
    return bytes(value.ToBytes()).substr(0, static_cast<size_t>(type.byte_width()));
  } else if constexpr (std::is_same_v<Value, double>) {
    if (type.id() == ::arrow::Type::HALF_FLOAT) {
      return bytes(::arrow::util::Float16::FromDouble(value).bits());
    }
    return type.id() == ::arrow::Type::FLOAT ? bytes(static_cast<float>(value)) : bytes(value);
  } else {
    return bytes(value).substr(0, static_cast<size_t>(type.byte_width()));  // little-endian
  }
}

}  // namespace numera::tools
