#pragma once

/// \file
/// Maps, towards the host only.
///
/// "Data" of a map is a struct array with one element per chunk and the fields "Keys" and "Values"
/// (the envelopes of the whole children) and "StartOffsets" (int32, 0-based, number of rows + 1:
/// row i is [offset i, offset i + 1) of both). A slice keeps its whole children.

#include "numera/core/dispatch.h"
#include "numera/host/array.h"

namespace numera::io::arrow::core {

/// Converts maps to their "Data".
::arrow::Result<hxArrayPtr> MapToHost(const ColumnView& chunked);

}  // namespace numera::io::arrow::core
