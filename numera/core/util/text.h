#pragma once

/// \file
/// Text of host arrays.

#include <string>

#include "numera/export.h"
#include "numera/host/array.h"

namespace numera::io::arrow::core::util {

/// The text of a char array as UTF-8. Null and all other arrays, string arrays included, give the
/// empty text. All elements of a char array are read in storage order, and NUL is kept. Throws
/// `hxCodecError` on an unpaired surrogate, and `std::bad_alloc`. Any number of threads may read at
/// the same time. Cost: one pass.
NUMERA_EXPORT std::string HxArrayToString(const hxArray* a);

}  // namespace numera::io::arrow::core::util
