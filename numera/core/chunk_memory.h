#pragma once

/// \file
/// Reading the memory of Arrow arrays. Buffers of chunks are touched through these functions only,
/// so that no read leaves its buffer, whatever the array says of itself.

#include <arrow/array/data.h>
#include <arrow/buffer.h>
#include <arrow/chunked_array.h>
#include <arrow/result.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace numera::io::arrow::core {

/// The bytes of a buffer; none where it is null, its memory is not main memory or its size is
/// negative.
std::span<const std::uint8_t> readable_bytes(const std::shared_ptr<::arrow::Buffer>& buffer);

/// The bytes of buffer `index` of an array; none where the array has not as many buffers.
std::span<const std::uint8_t> readable_bytes(const ::arrow::ArrayData& array, size_t index);

/// Elements of fixed width: `length` elements from the array's offset on, `width` bytes each.
/// Invalid where the values buffer ends before.
::arrow::Result<std::span<const std::uint8_t>> fixed_width_values(const ::arrow::ArrayData& chunk,
                                                                  std::int64_t width);

/// Elements of any width, back to back: element i is bytes [offsets[i], offsets[i + 1]).
template <class Offset>
struct VariableWidthValues {
  std::span<const Offset> offsets;  ///< one more than there are elements; none for no elements
  std::span<const std::uint8_t> bytes;
  /// Holds the offsets where those of the array lie at an odd address.
  std::shared_ptr<const std::vector<Offset>> aligned_offsets;
};

/// The elements of an array with `Offset` (int32 or int64) offsets, from its own offset on. Invalid
/// where the offsets buffer ends early, or an offset is negative, below the one before or beyond
/// the end of the values: reading by these offsets stays within `bytes`. One pass over the offsets.
template <class Offset>
::arrow::Result<VariableWidthValues<Offset>> variable_width_values(const ::arrow::ArrayData& array);

/// The part of this check that takes no pass: that there are as many offsets, `width` bytes each,
/// as the array needs.
::arrow::Status check_offsets_fit(const ::arrow::ArrayData& array, std::int64_t width);

/// The offsets of a list or map as stored: `length` + 1 of them from the array's offset on, `width`
/// bytes each. An array without elements may have no offsets at all: then there is one, 0. Invalid
/// where the offsets buffer ends before.
::arrow::Result<std::span<const std::uint8_t>> stored_offsets(const ::arrow::ArrayData& chunk,
                                                              std::int64_t width);

/// Bits of a boolean array, from the first bit of its buffer on: the offset is not applied.
inline std::span<const std::uint8_t> unsliced_bits(const ::arrow::ArrayData& chunk) {
  return readable_bytes(chunk, 1);
}

/// Validity bits, from the first bit of the bitmap on: the offset is not applied. Empty where the
/// array has no bitmap.
inline std::span<const std::uint8_t> unsliced_validity(const ::arrow::ArrayData& chunk) {
  return readable_bytes(chunk, 0);
}

/// Neither offset nor length is negative, and their sum is within 64 bits.
bool extent_is_valid(const ::arrow::ArrayData& array);

/// Null slots of an array. As Arrow's own count, but a bitmap that is too short counts as far as
/// it goes.
std::int64_t count_nulls(const ::arrow::ArrayData& array);

/// A chunked array of this one chunk.
std::shared_ptr<::arrow::ChunkedArray> single_chunk(std::shared_ptr<::arrow::Array> array);

/// Invalid where a chunk is missing, of another type than the column, or of a negative extent, and
/// where the lengths of all chunks do not add up to that of the column.
::arrow::Status check_chunks(const ::arrow::ChunkedArray& column);

}  // namespace numera::io::arrow::core
