#include "numera/core/chunk_memory.h"

#include <arrow/type.h>
#include <arrow/util/bitmap_ops.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <type_traits>
#include <utility>

#include "numera/core/messages.h"
#include "numera/format/bitmap.h"

namespace numera::io::arrow::core {
namespace {

using ::arrow::DataType;
using ::arrow::Type;

bool is_whole(const ArrayView& view) {
  return view.offset == view.data->offset && view.length == view.data->length;
}

/// The null count of the view if the array knows it, else unknown. Arrow's slices follow this rule
/// too.
std::int64_t known_null_count(const ArrayView& view) {
  const std::int64_t count = view.data->null_count.load();
  if (is_whole(view) || count == 0) return count;
  return count == view.data->length ? view.length : ::arrow::kUnknownNullCount;
}

bool bitmap_covers(std::span<const std::uint8_t> bits, const ArrayView& view) {
  const auto& buffers = view.data->buffers;
  return buffers.empty() || buffers[0] == nullptr ||
         std::cmp_less_equal(format::bitmap_bytes(view.offset + view.length), bits.size());
}

/// The number of zero bits in the view, as far as `bits` reach.
std::int64_t count_zeros(std::span<const std::uint8_t> bits, const ArrayView& view) {
  const auto readable = static_cast<std::int64_t>(bits.size()) * 8;
  const std::int64_t length = std::min(view.length, readable - view.offset);
  if (length <= 0) return 0;
  return length - ::arrow::internal::CountSetBits(bits.data(), view.offset, length);
}

/// Whether two types are equal except for the names, nullability and metadata of their fields, and
/// for whether map keys are sorted. Such types have the same memory layout.
bool is_laid_out_like(const DataType& type, const DataType& other) {
  if (&type == &other) return true;
  if (type.id() != other.id() || type.num_fields() != other.num_fields()) return false;
  const Type::type id = type.id();
  if (id != Type::LIST && id != Type::LARGE_LIST && id != Type::STRUCT && id != Type::MAP) {
    return type.Equals(other);
  }
  for (int i = 0; i < type.num_fields(); ++i) {
    if (!is_laid_out_like(*type.field(i)->type(), *other.field(i)->type())) return false;
  }
  return true;
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

bool extent_is_valid(const ArrayView& array) {
  return array.offset >= 0 && array.length >= 0 &&
         array.offset <= std::numeric_limits<std::int64_t>::max() - array.length;
}

BytesResult readable_bytes(const std::shared_ptr<::arrow::Buffer>& buffer) {
  if (buffer == nullptr) return std::span<const std::uint8_t>();
  if (!buffer->is_cpu()) return messages::not_readable();
  if (buffer->data() == nullptr || buffer->size() < 0) return std::span<const std::uint8_t>();
  return std::span(buffer->data(), static_cast<size_t>(buffer->size()));
}

BytesResult readable_bytes(const ::arrow::ArrayData& array, size_t index) {
  if (index >= array.buffers.size()) return std::span<const std::uint8_t>();
  return readable_bytes(array.buffers[index]);
}

BytesResult fixed_width_values(const ArrayView& chunk, std::int64_t width) {
  if (width == 0 || chunk.length == 0) return std::span<const std::uint8_t>();
  ARROW_ASSIGN_OR_RAISE(const auto bytes, readable_bytes(*chunk.data, 1));
  const std::int64_t available = static_cast<std::int64_t>(bytes.size()) / width;
  if (chunk.offset > available || chunk.length > available - chunk.offset) {
    return messages::short_buffer("Values buffer", static_cast<std::int64_t>(bytes.size()),
                                  chunk.offset + chunk.length);
  }
  return bytes.subspan(static_cast<size_t>(chunk.offset * width),
                       static_cast<size_t>(chunk.length * width));
}

BytesResult stored_offsets(const ArrayView& chunk, std::int64_t width) {
  static constexpr std::array<std::uint8_t, sizeof(std::int64_t)> kZero{};
  ARROW_ASSIGN_OR_RAISE(const auto bytes, readable_bytes(*chunk.data, 1));
  if (chunk.length == 0 && bytes.empty()) return std::span(kZero).first(static_cast<size_t>(width));
  const std::int64_t available = static_cast<std::int64_t>(bytes.size()) / width;
  if (chunk.offset + chunk.length >= available) {
    return messages::short_buffer("Offsets buffer", static_cast<std::int64_t>(bytes.size()),
                                  chunk.offset + chunk.length);
  }
  return bytes.subspan(static_cast<size_t>(chunk.offset * width),
                       static_cast<size_t>((chunk.length + 1) * width));
}

::arrow::Status check_offsets_fit(const ArrayView& array, std::int64_t width) {
  if (!extent_is_valid(array)) return messages::wrong_extent(array.offset, array.length);
  if (array.length == 0) return ::arrow::Status::OK();
  ARROW_ASSIGN_OR_RAISE(const auto bytes, readable_bytes(*array.data, 1));
  const auto size = static_cast<std::int64_t>(bytes.size());
  if (array.offset + array.length < size / width) return ::arrow::Status::OK();
  return messages::short_buffer("Offsets buffer", size, array.offset + array.length);
}

template <class Offset>
::arrow::Result<VariableWidthValues<Offset>> variable_width_values(const ArrayView& array) {
  ARROW_RETURN_NOT_OK(check_offsets_fit(array, sizeof(Offset)));
  if (array.length == 0) return VariableWidthValues<Offset>{};
  ARROW_ASSIGN_OR_RAISE(const auto all_offsets, readable_bytes(*array.data, 1));
  ARROW_ASSIGN_OR_RAISE(const auto bytes, readable_bytes(*array.data, 2));
  const auto offset_bytes =
      all_offsets.subspan(static_cast<size_t>(array.offset) * sizeof(Offset),
                          (static_cast<size_t>(array.length) + 1) * sizeof(Offset));
  VariableWidthValues<Offset> values{{}, bytes, nullptr};
  if (reinterpret_cast<std::uintptr_t>(offset_bytes.data()) % alignof(Offset) == 0) {
    values.offsets = {reinterpret_cast<const Offset*>(offset_bytes.data()),
                      offset_bytes.size() / sizeof(Offset)};
  } else {
    auto copy = std::make_shared<std::vector<Offset>>(offset_bytes.size() / sizeof(Offset));
    std::memcpy(copy->data(), offset_bytes.data(), offset_bytes.size());
    values.offsets = *copy;
    values.aligned_offsets = std::move(copy);
  }
  ARROW_RETURN_NOT_OK(check_offsets(values.offsets, values.bytes.size()));
  return values;
}

template ::arrow::Result<VariableWidthValues<std::int32_t>> variable_width_values(const ArrayView&);
template ::arrow::Result<VariableWidthValues<std::int64_t>> variable_width_values(const ArrayView&);

::arrow::Result<std::int64_t> count_nulls(const ArrayView& array) {
  if (array.data->type->id() == Type::NA) return array.length;
  const std::int64_t known = known_null_count(array);
  if (known != ::arrow::kUnknownNullCount) return known;
  if (!extent_is_valid(array)) return 0;
  ARROW_ASSIGN_OR_RAISE(const auto bits, unsliced_validity(array));
  const std::int64_t nulls = count_zeros(bits, array);
  if (is_whole(array) && bitmap_covers(bits, array)) array.data->null_count.store(nulls);
  return nulls;
}

::arrow::Status check_chunks(const ColumnView& column) {
  std::int64_t rest = column.length();
  int i = 0;
  for (const ArrayView& chunk : column.chunks()) {
    if (chunk.data == nullptr) return messages::wrong_chunk(i, "no array", *column.type());
    if (!is_laid_out_like(*chunk.data->type, *column.type())) {
      return messages::wrong_chunk(i, chunk.data->type->ToString(), *column.type());
    }
    if (!extent_is_valid(chunk)) return messages::wrong_extent(chunk.offset, chunk.length);
    if (chunk.length > rest) return messages::wrong_total(column.length());
    rest -= chunk.length;
    ++i;
  }
  if (rest != 0) return messages::wrong_total(column.length());
  return ::arrow::Status::OK();
}

}  // namespace numera::io::arrow::core
