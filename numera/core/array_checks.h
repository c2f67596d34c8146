#pragma once

#include <arrow/status.h>

#include "numera/core/array_view.h"

namespace numera::io::arrow::core {

/// Checks a column and all its children, so that the writers read nothing past the end of a buffer:
/// - no type is a null pointer, and containers nest no deeper than `kMaxNestingLevels`
/// - the type of the column and of every array in it has a host form, else TypeError "Unsupported
///   type for Arrrow-NUMERA conversion: T"
/// - the chunks have the type of the column (the names, nullability and metadata of fields may
///   differ), and their lengths add up to its length
/// - nested arrays have the buffers and children of their types, children of structs are at least
///   as long as the struct, and maps have no null entries and no null keys
/// - buffers that are read are in main memory and long enough; bitmaps may be shorter. Else Invalid
///   "Buffer: found bytes that cannot be read here, expected main memory." or the bytes found
/// - the dictionary of a text dictionary array has the value type that the type of the array states
///
/// Where nothing else is stated, a failure is Invalid with what was found and what was expected.
/// Values are not checked. Offsets of texts and bytes are checked when they are read; offsets of
/// lists and maps are copied unchecked. The intake checks values, with `check_soundness` and
/// Arrow's full validation.
///
/// Cost: one step per node per chunk. No values are read. Bitmaps are read only in maps whose null
/// counts are unknown.
::arrow::Status check_column(const ColumnView& column);

}  // namespace numera::io::arrow::core
