#pragma once

#include <cstdint>

#include "numera/host/array.h"

namespace numera::gauntlet::reading {

/// A number that differs where anything of the value has changed: sizes, bytes, names, and the
/// values in slots, which stay the same arrays.
std::uint64_t fingerprint(const hxArray* value);

}  // namespace numera::gauntlet::reading
