#pragma once

/// \file
/// Text and bytes in packed form: a struct of "Values" (uint8 column) and "StartOffsets" (uint64
/// column, one more than there are elements).

#include <arrow/result.h>

#include <string_view>

#include "numera/extras/encode/located.h"
#include "numera/extras/encode/readable.h"

namespace numera::extras::encoding {

/// A string array, a char array (a text a row) or a cell of char rows, of any shape and in storage
/// order. Missing texts are cleared bits.
::arrow::Result<ReadableValue> pack_texts(const Located& texts);

/// A cell of uint8 arrays, of any shape and in storage order.
::arrow::Result<ReadableValue> pack_bytes(const Located& cells);

/// A struct that is packed already, as it stands.
::arrow::Result<ReadableValue> packed_as_it_is(const Located& packed, const char* type);

}  // namespace numera::extras::encoding
