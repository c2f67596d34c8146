#include "tests/host_conformance/conformance.h"

#include "examples/own_host/own_array.h"

namespace numera::host_conformance {

const HostUnderTest& host_under_test() {
  static const HostUnderTest host = {.live_arrays = own_host::live_arrays};
  return host;
}

}  // namespace numera::host_conformance
