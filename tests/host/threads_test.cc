#include <new>
#include <thread>

#include "tests/host/host_test_support.h"

namespace numera::host::memory {
namespace {

TEST(Threads, FailTheirOwnAllocationsOnly) {
  FailAllocationAfter(0);
  std::thread([] { EXPECT_NO_THROW(zeros({1, 1})); }).join();
  EXPECT_THROW(zeros({1, 1}), std::bad_alloc);
}

}  // namespace
}  // namespace numera::host::memory
