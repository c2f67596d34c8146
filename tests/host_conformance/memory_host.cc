#include "numera/host/memory.h"
#include "tests/host_conformance/conformance.h"

namespace numera::host_conformance {

const HostUnderTest& host_under_test() {
  using namespace host::memory;
  static const HostUnderTest host = {.live_arrays = LiveArrays,
                                     .object_array = CreateObjectArray,
                                     .char_array = CreateCharArray,
                                     .sparse_array = CreateSparseArray,
                                     .request_interrupt = RequestInterrupt,
                                     .clear_interrupt = ClearInterrupt,
                                     .fail_allocation_after = FailAllocationAfter,
                                     .clear_allocation_failure = ClearAllocationFailure};
  return host;
}

}  // namespace numera::host_conformance
