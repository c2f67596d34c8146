#pragma once

/// \file
/// Joins the chunks of a nested value.

#include <arrow/array/array_base.h>
#include <arrow/result.h>

#include <cstddef>

#include "numera/extras/encode/nested.h"
#include "numera/extras/encode/readable.h"

namespace numera::extras::encoding {

using ChunkReader = ::arrow::Result<ReadableValue> (*)(const Encoded& encoded, size_t chunk,
                                                       int level);

/// Reads all chunks of a nested value. A single chunk is read directly. Several chunks are
/// converted to Arrow, concatenated there and written to the host once. Invalid if there is no
/// chunk: then the types of the children are not known.
::arrow::Result<ReadableValue> read_chunks(const Encoded& encoded, ChunkReader read_chunk,
                                           int level);

/// Copies an Arrow array to its readable form in new host memory. The type must be one that
/// `to_arrow` produces. The offset must be 0 at every depth, as in the results of
/// `arrow::Concatenate`.
::arrow::Result<ReadableValue> write_readable(const ::arrow::Array& array);

}  // namespace numera::extras::encoding
