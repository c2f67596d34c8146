#pragma once

/// \file
/// The nesting depth that the conversions accept, and the stack size that a thread needs for it.

#include <cstddef>

namespace numera::io::arrow::core {

/// The maximum number of nesting levels of lists, structs and maps, outermost included. Both
/// directions refuse deeper values as Invalid, long before a thread runs out of stack.
inline constexpr int kMaxNestingLevels = 1024;

/// \name Stack
///
/// The stack size that a thread needs for values of `kMaxNestingLevels` levels, in bytes, as
/// `pthread_attr_setstacksize` takes it. The sizes were measured in release builds and rounded up;
/// tests check them. Other builds need more: a sanitizer makes every stack frame larger.
/// @{

/// For `to_arrow` (308 bytes per level), `to_arrow_table`, `to_numera` (368), `to_numera_datatype`,
/// `own_to_arrow`, `own_to_arrow_table`, `print`, `first_difference`, `hxSharedCopy` and writes to
/// shared host arrays, whether they succeed or fail. Also for the destruction of their results:
/// Arrow arrays and types (208 bytes per level) and arrays of the in-memory host (0 bytes per
/// level).
///
/// `to_numera` needs `kTypeStackBytes` if it refuses a type.
inline constexpr std::size_t kStackBytes = std::size_t{512} << 10;

/// For `to_numera` if its error message contains a type, because Arrow makes that text recursively
/// (1,216 bytes per level). Also for `returned_type` and `returns_as`.
inline constexpr std::size_t kTypeStackBytes = std::size_t{1536} << 10;

/// For `take_in`, which calls Arrow's full validation (2,016 bytes per level of maps).
inline constexpr std::size_t kIntakeStackBytes = std::size_t{2304} << 10;

/// For `make_readable`, which walks the value and calls Arrow's full validation (2,048 bytes per
/// level of structs).
inline constexpr std::size_t kMakeReadableStackBytes = std::size_t{2304} << 10;
/// @}

}  // namespace numera::io::arrow::core
