#pragma once

/// \file
/// The ten numeric classes and logical values.
///
/// Numbers are host arrays without a struct. Logical values are packed: a 1-by-1 struct with the
/// fields "Values" (uint8 column of bits, least significant first), "Length" (double) and
/// "ArrowType" ("buffer").

#include <arrow/result.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "numera/core/dispatch.h"
#include "numera/format/names.h"
#include "numera/format/number_classes.h"
#include "numera/host/array.h"

namespace numera::io::arrow::core {

/// Converts numbers of any shape, in storage order, to an array over their memory. The class alone
/// decides the type. A class that is not numeric is Invalid "Invalid type for numeric NUMERA to
/// Arrow conversion." Complex or sparse numbers are a TypeError that names `field`.
ArrayResult numeric_to_arrow(const hxArray* values, std::shared_ptr<::arrow::Buffer> validity,
                             const char* field = format::kData);

/// Converts a packed logical struct to a boolean array over its bits. "Length" is truncated toward
/// zero and is not compared with the number of bits.
ArrayResult logical_to_arrow(const hxArray* encoded, std::shared_ptr<::arrow::Buffer> validity);

/// Copies the elements of all chunks, `width` bytes each, to `destination`, from element `start`
/// on. Returns the index after the last copied element.
std::int64_t copy_chunks(const ColumnView& chunks, std::span<std::byte> destination,
                         std::int64_t start, size_t width);

/// Copies fixed-width arrays bit for bit to an N-by-1 column of a class with the same width.
hxArrayPtr numbers_to_numera(const ColumnView& chunks, hxClassID class_id, size_t width);

/// `copy_chunks` of elements as wide as T.
template <class T>
std::int64_t numeric_chunk_copy(const ColumnView& chunks, std::span<T> destination,
                                std::int64_t start) {
  return copy_chunks(chunks, std::as_writable_bytes(destination), start, sizeof(T));
}

/// `numbers_to_numera` for the class of T. The Arrow type only needs the width of T: durations use
/// this function too.
template <class T>
::arrow::Result<hxArrayPtr> numeric_to_numera(const ColumnView& chunks) {
  return numbers_to_numera(chunks, format::kNumericClass<T>, sizeof(T));
}

/// Copies dates, times or timestamps to an int32 or int64 column, as wide as they are.
hxArrayPtr counts_to_numera(const ColumnView& chunks);

/// Converts booleans to a packed logical struct. Bits are read from the start of each chunk's
/// buffer: the offset of a slice is not applied.
::arrow::Result<hxArrayPtr> logical_to_numera(const ColumnView& chunks);

}  // namespace numera::io::arrow::core
