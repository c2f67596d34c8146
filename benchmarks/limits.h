#pragma once

/// \file
/// The least work that brings the bytes of an Arrow column into memory of the host: the bar that
/// the conversions are held against. Nothing here looks at what it copies more than it must, and
/// nothing makes a value that a user could read.

#include <cstdint>
#include <string_view>
#include <vector>

#include "benchmarks/sizes.h"
#include "numera/host/array.h"

namespace numera::benchmarks {

/// Blocks of host memory, as plain columns of bytes.
using Blocks = std::vector<hxArrayPtr>;
using Limit = Blocks (*)(const ColumnPtr&);

/// A block whose bytes the caller writes, behind the others.
std::uint8_t* add_block(Blocks& blocks, std::int64_t bytes);

/// A block of the validity where there are nulls.
void add_validity(Blocks& blocks, const ColumnPtr& column);

/// The values of all chunks copied into one block, and the validity where there are nulls.
Blocks copied_values(const ColumnPtr& column);
/// The same of truth values. Where a chunk begins within a byte, its bits are moved by words, which
/// is a few times faster than Arrow's own copy of bitmaps.
Blocks copied_bits(const ColumnPtr& column);
/// Every byte of ASCII text widened to a code unit, every offset to 64 bits.
Blocks widened_texts(const ColumnPtr& column);
/// Any text through the codec, all of a chunk in one piece, and every offset widened to 64 bits.
Blocks transcoded_texts(const ColumnPtr& column);
/// 32-bit or 64-bit offsets; texts are looked at first, and only widened where they are ASCII.
Blocks any_texts(const ColumnPtr& column);
/// One slab: a header for each byte string with its bytes behind it; and a pointer to each.
Blocks slab_of_bytes(const ColumnPtr& column);
/// The codes copied; int32 codes of several chunks of up to 127 categories in all by way of Arrow's
/// unification, each checked.
Blocks copied_codes(const ColumnPtr& column);
/// Every leaf at whatever depth by its own limit above, offsets copied, nothing merged. Texts are
/// looked at first, and widened where they are ASCII; `ascii_leaves` widens them at once.
Blocks leaves(const ColumnPtr& column);
Blocks ascii_leaves(const ColumnPtr& column);

/// UTF-16 narrowed to bytes, with 64-bit offsets of texts of equal length.
Blocks narrowed_units(std::u16string_view units, std::int64_t texts);
/// The same by the codec, in one piece.
Blocks encoded_units(std::u16string_view units, std::int64_t texts);

}  // namespace numera::benchmarks
