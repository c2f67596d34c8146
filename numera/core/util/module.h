#pragma once

#include "numera/export.h"

/// The host calls this when it loads the library. It does nothing.
extern "C" NUMERA_EXPORT void NRInitialize_ArrowCoreModule();
/// The host calls this when it unloads the library. It does nothing.
extern "C" NUMERA_EXPORT void NRTerminate_ArrowCoreModule();

namespace numera::io::arrow::core::util {

using ::NRInitialize_ArrowCoreModule;
using ::NRTerminate_ArrowCoreModule;

}  // namespace numera::io::arrow::core::util
