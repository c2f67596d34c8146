#pragma once

/// \file
/// The version of the project.

#include <string_view>

namespace numera {

/// "major.minor.patch", known at compile time. The version is defined only on this line: the build,
/// the package files and the programs read it from here.
inline constexpr std::string_view kVersion = "0.1.0";

}  // namespace numera
