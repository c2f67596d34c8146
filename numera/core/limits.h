#pragma once

/// \file
/// The depth of nesting that the conversions take.

namespace numera::io::arrow::core {

/// How many lists, structs and maps may lie in one another, the outermost counted: values nested
/// deeper are refused as Invalid in both directions, long before the stack of a thread ends.
inline constexpr int kMaxNestingLevels = 1024;

}  // namespace numera::io::arrow::core
