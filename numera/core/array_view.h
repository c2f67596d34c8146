#pragma once

/// \file
/// What the writers read: columns of slices of Arrow arrays, borrowed. Children are looked at
/// where they lie. No Arrow array is made of them, so Arrow checks, counts and stores nothing in
/// the caller's arrays, and a level of nesting takes little stack.

#include <arrow/array/array_base.h>
#include <arrow/array/data.h>
#include <arrow/chunked_array.h>
#include <arrow/type_fwd.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace numera::io::arrow::core {

/// `length` elements of an array from element `offset` of its buffers on. The array outlives it.
struct ArrayView {
  const ::arrow::ArrayData* data = nullptr;  ///< null: a chunk that is missing
  std::int64_t offset = 0;
  std::int64_t length = 0;

  ArrayView() = default;
  /// The whole array, with its own offset and length.
  ArrayView(const ::arrow::ArrayData& array)
      : data(&array), offset(array.offset), length(array.length) {}
  ArrayView(const ::arrow::Array& array) : ArrayView(*array.data()) {}

  /// Child `i` as it is, whatever part of this array the view shows.
  ArrayView whole_child(size_t i) const { return {*data->child_data[i]}; }
  /// Child `i` of a struct, cut to the elements that the view shows.
  ArrayView struct_child(size_t i) const;
};

/// Chunks of one type, one after another. The arrays and the type outlive it.
class ColumnView {
 public:
  ColumnView(const ::arrow::ChunkedArray& column);
  /// A column of this one chunk, of the chunk's own type.
  explicit ColumnView(const ArrayView& chunk);
  ColumnView(const ColumnView&) = delete;
  ColumnView& operator=(const ColumnView&) = delete;

  /// Null where the column was made without one.
  const std::shared_ptr<::arrow::DataType>& type() const { return *type_; }
  /// The length that the column says it has.
  std::int64_t length() const { return length_; }
  std::span<const ArrayView> chunks() const {
    return {more_ != nullptr ? more_.get() : &first_, count_};
  }

 private:
  const std::shared_ptr<::arrow::DataType>* type_;
  std::int64_t length_;
  size_t count_;
  ArrayView first_;                    // of the one chunk, which takes no allocation
  std::unique_ptr<ArrayView[]> more_;  // of several
};

}  // namespace numera::io::arrow::core
