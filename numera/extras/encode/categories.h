#pragma once

#include <arrow/result.h>

#include "numera/extras/encode/located.h"
#include "numera/extras/encode/readable.h"

namespace numera::extras::encoding {

/// A struct of "Values" (codes of an integer class), "Categories" (texts, packed or not) and
/// "Ordinal" (one logical value). Codes are not looked at.
::arrow::Result<ReadableValue> read_categorical(const Located& data);

}  // namespace numera::extras::encoding
