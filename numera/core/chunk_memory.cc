#include "numera/core/chunk_memory.h"

#include <arrow/array/array_base.h>
#include <arrow/type.h>
#include <arrow/util/bit_util.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <type_traits>
#include <utility>

#include "numera/core/bitmap.h"
#include "numera/core/messages.h"

namespace numera::io::arrow::core {
namespace {

bool bitmap_covers(const ::arrow::ArrayData& array) {
  const auto bits = unsliced_validity(array);
  return bitmap_bytes(array.offset + array.length) <= static_cast<std::int64_t>(bits.size());
}

/// Arrow counts the nulls of a chunk when it makes a chunked array, and trusts the bitmap to be
/// long enough.
bool arrow_would_read_past_bitmap(const ::arrow::ArrayData& array) {
  return array.null_count.load() == ::arrow::kUnknownNullCount && !array.buffers.empty() &&
         array.buffers[0] != nullptr && (!extent_is_valid(array) || !bitmap_covers(array));
}

template <class Offset>
::arrow::Status check_offsets(std::span<const Offset> offsets, size_t bytes) {
  // The top bit of either term is set where an offset is negative or below the one before: of this,
  // unlike of a comparison, every processor makes vector code.
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

bool extent_is_valid(const ::arrow::ArrayData& array) {
  return array.offset >= 0 && array.length >= 0 &&
         array.offset <= std::numeric_limits<std::int64_t>::max() - array.length;
}

std::span<const std::uint8_t> readable_bytes(const std::shared_ptr<::arrow::Buffer>& buffer) {
  if (buffer == nullptr || !buffer->is_cpu() || buffer->data() == nullptr) return {};
  return {buffer->data(), static_cast<size_t>(std::max<std::int64_t>(buffer->size(), 0))};
}

std::span<const std::uint8_t> readable_bytes(const ::arrow::ArrayData& array, size_t index) {
  if (index >= array.buffers.size()) return {};
  return readable_bytes(array.buffers[index]);
}

::arrow::Result<std::span<const std::uint8_t>> fixed_width_values(const ::arrow::ArrayData& chunk,
                                                                  std::int64_t width) {
  const auto bytes = readable_bytes(chunk, 1);
  if (width == 0 || chunk.length == 0) return bytes.first(0);
  const std::int64_t available = static_cast<std::int64_t>(bytes.size()) / width;
  if (chunk.offset > available || chunk.length > available - chunk.offset) {
    return messages::short_buffer("Values buffer", static_cast<std::int64_t>(bytes.size()),
                                  chunk.offset + chunk.length);
  }
  return bytes.subspan(static_cast<size_t>(chunk.offset * width),
                       static_cast<size_t>(chunk.length * width));
}

::arrow::Result<std::span<const std::uint8_t>> stored_offsets(const ::arrow::ArrayData& chunk,
                                                              std::int64_t width) {
  static constexpr std::array<std::uint8_t, sizeof(std::int64_t)> kZero{};
  const auto bytes = readable_bytes(chunk, 1);
  if (chunk.length == 0 && bytes.empty()) return std::span(kZero).first(static_cast<size_t>(width));
  const std::int64_t available = static_cast<std::int64_t>(bytes.size()) / width;
  if (chunk.offset + chunk.length >= available) {
    return messages::short_buffer("Offsets buffer", static_cast<std::int64_t>(bytes.size()),
                                  chunk.offset + chunk.length);
  }
  return bytes.subspan(static_cast<size_t>(chunk.offset * width),
                       static_cast<size_t>((chunk.length + 1) * width));
}

::arrow::Status check_offsets_fit(const ::arrow::ArrayData& array, std::int64_t width) {
  if (!extent_is_valid(array)) return messages::wrong_extent(array.offset, array.length);
  if (array.length == 0) return ::arrow::Status::OK();
  const auto bytes = static_cast<std::int64_t>(readable_bytes(array, 1).size());
  if (array.offset + array.length < bytes / width) return ::arrow::Status::OK();
  return messages::short_buffer("Offsets buffer", bytes, array.offset + array.length);
}

template <class Offset>
::arrow::Result<VariableWidthValues<Offset>> variable_width_values(
    const ::arrow::ArrayData& array) {
  ARROW_RETURN_NOT_OK(check_offsets_fit(array, sizeof(Offset)));
  if (array.length == 0) return VariableWidthValues<Offset>{};
  const auto offset_bytes =
      readable_bytes(array, 1).subspan(static_cast<size_t>(array.offset) * sizeof(Offset),
                                       (static_cast<size_t>(array.length) + 1) * sizeof(Offset));
  VariableWidthValues<Offset> values{{}, readable_bytes(array, 2), nullptr};
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

template ::arrow::Result<VariableWidthValues<std::int32_t>> variable_width_values(
    const ::arrow::ArrayData&);
template ::arrow::Result<VariableWidthValues<std::int64_t>> variable_width_values(
    const ::arrow::ArrayData&);

std::int64_t count_nulls(const ::arrow::ArrayData& array) {
  if (!arrow_would_read_past_bitmap(array)) return array.GetNullCount();
  if (!extent_is_valid(array)) return 0;
  const auto bits = unsliced_validity(array);
  std::int64_t nulls = 0;
  const auto readable = static_cast<std::int64_t>(bits.size()) * 8;
  for (std::int64_t i = array.offset; i < std::min(array.offset + array.length, readable); ++i) {
    nulls += !::arrow::bit_util::GetBit(bits.data(), static_cast<std::uint64_t>(i));
  }
  return nulls;
}

std::shared_ptr<::arrow::ChunkedArray> single_chunk(std::shared_ptr<::arrow::Array> array) {
  const ::arrow::ArrayData& data = *array->data();
  // Arrow takes a count that is there. It stays, as Arrow's own count does: another thread may be
  // about to make a chunk of the same array.
  if (arrow_would_read_past_bitmap(data)) data.null_count = count_nulls(data);
  return std::make_shared<::arrow::ChunkedArray>(std::move(array));
}

::arrow::Status check_chunks(const ::arrow::ChunkedArray& column) {
  std::int64_t rest = column.length();
  for (int i = 0; i < column.num_chunks(); ++i) {
    const auto& chunk = column.chunk(i);
    if (chunk == nullptr) return messages::wrong_chunk(i, "no array", *column.type());
    if (chunk->type() != column.type() && !chunk->type()->Equals(*column.type())) {
      return messages::wrong_chunk(i, chunk->type()->name(), *column.type());
    }
    if (!extent_is_valid(*chunk->data())) {
      return messages::wrong_extent(chunk->offset(), chunk->length());
    }
    if (chunk->length() > rest) return messages::wrong_total(column.length());
    rest -= chunk->length();
  }
  if (rest != 0) return messages::wrong_total(column.length());
  return ::arrow::Status::OK();
}

}  // namespace numera::io::arrow::core
