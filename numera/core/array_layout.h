#pragma once

#include <arrow/chunked_array.h>
#include <arrow/status.h>

namespace numera::io::arrow::core {

/// Whether the chunks of a nested column hold what their types say: the buffers and children of
/// every array, struct children as long as their struct, map keys without nulls, and containers in
/// one another no deeper than `kMaxNestingLevels`. Arrow looks at the children of a struct when
/// they are asked for, and ends the process where they do not fit, so this comes before. Invalid
/// names the type, what was found and what was expected. Columns of plain types pass.
///
/// Cost: one step a node a chunk; no values are read.
::arrow::Status check_layout(const ::arrow::ChunkedArray& column);

}  // namespace numera::io::arrow::core
