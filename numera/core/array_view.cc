#include "numera/core/array_view.h"

#include <algorithm>

namespace numera::io::arrow::core {
namespace {

ArrayView view_of(const std::shared_ptr<::arrow::Array>& chunk) {
  return chunk == nullptr ? ArrayView() : ArrayView(*chunk);
}

}  // namespace

ArrayView ArrayView::struct_child(size_t i) const {
  ArrayView child = whole_child(i);
  child.offset += offset;
  child.length = length;
  return child;
}

ColumnView::ColumnView(const ::arrow::ChunkedArray& column)
    : type_(&column.type()), length_(column.length()), count_(column.chunks().size()) {
  if (count_ == 1) first_ = view_of(column.chunk(0));
  if (count_ <= 1) return;
  more_ = std::make_unique<ArrayView[]>(count_);
  std::ranges::transform(column.chunks(), more_.get(), view_of);
}

ColumnView::ColumnView(const ArrayView& chunk)
    : type_(&chunk.data->type), length_(chunk.length), count_(1), first_(chunk) {}

}  // namespace numera::io::arrow::core
