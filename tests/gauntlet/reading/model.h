#pragma once

/// \file
/// The result of the conversions towards Arrow for any value, right or wrong. It is written from
/// the description of the encoding, without code of the library.

#include <cstddef>

#include "numera/host/array.h"
#include "tests/gauntlet/reading/outcome.h"

namespace numera::gauntlet::reading {

/// The result for element `index` of encoded arrays.
Outcome expected_array(const hxArray* encoded, size_t index);

Outcome expected_buffer(const hxArray* encoded);

/// Calls the host's interrupt check exactly as often as the conversion has to.
Outcome expected_table(const hxArray* encoded);

}  // namespace numera::gauntlet::reading
