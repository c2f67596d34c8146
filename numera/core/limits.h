#pragma once

/// \file
/// The depth of nesting that the conversions take, and the stack of a thread that they need for it.

#include <cstddef>

namespace numera::io::arrow::core {

/// How many lists, structs and maps may lie in one another, the outermost counted: values nested
/// deeper are refused as Invalid in both directions, long before the stack of a thread ends.
inline constexpr int kMaxNestingLevels = 1024;

/// \name Stack
///
/// What a thread needs for values of `kMaxNestingLevels` levels, as it is given to
/// `pthread_attr_setstacksize`. Measured in release builds, rounded up, and held by tests. Other
/// builds need more: a sanitizer makes every frame larger.
/// @{

/// `to_arrow` (308 bytes per level), `to_arrow_table`, `to_numera` (432), `to_numera_datatype`,
/// `own_to_arrow`, `own_to_arrow_table`, `print`, `first_difference`, `hxSharedCopy` and writes to
/// shared host arrays, whether they succeed or fail, and the destruction of what they give: Arrow
/// arrays and types (208 bytes per level) and arrays of the in-memory host (none).
///
/// `to_numera` needs `kTypeStackBytes` where it refuses a type.
inline constexpr std::size_t kStackBytes = std::size_t{512} << 10;

/// `to_numera` where its message shows a type, which Arrow spells out (1,216 bytes per level);
/// `returned_type` and `returns_as`.
inline constexpr std::size_t kTypeStackBytes = std::size_t{1536} << 10;

/// `take_in`, which calls Arrow's full validation (2,016 bytes per level, of maps).
inline constexpr std::size_t kIntakeStackBytes = std::size_t{2304} << 10;

/// `make_readable`, which goes down the value and calls Arrow's full validation (2,048 bytes per
/// level, of structs).
inline constexpr std::size_t kMakeReadableStackBytes = std::size_t{2304} << 10;
/// @}

}  // namespace numera::io::arrow::core
