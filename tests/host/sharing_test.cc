#include <cstdint>
#include <stdexcept>

#include "tests/host/host_test_support.h"

namespace numera::host::memory {
namespace {

TEST(SharedCopy, OfNullIsRefused) {
  EXPECT_EQ(thrown<std::invalid_argument>([] { hxSharedCopy(nullptr); }),
            "Array to be copied is null.");
}

TEST(SharedCopy, TakesAnAlignedBlockWhenWritten) {
  const hxArrayPtr array = number(5);
  const hxArrayPtr copy = hxSharedCopy(array.get());
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(hxGetData(copy.get())) % 64, 0u);
}

TEST(SharedCopy, CountsAsALiveArray) {
  const hxArrayPtr array = number(1);
  const size_t before = LiveArrays();
  hxArrayPtr copy = hxSharedCopy(array.get());
  EXPECT_EQ(LiveArrays(), before + 1);
  copy.reset();
  EXPECT_EQ(LiveArrays(), before);
}

}  // namespace
}  // namespace numera::host::memory
