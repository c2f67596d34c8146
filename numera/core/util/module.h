#pragma once

/// \file
/// Functions that a host calls when it loads and unloads the library. Programs that link the
/// library need not call them.

#include "numera/export.h"

/// The host calls this when it loads the library. It does nothing, because the library keeps no
/// state between calls. It may be called on any thread, any number of times.
extern "C" NUMERA_EXPORT void NRInitialize_ArrowCoreModule();
/// The host calls this when it unloads the library. It does nothing. Results of earlier conversions
/// stay usable while the library itself is loaded.
extern "C" NUMERA_EXPORT void NRTerminate_ArrowCoreModule();

namespace numera::io::arrow::core::util {

using ::NRInitialize_ArrowCoreModule;
using ::NRTerminate_ArrowCoreModule;

}  // namespace numera::io::arrow::core::util
