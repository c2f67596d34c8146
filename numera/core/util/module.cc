#include "numera/core/util/module.h"

void NRInitialize_ArrowCoreModule() {}
void NRTerminate_ArrowCoreModule() {}
