#pragma once

/// \file
/// Making buffer envelopes: structs with the fields "ArrowType" ("buffer"), "Values" (uint8 column)
/// and "Length" (double). The order of the fields tells the two forms apart.

#include <cstddef>
#include <cstdint>

#include "numera/core/bitmap.h"
#include "numera/host/array.h"

namespace numera::io::arrow::core {

/// The 1-by-1 struct of a single buffer, in the order "ArrowType", "Values", "Length".
hxArrayPtr make_buffer_envelope();

/// The struct array of `count` bitmaps, in the order "Values", "Length", "ArrowType".
hxArrayPtr make_bitmap_envelopes(size_t count);

/// What the bits of a new bitmap are; `NoBits` makes "Values" 0-by-1.
enum class BitFill { NoBits, Zeros, Ones };

/// Stores a bitmap of `length` bits into element `index` of either form. The writer writes to
/// "Values" and lives as long as `envelopes`.
BitmapWriter store_bitmap(hxArray* envelopes, size_t index, std::int64_t length, BitFill fill);

}  // namespace numera::io::arrow::core
