#pragma once

/// \file
/// Chunks of nested values joined to one.

#include <arrow/array/array_base.h>
#include <arrow/result.h>

#include <cstddef>

#include "numera/extras/encode/nested.h"
#include "numera/extras/encode/readable.h"

namespace numera::extras::encoding {

using ChunkReader = ::arrow::Result<ReadableValue> (*)(const Encoded& encoded, size_t chunk,
                                                       int level);

/// All chunks of a nested value. One alone is read as it stands; several go to Arrow, are joined
/// there and written once. Invalid where there is none, since the types below are not known then.
::arrow::Result<ReadableValue> read_chunks(const Encoded& encoded, ChunkReader read_chunk,
                                           int level);

/// The readable form of an array of a type that the core reads, in new memory. It has no offset at
/// any depth, as `arrow::Concatenate` gives it.
::arrow::Result<ReadableValue> write_readable(const ::arrow::Array& array);

}  // namespace numera::extras::encoding
