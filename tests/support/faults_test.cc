#include "tests/support/faults.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <new>
#include <string>
#include <vector>

#include "tests/support/host_builder.h"

namespace numera::testing {
namespace {

using ::arrow::Status;

/// The failures that `FailEverywhere` reports of a conversion.
size_t reported(const std::function<Status()>& convert) {
  ::testing::TestPartResultArray failures;
  {
    const ::testing::ScopedFakeTestPartResultReporter reporter(
        ::testing::ScopedFakeTestPartResultReporter::INTERCEPT_ONLY_CURRENT_THREAD, &failures);
    FailEverywhere(convert);
  }
  return static_cast<size_t>(failures.size());
}

TEST(FailEverywhere, FailsEveryCallAndEveryAllocation) {
  const FaultSites sites = FailEverywhere([] {
    const hxArrayPtr value = Char(u"a");
    const hxArrayPtr copy = hxSharedCopy(value.get());
    return Status::OK();
  });
  EXPECT_EQ(sites.calls, 2U);
  EXPECT_GE(sites.allocations, 2U);
}

TEST(FailEverywhere, AcceptsAFailureThatComesAsAStatus) {
  const auto convert = [] {
    try {
      const hxArrayPtr value = Char(u"a");
    } catch (const std::bad_alloc&) {
      return Status::OutOfMemory("no memory");
    }
    return Status::OK();
  };
  EXPECT_EQ(reported(convert), 0U);
  EXPECT_EQ(FailEverywhere(convert).calls, 1U);
}

TEST(FailEverywhere, ReportsAFailureThatIsSwallowed) {
  EXPECT_GT(reported([] {
              try {
                const hxArrayPtr value = Char(u"a");
              } catch (const std::bad_alloc&) {
              }
              return Status::OK();
            }),
            0U);
}

TEST(FailEverywhere, ReportsAnArrayThatIsLeftBehind) {
  std::vector<hxArray*> left;
  EXPECT_GT(reported([&left] {
              left.push_back(Char(u"a").release());
              return Status::OK();
            }),
            0U);
  for (hxArray* const array : left) hxDestroyArray(array);
}

TEST(FailEverywhere, ReportsAConversionThatFailsByItself) {
  EXPECT_EQ(reported([] { return Status::Invalid("always"); }), 1U);
}

}  // namespace
}  // namespace numera::testing
