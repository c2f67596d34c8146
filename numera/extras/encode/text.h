#pragma once

/// \file
/// Text and bytes in packed form: a struct of "Values" (uint8 column) and "StartOffsets" (uint64
/// column, one more than there are elements).

#include <arrow/result.h>

#include <string_view>

#include "numera/extras/encode/located.h"
#include "numera/extras/encode/readable.h"

namespace numera::extras::encoding {

/// Packs a string array, a char array (one text per row) or a cell of char rows. String arrays and
/// cells may have any shape and are read in storage order. Missing texts are cleared in the
/// validity bitmap.
::arrow::Result<ReadableValue> pack_texts(const Located& texts);

/// Packs a cell of uint8 arrays of any shape, in storage order.
::arrow::Result<ReadableValue> pack_bytes(const Located& cells);

/// Reads a struct that is already packed. Copies nothing and does not check the offsets.
::arrow::Result<ReadableValue> packed_as_it_is(const Located& packed, const char* type);

}  // namespace numera::extras::encoding
