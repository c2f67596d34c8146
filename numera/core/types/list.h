#pragma once

/// \file
/// Lists with 32-bit or 64-bit offsets.
///
/// "Data" of a list is a struct array with one element per chunk and the fields "Values" (the
/// envelope of the whole child) and "StartOffsets" (0-based, number of lists + 1: list i is [offset
/// i, offset i + 1) of "Values"). Offsets are neither changed nor checked, and a slice keeps its
/// whole child.
///
/// "StartOffsets" is read as uint64. It is written as int64 (large lists) or int32. Towards Arrow,
/// only the first chunk is read.

#include <arrow/status.h>

#include <cstddef>

#include "numera/core/dispatch.h"
#include "numera/host/array.h"

namespace numera::io::arrow::core {

/// Converts a list envelope to a large list over its offsets. "StartOffsets" that is not a real
/// uint64 array is a TypeError; one without elements is Invalid. Both are checked before "Values"
/// is converted.
::arrow::Status ListToArrow(const EnvelopeFields& envelope, int level, DataPtr& data);

/// Converts lists or large lists to their "Data".
::arrow::Result<hxArrayPtr> ListToHost(const ColumnView& chunked);

/// Stores "StartOffsets" of element `index`: the `length` + 1 offsets of a chunk, unchanged, as a
/// column of `kNumericClass<Offset>`.
template <class Offset>
::arrow::Status store_start_offsets(hxArray* data, size_t index, const ArrayView& chunk);

}  // namespace numera::io::arrow::core
