#pragma once

/// \file
/// Copies of Arrow values. Each buffer gets a block of exactly its size, so that the sanitizer
/// detects a read past its end.

#include <arrow/array/array_base.h>
#include <arrow/array/util.h>
#include <arrow/buffer.h>
#include <arrow/chunked_array.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

namespace numera::fuzz {

/// The copy starts `shift` bytes after the aligned start of its block.
inline std::shared_ptr<::arrow::Buffer> exact_copy(const ::arrow::Buffer& buffer, size_t shift) {
  const auto size = static_cast<size_t>(buffer.size());
  auto block = std::make_shared<std::vector<std::uint8_t>>(shift + size);
  if (size > 0) std::memcpy(block->data() + shift, buffer.data(), size);
  auto* const copy = new ::arrow::Buffer(block->data() + shift, buffer.size());
  return {copy, [block](const ::arrow::Buffer* last) { delete last; }};
}

inline std::shared_ptr<::arrow::ArrayData> exact_copy(const ::arrow::ArrayData& array,
                                                      size_t shift) {
  auto copy = array.Copy();
  for (auto& buffer : copy->buffers) {
    if (buffer != nullptr) buffer = exact_copy(*buffer, shift);
  }
  for (auto& child : copy->child_data) child = exact_copy(*child, shift);
  if (copy->dictionary != nullptr) copy->dictionary = exact_copy(*copy->dictionary, shift);
  return copy;
}

inline std::shared_ptr<::arrow::ChunkedArray> exact_copy(const ::arrow::ChunkedArray& column,
                                                         size_t shift) {
  ::arrow::ArrayVector chunks;
  for (const auto& chunk : column.chunks()) {
    chunks.push_back(::arrow::MakeArray(exact_copy(*chunk->data(), shift)));
  }
  return std::make_shared<::arrow::ChunkedArray>(std::move(chunks), column.type());
}

}  // namespace numera::fuzz
