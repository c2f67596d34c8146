#pragma once

/// \file
/// Lists of values, both widths of offsets.
///
/// "Data" of a list is a struct array with one element a chunk and the fields "Values" (the
/// envelope of the whole child) and "StartOffsets" (0-based, one more than there are lists: list i
/// is [offset i, offset i + 1) of "Values"). Offsets go through unchanged and unchecked, and a
/// slice carries its whole child. uint64 is read, int64 (large lists) or int32 is written; only the
/// first chunk is read.

#include <arrow/status.h>

#include <cstddef>

#include "numera/core/dispatch.h"
#include "numera/host/array.h"

namespace numera::io::arrow::core {

/// A list envelope to a large list over its offsets. "StartOffsets" that is not a real uint64 array
/// is a TypeError, one without elements Invalid, both before "Values" is converted.
::arrow::Status ListToArrow(const EnvelopeFields& envelope, int level, DataPtr& data);

/// Lists or large lists to their "Data".
::arrow::Result<hxArrayPtr> ListToHost(const ColumnView& chunked);

/// Stores "StartOffsets" of element `index`: the offsets of a chunk as stored, length + 1 of them,
/// as a column of `kNumericClass<Offset>`.
template <class Offset>
::arrow::Status store_start_offsets(hxArray* data, size_t index, const ArrayView& chunk);

}  // namespace numera::io::arrow::core
