#pragma once

#include <arrow/status.h>

#include "numera/core/array_view.h"

namespace numera::io::arrow::core {

/// Checks what the writers of nested columns rely on, in all chunks:
/// - every array has the buffers and children of its type;
/// - the children of a struct are at least as long as the struct;
/// - maps have no null entries and no null keys;
/// - no pointer to a type is null, and containers nest no deeper than `kMaxNestingLevels`.
///
/// Otherwise Invalid: the message names the type, what was found and what was expected. Columns of
/// plain types pass.
///
/// Cost: one step per node per chunk. No values are read. Bitmaps are read only in maps whose null
/// counts are unknown.
::arrow::Status check_layout(const ColumnView& column);

}  // namespace numera::io::arrow::core
