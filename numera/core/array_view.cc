#include "numera/core/array_view.h"

#include <arrow/buffer.h>
#include <arrow/type.h>
#include <arrow/util/bitmap_ops.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <type_traits>
#include <utility>

#include "numera/core/messages.h"
#include "numera/format/bitmap.h"

namespace numera::io::arrow::core {
namespace {

ArrayView view_of(const std::shared_ptr<::arrow::Array>& chunk) {
  return chunk == nullptr ? ArrayView() : ArrayView(*chunk);
}

bool is_whole(const ArrayView& view) {
  return view.offset == view.data->offset && view.length == view.data->length;
}

/// The null count of the view if the array knows it, else unknown. Arrow's slices follow this rule
/// too. A count that cannot be true is not known.
std::int64_t known_null_count(const ArrayView& view) {
  const std::int64_t count = view.data->null_count.load();
  if (count < 0 || count > view.data->length) return ::arrow::kUnknownNullCount;
  if (is_whole(view) || count == 0) return count;
  return count == view.data->length ? view.length : ::arrow::kUnknownNullCount;
}

bool bitmap_covers(Bytes bits, const ArrayView& view) {
  const auto& buffers = view.data->buffers;
  return buffers.empty() || buffers[0] == nullptr ||
         std::cmp_less_equal(format::bitmap_bytes(view.offset + view.length), bits.size());
}

/// The number of zero bits in the view, as far as `bits` reach.
std::int64_t count_zeros(Bytes bits, const ArrayView& view) {
  const auto readable = static_cast<std::int64_t>(bits.size()) * 8;
  const std::int64_t length = std::min(view.length, readable - view.offset);
  if (length <= 0) return 0;
  return length - ::arrow::internal::CountSetBits(bits.data(), view.offset, length);
}

/// `count` elements from element `first` on.
Bytes part_of(Bytes bytes, std::int64_t first, std::int64_t count, std::int64_t width) {
  return bytes.subspan(static_cast<size_t>(first * width), static_cast<size_t>(count * width));
}

template <class Offset>
::arrow::Status check_offsets(std::span<const Offset> offsets, size_t bytes) {
  // The top bit of `bits` is set if an offset is negative or less than the one before. Unlike a
  // comparison, this vectorizes on every processor.
  using Unsigned = std::make_unsigned_t<Offset>;
  auto bits = static_cast<Unsigned>(offsets.front());
  for (size_t i = 1; i < offsets.size(); ++i) {
    const auto offset = static_cast<Unsigned>(offsets[i]);
    bits |= offset | (offset - static_cast<Unsigned>(offsets[i - 1]));
  }
  if (static_cast<Offset>(bits) >= 0 && std::cmp_less_equal(offsets.back(), bytes)) {
    return ::arrow::Status::OK();
  }
  size_t i = 0;
  while (offsets[i] >= 0 && offsets[i] <= offsets[i + 1] &&
         std::cmp_less_equal(offsets[i + 1], bytes)) {
    ++i;
  }
  return messages::wrong_range(i, offsets[i], offsets[i + 1], bytes);
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

Bytes bytes_of(const ::arrow::Buffer* buffer) {
  if (buffer == nullptr || !buffer->is_cpu()) return {};
  if (buffer->data() == nullptr || buffer->size() < 0) return {};
  return {buffer->data(), static_cast<size_t>(buffer->size())};
}

Bytes bytes_of(const ::arrow::ArrayData& array, size_t index) {
  return index < array.buffers.size() ? bytes_of(array.buffers[index].get()) : Bytes();
}

Bytes fixed_width_values(const ArrayView& array, std::int64_t width) {
  if (width == 0 || array.length == 0) return {};
  return part_of(bytes_of(*array.data, 1), array.offset, array.length, width);
}

Bytes stored_offsets(const ArrayView& array, std::int64_t width) {
  static constexpr std::array<std::uint8_t, sizeof(std::int64_t)> kZero{};
  const Bytes bytes = bytes_of(*array.data, 1);
  if (bytes.empty()) return std::span(kZero).first(static_cast<size_t>(width));
  return part_of(bytes, array.offset, array.length + 1, width);
}

template <class Offset>
::arrow::Result<VariableWidthValues<Offset>> variable_width_values(const ArrayView& array) {
  if (array.length == 0) return VariableWidthValues<Offset>{};
  const Bytes stored = stored_offsets(array, sizeof(Offset));
  VariableWidthValues<Offset> values{{}, bytes_of(*array.data, 2), nullptr};
  if (reinterpret_cast<std::uintptr_t>(stored.data()) % alignof(Offset) == 0) {
    values.offsets = {reinterpret_cast<const Offset*>(stored.data()),
                      stored.size() / sizeof(Offset)};
  } else {
    auto copy = std::make_shared<std::vector<Offset>>(stored.size() / sizeof(Offset));
    std::memcpy(copy->data(), stored.data(), stored.size());
    values.offsets = *copy;
    values.aligned_offsets = std::move(copy);
  }
  ARROW_RETURN_NOT_OK(check_offsets(values.offsets, values.bytes.size()));
  return values;
}

template ::arrow::Result<VariableWidthValues<std::int32_t>> variable_width_values(const ArrayView&);
template ::arrow::Result<VariableWidthValues<std::int64_t>> variable_width_values(const ArrayView&);

std::int64_t count_nulls(const ArrayView& array) {
  if (array.data->type->id() == ::arrow::Type::NA) return array.length;
  const std::int64_t known = known_null_count(array);
  if (known != ::arrow::kUnknownNullCount) return known;
  const Bytes bits = unsliced_validity(array);
  const std::int64_t nulls = count_zeros(bits, array);
  const bool is_uncounted = array.data->null_count.load() == ::arrow::kUnknownNullCount;
  if (is_uncounted && is_whole(array) && bitmap_covers(bits, array)) {
    array.data->null_count.store(nulls);
  }
  return nulls;
}

}  // namespace numera::io::arrow::core
