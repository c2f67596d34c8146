#pragma once

/// \file
/// The ten numeric classes and logical values.
///
/// Numbers are bare host arrays. Logical values travel packed, as a 1-by-1 struct with the fields
/// "Values" (uint8 column of bits, least significant first), "Length" (double) and "ArrowType"
/// ("buffer").

#include <arrow/result.h>

#include <cstdint>
#include <memory>
#include <span>

#include "numera/core/dispatch.h"
#include "numera/host/array.h"

namespace numera::io::arrow::core {

/// The host class of numbers of a C++ type.
template <class T>
inline constexpr hxClassID kNumericClass = hxClassID::Unknown;
template <>
inline constexpr hxClassID kNumericClass<double> = hxClassID::Double;
template <>
inline constexpr hxClassID kNumericClass<float> = hxClassID::Single;
template <>
inline constexpr hxClassID kNumericClass<std::int8_t> = hxClassID::Int8;
template <>
inline constexpr hxClassID kNumericClass<std::uint8_t> = hxClassID::UInt8;
template <>
inline constexpr hxClassID kNumericClass<std::int16_t> = hxClassID::Int16;
template <>
inline constexpr hxClassID kNumericClass<std::uint16_t> = hxClassID::UInt16;
template <>
inline constexpr hxClassID kNumericClass<std::int32_t> = hxClassID::Int32;
template <>
inline constexpr hxClassID kNumericClass<std::uint32_t> = hxClassID::UInt32;
template <>
inline constexpr hxClassID kNumericClass<std::int64_t> = hxClassID::Int64;
template <>
inline constexpr hxClassID kNumericClass<std::uint64_t> = hxClassID::UInt64;

/// Numbers of any shape, in storage order, to an array over their memory. The class alone decides
/// the type; one that is not numeric is Invalid "Invalid type for numeric NUMERA to Arrow
/// conversion.", complex and sparse numbers are a TypeError that names `field`.
ArrayResult numeric_to_arrow(const hxArray* values, std::shared_ptr<::arrow::Buffer> validity,
                             const char* field = "Data");

/// A packed logical struct to a boolean array over its bits. "Length" is truncated toward zero;
/// the bits are not compared with it.
ArrayResult logical_to_arrow(const hxArray* encoded, std::shared_ptr<::arrow::Buffer> validity);

/// Arrays of fixed width to an N-by-1 column of `kNumericClass<T>`, bit for bit. The Arrow type
/// only has to be as wide as T: dates, times and durations are written by these too.
template <class T>
::arrow::Result<hxArrayPtr> numeric_to_numera(const ColumnView& chunks);

/// Copies the elements of all chunks to `destination`, from element `start` on. Returns the
/// position behind the last one. Invalid where a chunk's buffer ends early.
template <class T>
::arrow::Result<std::int64_t> numeric_chunk_copy(const ColumnView& chunks, std::span<T> destination,
                                                 std::int64_t start);

/// Booleans to a packed logical struct. Bits are read from the start of each chunk's buffer: the
/// offset of a slice is not applied.
::arrow::Result<hxArrayPtr> logical_to_numera(const ColumnView& chunks);

}  // namespace numera::io::arrow::core
