#pragma once

/// \file
/// The input of the writers: borrowed columns of slices of Arrow arrays. Children are read in
/// place, without making Arrow arrays. So Arrow checks, counts and stores nothing in the caller's
/// arrays, and a nesting level takes little stack.

#include <arrow/array/array_base.h>
#include <arrow/array/data.h>
#include <arrow/chunked_array.h>
#include <arrow/type_fwd.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

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
  /// The length that the column states; `check_chunks` compares it with the chunks.
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

}  // namespace numera::io::arrow::core
