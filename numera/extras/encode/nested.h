#pragma once

/// \file
/// Lists, structs and maps of any number of chunks.

#include <arrow/result.h>

#include "numera/extras/encode/located.h"
#include "numera/extras/encode/readable.h"

namespace numera::extras::encoding {

/// The borrowed fields of an encoded array.
struct Encoded {
  Located type;
  Located valid;
  Located data;
};

/// Each function reads an encoded array at nesting level `level` (outermost: 1).
/// @{
::arrow::Result<ReadableValue> read_lists(const Encoded& encoded, int level);
::arrow::Result<ReadableValue> read_structs(const Encoded& encoded, int level);
::arrow::Result<ReadableValue> read_maps(const Encoded& encoded, int level);
/// @}

}  // namespace numera::extras::encoding
