#pragma once

/// \file
/// Lists, structs and maps of any number of chunks.

#include <arrow/result.h>

#include "numera/extras/encode/located.h"
#include "numera/extras/encode/readable.h"

namespace numera::extras::encoding {

/// What the fields of an encoded array say.
struct Encoded {
  Located type;
  Located valid;
  Located data;
};

/// Each reads an encoded array that lies `level` levels deep (the outermost is level 1).
/// @{
::arrow::Result<ReadableValue> read_lists(const Encoded& encoded, int level);
::arrow::Result<ReadableValue> read_structs(const Encoded& encoded, int level);
::arrow::Result<ReadableValue> read_maps(const Encoded& encoded, int level);
/// @}

}  // namespace numera::extras::encoding
