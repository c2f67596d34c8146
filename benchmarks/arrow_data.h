#pragma once

/// \file
/// The Arrow values that the benchmarks convert. peer_data.py makes the same values in Python.
///
/// Every function returns the elements `begin` to `begin + length` of one endless column. So a
/// column can be made chunk by chunk and at any length.

#include <arrow/status.h>

#include <cstdint>

#include "benchmarks/sizes.h"

namespace numera::benchmarks {

/// Aborts the run if the status is an error.
void require(const ::arrow::Status& status);

/// `Some`: every tenth element is null. A null hides the value that would be there without it.
enum class Nulls { None, Some, All };

using MakeArray = ArrayPtr (*)(std::int64_t begin, std::int64_t length, Nulls nulls);

ArrayPtr doubles(std::int64_t begin, std::int64_t length, Nulls nulls);   ///< 0, 0.5, 1, 1.5, ...
ArrayPtr integers(std::int64_t begin, std::int64_t length, Nulls nulls);  ///< int64 0, 1, 2, ...
ArrayPtr booleans(std::int64_t begin, std::int64_t length, Nulls nulls);  ///< multiples of 3 and 7
ArrayPtr dates(std::int64_t begin, std::int64_t length, Nulls nulls);     ///< date32
ArrayPtr times(std::int64_t begin, std::int64_t length, Nulls nulls);     ///< time64[us]
ArrayPtr timestamps(std::int64_t begin, std::int64_t length, Nulls nulls);  ///< [us], UTC
ArrayPtr durations(std::int64_t begin, std::int64_t length, Nulls nulls);   ///< [s]

/// 12 bytes of ASCII, "item 0000042".
ArrayPtr ascii_texts(std::int64_t begin, std::int64_t length, Nulls nulls);
/// 29 bytes of Latin, Chinese and Greek, "Zürich 東京 Αθήνα 042".
ArrayPtr mixed_texts(std::int64_t begin, std::int64_t length, Nulls nulls);
/// 16 bytes, "bytes 0000000042".
ArrayPtr byte_strings(std::int64_t begin, std::int64_t length, Nulls nulls);

/// int32 codes into the 100 categories "category 0" and so on. The categories of an array start
/// with the number of its chunk: begin / length.
ArrayPtr categories(std::int64_t begin, std::int64_t length, Nulls nulls);

ArrayPtr lists(std::int64_t begin, std::int64_t length, Nulls nulls);    ///< of 8 doubles each
ArrayPtr structs(std::int64_t begin, std::int64_t length, Nulls nulls);  ///< of an int64 and a text
ArrayPtr maps(std::int64_t begin, std::int64_t length, Nulls nulls);  ///< 2 of text to int64 each

/// Lists of one element each, or structs of one field, nested `levels` deep, with doubles inside.
ArrayPtr nested_lists(std::int64_t length, int levels);
ArrayPtr nested_structs(std::int64_t length, int levels);

/// How a column differs from the base row: one chunk, no nulls, no slice.
struct Shape {
  std::int64_t length;
  Nulls nulls = Nulls::None;
  std::int64_t chunks = 1;
  bool sliced = false;  ///< the elements from index 7 of a longer array
};

ColumnPtr make_column(MakeArray make, const Shape& shape);

/// float64 columns "column 0" and so on, of 1,000 rows each.
TablePtr make_table(std::int64_t columns);
inline constexpr std::int64_t kTableRows = 1000;

}  // namespace numera::benchmarks
