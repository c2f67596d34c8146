#pragma once

/// \file
/// Stops the compilation if the major version of the Arrow headers is not `NUMERA_ARROW_MAJOR`, the
/// version that the library was built with: binary interfaces differ between major versions. The
/// package files define this macro.

#include <arrow/util/config.h>

#if defined(NUMERA_ARROW_MAJOR) && ARROW_VERSION_MAJOR != NUMERA_ARROW_MAJOR
#error "numera was built with another major version of Apache Arrow than the headers found here"
#endif
