#pragma once

/// \file
/// The export macro of the shared libraries, and the machines that they run on.

#include <bit>

static_assert(std::endian::native == std::endian::little,
              "numbers are read and written a word at a time, the lowest byte first");

/// Marks a name that the shared libraries export; all other names are hidden. Types that are
/// thrown, caught or cast across a library boundary need it too.
#define NUMERA_EXPORT __attribute__((visibility("default")))
