#pragma once

/// \file
/// Reads single elements from the buffers of Arrow arrays. Every read is checked.

#include <arrow/array/data.h>

#include <cstdint>
#include <cstring>

#include "tests/gauntlet/memory.h"

namespace numera::gauntlet {

/// Thrown if a value needs bytes that do not exist. The conversion must then be refused.
struct Refused {};

inline Bytes bytes_of(const ::arrow::ArrayData& array, size_t buffer) {
  const auto& found = array.buffers[buffer];
  if (found == nullptr) return {};
  return {found->data(), found->data() + found->size()};
}

inline bool has_bytes(const ::arrow::ArrayData& array, size_t buffer) {
  return array.buffers[buffer] != nullptr && array.buffers[buffer]->size() > 0;
}

/// Bit `index` of a buffer; `beyond` if the buffer ends before it.
inline bool bit_at(const ::arrow::ArrayData& array, size_t buffer, std::int64_t index,
                   bool beyond) {
  const auto& bits = array.buffers[buffer];
  if (bits == nullptr || index / 8 >= bits->size()) return beyond;
  return bits->data()[index / 8] >> (index % 8) & 1;
}

/// Whether slot `i` is valid, counted from the offset of the array. Slots beyond the bitmap are
/// valid.
inline bool is_valid_at(const ::arrow::ArrayData& array, std::int64_t i) {
  return bit_at(array, 0, array.offset + i, true);
}

inline std::int64_t nulls_of(const ::arrow::ArrayData& array) {
  if (array.type->id() == ::arrow::Type::NA) return array.length;
  std::int64_t nulls = 0;
  for (std::int64_t i = 0; i < array.length; ++i) nulls += is_valid_at(array, i) ? 0 : 1;
  return nulls;
}

/// Element `index` of a buffer, counted from the start of the buffer. It may be unaligned.
template <class T>
T element_at(const ::arrow::ArrayData& array, size_t buffer, std::int64_t index) {
  constexpr std::int64_t kWidth = sizeof(T);
  const auto& values = array.buffers[buffer];
  if (values == nullptr || (index + 1) * kWidth > values->size()) throw Refused();
  T value;
  std::memcpy(&value, values->data() + index * kWidth, sizeof(T));
  return value;
}

/// Bytes [begin, end) of a buffer.
inline Bytes range_at(const ::arrow::ArrayData& array, size_t buffer, std::int64_t begin,
                      std::int64_t end) {
  const auto& bytes = array.buffers[buffer];
  const std::int64_t size = bytes == nullptr ? 0 : bytes->size();
  if (begin < 0 || end < begin || end > size) throw Refused();
  if (begin == end) return {};
  return {bytes->data() + begin, bytes->data() + end};
}

/// The bytes of element `i` of a text or binary array, counted from the offset of the array.
template <class Offset>
Bytes text_at(const ::arrow::ArrayData& array, std::int64_t i) {
  const std::int64_t at = array.offset + i;
  return range_at(array, 2, element_at<Offset>(array, 1, at), element_at<Offset>(array, 1, at + 1));
}

inline bool has_wide_offsets(const ::arrow::DataType& type) {
  const auto id = type.id();
  return id == ::arrow::Type::LARGE_STRING || id == ::arrow::Type::LARGE_BINARY ||
         id == ::arrow::Type::LARGE_LIST;
}

inline Bytes text_at(const ::arrow::ArrayData& array, std::int64_t i) {
  return has_wide_offsets(*array.type) ? text_at<std::int64_t>(array, i)
                                       : text_at<std::int32_t>(array, i);
}

}  // namespace numera::gauntlet
