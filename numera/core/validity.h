#pragma once

#include "numera/core/array_view.h"
#include "numera/host/array.h"

namespace numera::io::arrow::core {

/// Makes "Valid" of a column: one buffer envelope over all chunks if `plain` is set and there is a
/// chunk, else a struct array with one envelope per chunk. Bits are read from the start of each
/// chunk's bitmap; the offset of a slice is not applied. All elements of a chunk without a bitmap
/// are valid. If nothing in an envelope is null, its "Values" has no bytes.
hxArrayPtr validity_to_numera(const ColumnView& column, bool plain);

}  // namespace numera::io::arrow::core
