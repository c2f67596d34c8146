#pragma once

/// \file
/// The limits: for each conversion, the least work that brings the bytes of an Arrow column into
/// host memory. A limit reads no more of the data than it must and makes no value that a user could
/// read.

#include <cstdint>
#include <string_view>
#include <vector>

#include "benchmarks/sizes.h"
#include "numera/host/array.h"

namespace numera::benchmarks {

/// Blocks of host memory, each a uint8 column.
using Blocks = std::vector<hxArrayPtr>;
using Limit = Blocks (*)(const ColumnPtr&);

/// Appends a block; the caller writes its bytes.
std::uint8_t* add_block(Blocks& blocks, std::int64_t bytes);

/// Appends a block with the validity bitmap if there are nulls.
void add_validity(Blocks& blocks, const ColumnPtr& column);

/// Copies the values of all chunks into one block, and the validity bitmap if there are nulls.
Blocks copied_values(const ColumnPtr& column);
/// The same for booleans. If a chunk starts within a byte, its bits are moved word by word. That is
/// a few times faster than Arrow's own copy of bitmaps.
Blocks copied_bits(const ColumnPtr& column);
/// Widens every byte of ASCII text to a code unit and every offset to 64 bits.
Blocks widened_texts(const ColumnPtr& column);
/// Runs all text of a chunk through the codec in one call, and widens every offset to 64 bits.
Blocks transcoded_texts(const ColumnPtr& column);
/// Texts with 32-bit or 64-bit offsets. Checks them first: widens ASCII, runs other text through
/// the codec.
Blocks any_texts(const ColumnPtr& column);
/// One slab per chunk with a header and the bytes of each byte string, and a pointer to each.
Blocks slab_of_bytes(const ColumnPtr& column);
/// Copies the codes. If there are several chunks, Arrow unifies the dictionaries. Then the codes
/// must be int32 into at most 127 categories in all, and each code is checked.
Blocks copied_codes(const ColumnPtr& column);
/// Copies every leaf, at any depth, with its own limit above, and copies offsets; merges nothing.
/// `leaves` checks texts first and widens them if they are ASCII. `ascii_leaves` widens them
/// unchecked.
Blocks leaves(const ColumnPtr& column);
Blocks ascii_leaves(const ColumnPtr& column);

/// Narrows UTF-16 to bytes and writes 64-bit offsets of texts of equal length.
Blocks narrowed_units(std::u16string_view units, std::int64_t texts);
/// The same, but encodes all units with one call of the codec.
Blocks encoded_units(std::u16string_view units, std::int64_t texts);

}  // namespace numera::benchmarks
