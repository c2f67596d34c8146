#pragma once

#include <arrow/result.h>
#include <arrow/type.h>

#include <cstdint>

#include "numera/files/formats.h"

namespace numera::files {

/// The record batches, rows and nulls of a file or a stream of Arrow IPC, as the metadata of its
/// messages states them. Reads no values. `start` is the position of the first message. Invalid if
/// the messages do not end with their marker, or state what cannot be.
::arrow::Result<StatedCounts> count_ipc(const File& file, std::int64_t start,
                                        const ::arrow::Schema& schema);

}  // namespace numera::files
