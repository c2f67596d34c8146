#pragma once

/// \file
/// Byte strings. Towards Arrow they are bytes and offsets, wrapped as they stand (see
/// values_and_offsets.h); towards the host they become an N-by-1 cell of uint8 columns. Arrays of
/// a fixed width go to the host only.

#include <arrow/result.h>

#include <memory>

#include "numera/core/dispatch.h"
#include "numera/host/array.h"

namespace numera::io::arrow::core {

/// An `::arrow::LargeBinaryArray` over the memory of "Values" and "StartOffsets".
ArrayResult MakeLargeBinaryArray(const hxArray* s, std::shared_ptr<::arrow::Buffer> validity);

/// An `::arrow::BinaryArray`; its offsets are a copy made by `NarrowOffsets`, with its errors.
ArrayResult MakeBinaryArray(const hxArray* s, std::shared_ptr<::arrow::Buffer> validity);

/// All chunks to a cell; every cell is filled, those of null slots with the bytes that their
/// offsets span. Invalid where offsets fall or leave their buffers. `ArrowArray` is
/// `::arrow::BinaryArray` or `::arrow::LargeBinaryArray`. One host array an element.
template <class ArrowArray>
::arrow::Result<hxArrayPtr> BinaryChunksToHost(const ColumnView& column);

/// The same for elements that are all as long as the type is wide, which may be 0 bytes. Invalid
/// where a chunk's buffer ends early.
::arrow::Result<hxArrayPtr> FixedSizeBinaryChunksToHost(const ColumnView& column);

}  // namespace numera::io::arrow::core
