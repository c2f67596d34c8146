#pragma once

/// \file
/// Byte strings. Towards Arrow, bytes and offsets are wrapped without a copy (see
/// values_and_offsets.h). Towards the host, they become an N-by-1 cell of uint8 columns. Arrays of
/// fixed-width byte strings are converted to the host only.

#include <arrow/result.h>

#include <memory>

#include "numera/core/dispatch.h"
#include "numera/host/array.h"

namespace numera::io::arrow::core {

/// An `::arrow::LargeBinaryArray` over the memory of "Values" and "StartOffsets".
ArrayResult MakeLargeBinaryArray(const hxArray* s, std::shared_ptr<::arrow::Buffer> validity);

/// An `::arrow::BinaryArray`. `NarrowOffsets` copies the offsets and states the errors.
ArrayResult MakeBinaryArray(const hxArray* s, std::shared_ptr<::arrow::Buffer> validity);

/// Converts all chunks to a cell. Every cell is filled; those of null slots get the bytes that
/// their offsets span. Invalid if offsets decrease or point outside their buffers. `ArrowArray` is
/// `::arrow::BinaryArray` or `::arrow::LargeBinaryArray`. Cost: one host array per element.
template <class ArrowArray>
::arrow::Result<hxArrayPtr> BinaryChunksToHost(const ColumnView& column);

/// The same for fixed-width elements. The type states the width in bytes, which may be 0. Invalid
/// if the buffer of a chunk is too short.
::arrow::Result<hxArrayPtr> FixedSizeBinaryChunksToHost(const ColumnView& column);

}  // namespace numera::io::arrow::core
