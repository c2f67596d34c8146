#pragma once

/// \file
/// The records of the encoded form: their fields in the order in which they are written, and
/// functions that make them. The records take ownership of their values, which are host arrays.

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "numera/format/bitmap.h"
#include "numera/format/names.h"
#include "numera/format/values.h"
#include "numera/host/array.h"

namespace numera::format {

template <size_t n>
using Fields = std::array<const char*, n>;

/// \name Fields of each record, in order
/// @{

/// An encoded array that stands alone or is the child of another one.
inline constexpr Fields<4> kArray = {kArrowType, kType, kValid, kData};
/// Encoded arrays that are the columns of a table.
inline constexpr Fields<4> kTableColumns = {kArrowType, kType, kData, kValid};
inline constexpr Fields<3> kTable = {kArrowType, kColumns, kNames};

/// A buffer that stands alone, or one bitmap for all chunks of a column.
inline constexpr Fields<3> kBuffer = {kArrowType, kValues, kLength};
/// Bitmaps with one element per chunk, and packed logical values.
inline constexpr Fields<3> kBitmaps = {kValues, kLength, kArrowType};

/// Texts and bytes: the bytes of all elements (uint8), and where each element starts (uint64).
inline constexpr Fields<2> kPacked = {kValues, kStartOffsets};
inline constexpr Fields<3> kCategorical = {kCategories, kValues, kOrdinal};
inline constexpr Fields<2> kDates = {kValues, kDateType};
inline constexpr Fields<4> kTimestamps = {kValues, kUnits, kTimeZone, kDateType};
inline constexpr Fields<2> kTimes = {kValues, kUnits};

/// Chunks of lists: the encoded array of all values, and where each list starts.
inline constexpr Fields<2> kLists = {kValues, kStartOffsets};
inline constexpr Fields<3> kMaps = {kKeys, kValues, kStartOffsets};
/// Chunks of structs: a cell of names, and a cell of encoded arrays.
inline constexpr Fields<2> kStructs = {kFieldName, kFieldData};
/// @}

/// Makes a 1-by-1 struct with one value per field.
template <size_t n, class... Values>
hxArrayPtr make_record(const Fields<n>& fields, Values... values) {
  static_assert(sizeof...(values) == n, "a value for each field");
  hxArrayPtr record = make_struct(1, fields);
  size_t i = 0;
  (hxSetField(record.get(), 0, fields[i++], std::move(values)), ...);
  return record;
}

/// Stores a buffer in element `index` of a struct array of buffers or bitmaps. `length` is the
/// number of elements.
void store_buffer(hxArray* buffers, size_t index, hxArrayPtr values, std::int64_t length);

/// Makes packed logical values. `bits` is a uint8 column.
hxArrayPtr make_packed_logical(hxArrayPtr bits, std::int64_t length);

/// The initial bits of a new bitmap. `NoBits` makes "Values" 0-by-1.
enum class BitFill : std::uint8_t { NoBits, Zeros, Ones };

/// Stores a bitmap of `length` bits like `store_buffer`. The returned writer writes to "Values" and
/// must not outlive `buffers`.
BitmapWriter store_bitmap(hxArray* buffers, size_t index, std::int64_t length, BitFill fill);

}  // namespace numera::format
