#pragma once

/// \file
/// Reading the memory of Arrow arrays. Buffers of chunks are touched through these functions only,
/// so that no read leaves its buffer, whatever the array says of itself. A buffer that is needed
/// and not in main memory is Invalid "Buffer: found bytes that cannot be read here, expected main
/// memory."

#include <arrow/array/data.h>
#include <arrow/buffer.h>
#include <arrow/result.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "numera/core/array_view.h"

namespace numera::io::arrow::core {

using BytesResult = ::arrow::Result<std::span<const std::uint8_t>>;

/// The bytes of a buffer; none where it is null or its size is negative.
BytesResult readable_bytes(const std::shared_ptr<::arrow::Buffer>& buffer);

/// The bytes of buffer `index` of an array; none where the array has not as many buffers.
BytesResult readable_bytes(const ::arrow::ArrayData& array, size_t index);

/// Elements of fixed width, `width` bytes each. Invalid where the values buffer ends before. The
/// buffer is not looked at where there are no bytes to read.
BytesResult fixed_width_values(const ArrayView& chunk, std::int64_t width);

/// Elements of any width, back to back: element i is bytes [offsets[i], offsets[i + 1]).
template <class Offset>
struct VariableWidthValues {
  std::span<const Offset> offsets;  ///< one more than there are elements; none for no elements
  std::span<const std::uint8_t> bytes;
  /// Holds the offsets where those of the array lie at an odd address.
  std::shared_ptr<const std::vector<Offset>> aligned_offsets;
};

/// Elements with `Offset` (int32 or int64) offsets. Invalid where the offsets buffer ends early, or
/// an offset is negative, below the one before or beyond the end of the values: reading by these
/// offsets stays within `bytes`. One pass over the offsets.
template <class Offset>
::arrow::Result<VariableWidthValues<Offset>> variable_width_values(const ArrayView& array);

/// The part of this check that takes no pass: that there are as many offsets, `width` bytes each,
/// as the array needs.
::arrow::Status check_offsets_fit(const ArrayView& array, std::int64_t width);

/// The offsets of a list or map as stored: `length` + 1 of them, `width` bytes each. An array
/// without elements may have no offsets at all: then there is one, 0. Invalid where the offsets
/// buffer ends before.
BytesResult stored_offsets(const ArrayView& chunk, std::int64_t width);

/// Bits of a boolean array, from the first bit of its buffer on: the offset is not applied.
inline BytesResult unsliced_bits(const ArrayView& chunk) { return readable_bytes(*chunk.data, 1); }

/// Validity bits, from the first bit of the bitmap on: the offset is not applied. Empty where the
/// array has no bitmap.
inline BytesResult unsliced_validity(const ArrayView& chunk) {
  return readable_bytes(*chunk.data, 0);
}

/// Neither offset nor length is negative, and their sum is within 64 bits.
bool extent_is_valid(const ArrayView& array);

/// Null slots. A count that the array knows is taken; every slot of the null type is null. A
/// bitmap that is too short counts as far as it goes; the array keeps the count of one that is
/// long enough, as Arrow's own function does.
::arrow::Result<std::int64_t> count_nulls(const ArrayView& array);

/// Invalid where a chunk is missing, of another type than the column, or of a negative extent, and
/// where the lengths of all chunks do not add up to that of the column.
::arrow::Status check_chunks(const ColumnView& column);

}  // namespace numera::io::arrow::core
