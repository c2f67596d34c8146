#pragma once

#include <cstdint>

#include "numera/host/array.h"

namespace numera::gauntlet::reading {

/// A hash over sizes, bytes, names and the addresses and values of the arrays in slots. Any change
/// of the value changes it.
std::uint64_t fingerprint(const hxArray* value);

}  // namespace numera::gauntlet::reading
