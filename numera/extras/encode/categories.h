#pragma once

#include <arrow/result.h>

#include "numera/extras/encode/located.h"
#include "numera/extras/encode/readable.h"

namespace numera::extras::encoding {

/// Reads a struct of "Values" (codes of an integer class), "Categories" (texts, packed or not) and
/// "Ordinal" (one logical value). Does not compare the codes with the number of categories:
/// `validate` does so later.
::arrow::Result<ReadableValue> read_categorical(const Located& data);

}  // namespace numera::extras::encoding
