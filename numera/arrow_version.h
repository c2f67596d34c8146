#pragma once

/// \file
/// Stops the compilation if the Arrow headers have a different major version than the one that the
/// library was built with: their binary interfaces differ. The package files define
/// `NUMERA_ARROW_MAJOR`, the version that the library was built with.

#include <arrow/util/config.h>

#if defined(NUMERA_ARROW_MAJOR) && ARROW_VERSION_MAJOR != NUMERA_ARROW_MAJOR
#error "numera was built with another major version of Apache Arrow than the headers found here"
#endif
