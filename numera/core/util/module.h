#pragma once

/// \file
/// What a host calls when it loads and unloads the library. Programs that link the library need
/// not.

#include "numera/export.h"

/// The host calls this when it loads the library. It does nothing, on any thread and however often:
/// the library keeps no state between calls.
extern "C" NUMERA_EXPORT void NRInitialize_ArrowCoreModule();
/// The host calls this when it unloads the library. It does nothing: whatever was converted before
/// stays usable for as long as the library itself is loaded.
extern "C" NUMERA_EXPORT void NRTerminate_ArrowCoreModule();

namespace numera::io::arrow::core::util {

using ::NRInitialize_ArrowCoreModule;
using ::NRTerminate_ArrowCoreModule;

}  // namespace numera::io::arrow::core::util
