#pragma once

#include <arrow/status.h>

#include "numera/core/array_view.h"

namespace numera::io::arrow::core {

/// Whether the chunks of a nested column hold what their types say: the buffers and children of
/// every array, struct children as long as their struct, maps without null entries or keys, types
/// that are whole, and containers in one another no deeper than `kMaxNestingLevels`. The writers
/// trust all of this. Invalid names the type, what was found and what was expected. Columns of
/// plain types pass.
///
/// Cost: one step per node per chunk. No values are read, but bitmaps of maps whose nulls are not
/// counted.
::arrow::Status check_layout(const ColumnView& column);

}  // namespace numera::io::arrow::core
