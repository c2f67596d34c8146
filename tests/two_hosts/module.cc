// The entry of a module that brings a host.

#include <string>

#include "numera/host/bound_host.h"

/// What the module is told of its host; the text lives until the next call.
extern "C" NUMERA_EXPORT const char* numera_test_other_host() {
  static const char here = 0;
  static std::string other;
  other = numera::host::other_host(&here);
  return other.c_str();
}
