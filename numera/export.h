#pragma once

/// \file
/// What the shared libraries export.

/// Marks a name that the shared libraries export; everything else is hidden.
/// Types that are thrown, caught or cast across a library border carry it too.
#define NUMERA_EXPORT __attribute__((visibility("default")))
