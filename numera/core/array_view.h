#pragma once

/// \file
/// The input of the writers: borrowed columns of slices of Arrow arrays. Children are read in
/// place, without making Arrow arrays. So Arrow's functions do not run on the caller's arrays, and
/// a nesting level takes little stack.
///
/// Only these functions read the buffers of arrays. `check_column` (core/array_checks.h) has
/// checked every column before, so they stay within the buffers. `variable_width_values` fails at
/// wrong offsets; the others cannot fail.

#include <arrow/array/array_base.h>
#include <arrow/array/data.h>
#include <arrow/chunked_array.h>
#include <arrow/result.h>
#include <arrow/type_fwd.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "numera/format/layout.h"

namespace numera::io::arrow::core {

/// `length` elements of an array, from element `offset` of its buffers on. The array must outlive
/// the view.
struct ArrayView {
  const ::arrow::ArrayData* data = nullptr;  ///< null for a missing chunk
  std::int64_t offset = 0;
  std::int64_t length = 0;

  ArrayView() = default;
  /// The whole array, with its own offset and length.
  ArrayView(const ::arrow::ArrayData& array)
      : data(&array), offset(array.offset), length(array.length) {}
  ArrayView(const ::arrow::Array& array) : ArrayView(*array.data()) {}

  /// The whole child `i`, regardless of the part that this view shows.
  ArrayView whole_child(size_t i) const { return {*data->child_data[i]}; }
  /// Child `i` of a struct, sliced to the elements of this view.
  ArrayView struct_child(size_t i) const;
};

/// Whether offset and length are not negative and their sum fits in 64 bits.
inline bool extent_is_valid(const ArrayView& array) {
  return format::extent_is_valid(array.offset, array.length);
}

/// The chunks of one column. The arrays and the type must outlive the view.
class ColumnView {
 public:
  ColumnView(const ::arrow::ChunkedArray& column);
  /// A column of one chunk, with the type of the chunk.
  explicit ColumnView(const ArrayView& chunk);
  ColumnView(const ColumnView&) = delete;
  ColumnView& operator=(const ColumnView&) = delete;

  /// Null if the column was made without a type.
  const std::shared_ptr<::arrow::DataType>& type() const { return *type_; }
  /// The length that the column states.
  std::int64_t length() const { return length_; }
  std::span<const ArrayView> chunks() const {
    return {more_ != nullptr ? more_.get() : &first_, count_};
  }

 private:
  const std::shared_ptr<::arrow::DataType>* type_;
  std::int64_t length_;
  size_t count_;
  ArrayView first_;                    // a single chunk, stored without an allocation
  std::unique_ptr<ArrayView[]> more_;  // several chunks
};

using Bytes = std::span<const std::uint8_t>;

/// The bytes of a buffer. Empty if the buffer is null, is not in main memory or has a negative
/// size.
Bytes bytes_of(const ::arrow::Buffer* buffer);
/// The bytes of buffer `index`. Empty if the array has no such buffer.
Bytes bytes_of(const ::arrow::ArrayData& array, size_t index);

/// The elements of the view, `width` bytes each.
Bytes fixed_width_values(const ArrayView& array, std::int64_t width);

/// Elements of variable width, back to back: element i is bytes [offsets[i], offsets[i + 1]).
template <class Offset>
struct VariableWidthValues {
  std::span<const Offset> offsets;  ///< number of elements + 1; empty for no elements
  Bytes bytes;
  /// Owns a copy of the offsets if those of the array are not aligned for `Offset`; else null.
  std::shared_ptr<const std::vector<Offset>> aligned_offsets;
};

/// The elements of an array with `Offset` (int32 or int64) offsets. Invalid if an offset is
/// negative, less than the one before or beyond the end of the values. So reading by these offsets
/// stays within `bytes`. Cost: one pass over the offsets.
template <class Offset>
::arrow::Result<VariableWidthValues<Offset>> variable_width_values(const ArrayView& array);

/// The offsets of a list or map as stored: `length` + 1 of them, `width` bytes each. For an array
/// without elements and without offsets, the result is one offset, 0.
Bytes stored_offsets(const ArrayView& array, std::int64_t width);

/// The bits of a boolean array from the start of its buffer. The array offset is not applied.
inline Bytes unsliced_bits(const ArrayView& array) { return bytes_of(*array.data, 1); }

/// The validity bits from the start of the bitmap. The array offset is not applied. Empty if the
/// array has no bitmap.
inline Bytes unsliced_validity(const ArrayView& array) { return bytes_of(*array.data, 0); }

/// The number of null slots. All slots of the null type are null. If the array knows the count, no
/// bits are read. Bits that a short bitmap lacks count as valid. If the view covers the whole array
/// and the bitmap is long enough, a new count is stored in the array, as Arrow's own function does.
std::int64_t count_nulls(const ArrayView& array);

}  // namespace numera::io::arrow::core
