#pragma once

#include <arrow/status.h>

#include "numera/core/array_view.h"

namespace numera::io::arrow::core {

/// Checks a column from outside, at every depth, so that the writers read nothing past its end:
/// - no type is a null pointer, and containers nest no deeper than `kMaxNestingLevels`
/// - all types have a host form, else TypeError "Unsupported type for Arrrow-NUMERA conversion: T"
/// - the chunks have the type of the column (the names, nullability and metadata of fields may
///   differ), and their lengths add up to its length
/// - nested arrays have the buffers and children of their types, children of structs are at least
///   as long as the struct, and maps have no null entries and no null keys
/// - buffers that are read are in main memory and long enough; bitmaps may be shorter. Else Invalid
///   "Buffer: found bytes that cannot be read here, expected main memory." or the bytes found
/// - dictionaries of text have the value type that their array states
///
/// Otherwise Invalid: the message names what was found and what was expected. It does not check
/// whether values are sound: offsets are checked while they are read, lists as stored need no
/// check. `check_soundness` of the intake has that demand.
///
/// Cost: one step per node per chunk. No values are read. Bitmaps are read only in maps whose null
/// counts are unknown.
::arrow::Status check_column(const ColumnView& column);

}  // namespace numera::io::arrow::core
