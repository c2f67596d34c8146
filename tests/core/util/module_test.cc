#include "numera/core/util/module.h"

#include <gtest/gtest.h>

#include "numera/host/memory.h"
#include "tests/support/recording_host.h"

namespace numera::io::arrow::core::util {
namespace {

TEST(Module, StartsAndStopsWithoutAHostCall) {
  const size_t live = host::memory::LiveArrays();
  testing::Reset();
  NRInitialize_ArrowCoreModule();
  NRTerminate_ArrowCoreModule();
  EXPECT_EQ(testing::TotalThrowingCalls(), 0U);
  EXPECT_EQ(host::memory::LiveArrays(), live);
}

TEST(Module, IsReachedUnderBothNames) {
  EXPECT_EQ(&util::NRInitialize_ArrowCoreModule, &::NRInitialize_ArrowCoreModule);
  EXPECT_EQ(&util::NRTerminate_ArrowCoreModule, &::NRTerminate_ArrowCoreModule);
}

}  // namespace
}  // namespace numera::io::arrow::core::util
