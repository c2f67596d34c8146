#pragma once

/// \file
/// What the conversions towards Arrow give for any value at all, right or wrong: said once more,
/// from the encoding as it is described, with nothing of the library.

#include <cstddef>

#include "numera/host/array.h"
#include "tests/gauntlet/reading/outcome.h"

namespace numera::gauntlet::reading {

/// Of element `index` of encoded arrays.
Outcome expected_array(const hxArray* encoded, size_t index);

Outcome expected_buffer(const hxArray* encoded);

/// Calls the host's interrupt check as often as the conversion is to call it.
Outcome expected_table(const hxArray* encoded);

}  // namespace numera::gauntlet::reading
