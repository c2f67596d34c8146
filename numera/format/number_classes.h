#pragma once

/// \file
/// The ten numeric classes, in one table.

#include <arrow/type_fwd.h>

#include <cstddef>
#include <cstdint>
#include <tuple>
#include <type_traits>

#include "numera/host/array.h"

namespace numera::format {

/// A class of numbers. Both the host and Arrow store its elements as `T`.
template <class T>
struct NumberClass {
  hxClassID host_class;
  ::arrow::Type::type arrow_type;
  const char* name;  ///< name of the host class, and the text of "Type"
};

inline constexpr std::tuple kNumberClasses = {
    NumberClass<double>{hxClassID::Double, ::arrow::Type::DOUBLE, "double"},
    NumberClass<float>{hxClassID::Single, ::arrow::Type::FLOAT, "single"},
    NumberClass<std::int8_t>{hxClassID::Int8, ::arrow::Type::INT8, "int8"},
    NumberClass<std::uint8_t>{hxClassID::UInt8, ::arrow::Type::UINT8, "uint8"},
    NumberClass<std::int16_t>{hxClassID::Int16, ::arrow::Type::INT16, "int16"},
    NumberClass<std::uint16_t>{hxClassID::UInt16, ::arrow::Type::UINT16, "uint16"},
    NumberClass<std::int32_t>{hxClassID::Int32, ::arrow::Type::INT32, "int32"},
    NumberClass<std::uint32_t>{hxClassID::UInt32, ::arrow::Type::UINT32, "uint32"},
    NumberClass<std::int64_t>{hxClassID::Int64, ::arrow::Type::INT64, "int64"},
    NumberClass<std::uint64_t>{hxClassID::UInt64, ::arrow::Type::UINT64, "uint64"},
};

/// The row of an element type.
template <class T>
inline constexpr const NumberClass<T>& kNumberClass = std::get<NumberClass<T>>(kNumberClasses);

/// The numeric host class of a C++ type.
template <class T>
inline constexpr hxClassID kNumericClass = kNumberClass<T>.host_class;

/// Calls `use(row)` with the first row for which `is_it(row)` is true, or `otherwise()` if there is
/// none. Both must return the same type.
template <size_t i = 0, class IsIt, class Use, class Otherwise>
auto with_number_class(const IsIt& is_it, const Use& use, const Otherwise& otherwise) {
  if constexpr (i == std::tuple_size_v<decltype(kNumberClasses)>) {
    return otherwise();
  } else {
    constexpr const auto& row = std::get<i>(kNumberClasses);
    if (is_it(row)) return use(row);
    return with_number_class<i + 1>(is_it, use, otherwise);
  }
}

/// The same, with the row of `host_class`.
template <class Use, class Otherwise>
auto with_number_class(hxClassID host_class, const Use& use, const Otherwise& otherwise) {
  return with_number_class([host_class](const auto& row) { return row.host_class == host_class; },
                           use, otherwise);
}

/// The same, with the row of `index_type`, the index type of a dictionary. It must be an integer
/// type; for every other type, the row of uint64 is used.
template <class Use>
auto with_index_class(::arrow::Type::type index_type, const Use& use) {
  const auto otherwise = [&use] { return use(kNumberClass<std::uint64_t>); };
  const auto use_integer = [&]<class T>(const NumberClass<T>& row) {
    if constexpr (std::is_integral_v<T>) {
      return use(row);
    } else {
      return otherwise();
    }
  };
  return with_number_class([=](const auto& row) { return row.arrow_type == index_type; },
                           use_integer, otherwise);
}

}  // namespace numera::format
