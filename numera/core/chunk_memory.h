#pragma once

/// \file
/// Reads the memory of Arrow arrays. The buffers of chunks are accessed through these functions
/// only. They never read outside a buffer, even if the array states wrong lengths or offsets. A
/// buffer that is needed but not in main memory is Invalid "Buffer: found bytes that cannot be read
/// here, expected main memory."

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

/// The bytes of a buffer. Empty if the buffer is null, has no memory or has a negative size.
BytesResult readable_bytes(const std::shared_ptr<::arrow::Buffer>& buffer);

/// The bytes of buffer `index` of an array. Empty if the array has no such buffer.
BytesResult readable_bytes(const ::arrow::ArrayData& array, size_t index);

/// The elements of a chunk, `width` bytes each. Invalid if the values buffer is too short. The
/// buffer is not accessed if there are no bytes to read.
BytesResult fixed_width_values(const ArrayView& chunk, std::int64_t width);

/// Elements of variable width, back to back: element i is bytes [offsets[i], offsets[i + 1]).
template <class Offset>
struct VariableWidthValues {
  std::span<const Offset> offsets;  ///< number of elements + 1; empty for no elements
  std::span<const std::uint8_t> bytes;
  /// Owns a copy of the offsets if those of the array are not aligned for `Offset`; else null.
  std::shared_ptr<const std::vector<Offset>> aligned_offsets;
};

/// The elements of an array with `Offset` (int32 or int64) offsets. Invalid if the offsets buffer
/// is too short, or if an offset is negative, less than the one before or beyond the end of the
/// values. So reading by these offsets stays within `bytes`. Cost: one pass over the offsets.
template <class Offset>
::arrow::Result<VariableWidthValues<Offset>> variable_width_values(const ArrayView& array);

/// The O(1) part of the checks of `variable_width_values`: offset and length are valid, and the
/// buffer holds all offsets that the array needs, `width` bytes each.
::arrow::Status check_offsets_fit(const ArrayView& array, std::int64_t width);

/// The offsets of a list or map as stored: `length` + 1 of them, `width` bytes each. For an array
/// without elements and without offsets, the result is one offset, 0. Invalid if the offsets buffer
/// is too short.
BytesResult stored_offsets(const ArrayView& chunk, std::int64_t width);

/// The bits of a boolean array from the start of its buffer. The array offset is not applied.
inline BytesResult unsliced_bits(const ArrayView& chunk) { return readable_bytes(*chunk.data, 1); }

/// The validity bits from the start of the bitmap. The array offset is not applied. Empty if the
/// array has no bitmap.
inline BytesResult unsliced_validity(const ArrayView& chunk) {
  return readable_bytes(*chunk.data, 0);
}

/// Whether offset and length are not negative and their sum fits in 64 bits.
bool extent_is_valid(const ArrayView& array);

/// The number of null slots. All slots of the null type are null. If the array knows the count, no
/// bits are read. Bits that a short bitmap lacks count as valid. If the view covers the whole array
/// and the bitmap is long enough, a new count is stored in the array, as Arrow's own function does.
::arrow::Result<std::int64_t> count_nulls(const ArrayView& array);

/// Invalid if a chunk is missing, has a negative offset or length, or has another type than the
/// column; the names, nullability and metadata of fields may differ. Invalid if the chunk lengths
/// do not add up to the length of the column.
::arrow::Status check_chunks(const ColumnView& column);

}  // namespace numera::io::arrow::core
