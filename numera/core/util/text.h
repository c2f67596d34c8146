#pragma once

#include <string>

#include "numera/export.h"
#include "numera/host/array.h"

namespace numera::io::arrow::core::util {

/// The text of a char array as UTF-8; the empty text for null and for every other array, string
/// arrays included. Throws `hxCodecError` on an unpaired surrogate.
NUMERA_EXPORT std::string HxArrayToString(const hxArray* a);

}  // namespace numera::io::arrow::core::util
