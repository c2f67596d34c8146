#pragma once

/// \file
/// Refuses to compile against another major version of Apache Arrow than the library was built
/// with: the two differ in their binary interface. The package files name the version.

#include <arrow/util/config.h>

#if defined(NUMERA_ARROW_MAJOR) && ARROW_VERSION_MAJOR != NUMERA_ARROW_MAJOR
#error "numera was built with another major version of Apache Arrow than the headers found here"
#endif
