#pragma once

/// \file
/// What the shared libraries export, and on which machines they run.

#include <bit>

static_assert(std::endian::native == std::endian::little,
              "numbers are read and written a word at a time, the lowest byte first");

/// Marks a name that the shared libraries export; everything else is hidden.
/// Types that are thrown, caught or cast across a library border carry it too.
#define NUMERA_EXPORT __attribute__((visibility("default")))
