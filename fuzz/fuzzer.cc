#include "fuzz/fuzzer.h"

#include "fuzz/claims.h"
#include "numera/host/memory.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
  using numera::host::memory::LiveArrays;
  const size_t before = LiveArrays();
  numera::fuzz::try_input({data, size});
  numera::fuzz::claim(LiveArrays() == before, "no array is left over");
  return 0;
}
