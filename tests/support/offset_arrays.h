#pragma once

/// \file
/// Arrow arrays of bytes and offsets that JSON cannot express: invalid UTF-8, and offsets that no
/// builder makes.

#include <arrow/array/util.h>
#include <arrow/buffer.h>
#include <arrow/type.h>

#include <cstdint>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

namespace numera::testing {

inline std::vector<std::uint8_t> BytesOf(std::string_view text) {
  return {text.begin(), text.end()};
}

/// A buffer in a block of exactly its size, so that a memory checker reports a read past its end.
template <class T>
std::shared_ptr<::arrow::Buffer> ExactBuffer(const std::vector<T>& values) {
  auto owner = std::make_shared<std::vector<T>>(values);
  owner->shrink_to_fit();
  const auto size = static_cast<std::int64_t>(owner->size() * sizeof(T));
  auto* const data = reinterpret_cast<const std::uint8_t*>(owner->data());
  return {new ::arrow::Buffer(data, size), [owner](::arrow::Buffer* buffer) { delete buffer; }};
}

/// An array of a type with offsets: `length` elements, starting at element `offset`.
inline std::shared_ptr<::arrow::Array> ArrayOfOffsets(
    const std::shared_ptr<::arrow::DataType>& type, std::int64_t length,
    std::shared_ptr<::arrow::Buffer> offsets, std::shared_ptr<::arrow::Buffer> bytes,
    std::int64_t offset = 0) {
  return ::arrow::MakeArray(::arrow::ArrayData::Make(
      type, length, {nullptr, std::move(offsets), std::move(bytes)}, 0, offset));
}

/// An array with 32-bit offsets: utf8 or binary.
inline std::shared_ptr<::arrow::Array> NarrowArray(const std::shared_ptr<::arrow::DataType>& type,
                                                   std::string_view bytes,
                                                   const std::vector<std::int32_t>& offsets) {
  return ArrayOfOffsets(type, static_cast<std::int64_t>(offsets.size()) - 1, ExactBuffer(offsets),
                        ExactBuffer(BytesOf(bytes)));
}

/// An array with 64-bit offsets: large utf8 or large binary.
inline std::shared_ptr<::arrow::Array> LargeArray(const std::shared_ptr<::arrow::DataType>& type,
                                                  std::string_view bytes,
                                                  const std::vector<std::int64_t>& offsets) {
  return ArrayOfOffsets(type, static_cast<std::int64_t>(offsets.size()) - 1, ExactBuffer(offsets),
                        ExactBuffer(BytesOf(bytes)));
}

}  // namespace numera::testing
