#pragma once

#include <arrow/result.h>

#include "numera/core/array_view.h"
#include "numera/host/array.h"

namespace numera::io::arrow::core {

/// "Valid" of a column. One buffer envelope over all chunks where `plain` is set and there is a
/// chunk, else a struct array with one envelope a chunk. Bits are those of each chunk's bitmap from
/// its start (the offset of a slice is not applied), 1 where there is no bitmap; without nulls
/// there are no bytes. Invalid where a bitmap that is needed is not in main memory.
::arrow::Result<hxArrayPtr> validity_to_numera(const ColumnView& column, bool plain);

}  // namespace numera::io::arrow::core
