#pragma once

/// \file
/// Reads, cuts and allocates buffers of arrays that are known to be valid.

#include <arrow/array/data.h>
#include <arrow/buffer.h>
#include <arrow/memory_pool.h>
#include <arrow/result.h>

#include <cstdint>
#include <cstring>
#include <memory>

#include "numera/extras/intake/work.h"

namespace numera::extras::intake {

using BufferResult = ::arrow::Result<std::shared_ptr<::arrow::Buffer>>;

/// Element `index` of a buffer, which may be unaligned.
template <class T>
T load(const ::arrow::Buffer& buffer, std::int64_t index) {
  T value;
  std::memcpy(&value, buffer.data() + index * static_cast<std::int64_t>(sizeof(T)), sizeof(T));
  return value;
}

template <class T>
void store(::arrow::Buffer& buffer, std::int64_t index, T value) {
  std::memcpy(buffer.mutable_data() + index * static_cast<std::int64_t>(sizeof(T)), &value,
              sizeof(T));
}

/// A new buffer for `count` elements of `width` bytes. CapacityError if its size exceeds 64 bits.
BufferResult allocate(Work& work, std::int64_t count, std::int64_t width);

/// `length` bits from bit `offset` on, in no more bytes than they need. Shares the input's memory
/// if `offset` is a multiple of 8.
BufferResult cut_bits(Work& work, const std::shared_ptr<::arrow::Buffer>& bits, std::int64_t offset,
                      std::int64_t length);

/// `length` elements of `width` bytes from element `offset` on. Returns the buffer itself, uncut,
/// if `offset` is 0.
std::shared_ptr<::arrow::Buffer> cut_elements(const std::shared_ptr<::arrow::Buffer>& buffer,
                                              std::int64_t offset, std::int64_t length,
                                              std::int64_t width);

/// A copy of the array with offset 0 and its validity bitmap cut to match. All other buffers and
/// the children are still uncut.
DataResult without_offset(Work& work, const ::arrow::ArrayData& array);

/// Whether element `index` of an array without offset is null.
bool is_null(const ::arrow::ArrayData& array, std::int64_t index);

/// `type`, with the types of the children of `array`.
std::shared_ptr<::arrow::DataType> with_child_types(const std::shared_ptr<::arrow::DataType>& type,
                                                    const ::arrow::ArrayData& array);

}  // namespace numera::extras::intake
