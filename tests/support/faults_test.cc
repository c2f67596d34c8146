#include "tests/support/faults.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/support/host_builder.h"

namespace numera::testing {
namespace {

using ::arrow::Status;

/// The failures that `FailEverywhere` reports of a conversion.
size_t reported(
    const std::function<Status()>& convert,
    const std::function<std::string()>& input = [] { return std::string(); }) {
  ::testing::TestPartResultArray failures;
  {
    const ::testing::ScopedFakeTestPartResultReporter reporter(
        ::testing::ScopedFakeTestPartResultReporter::INTERCEPT_ONLY_CURRENT_THREAD, &failures);
    FailEverywhere(convert, input);
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

/// A conversion whose failures come as this status.
std::function<Status()> failing_with(const Status& status) {
  return [status] {
    try {
      const hxArrayPtr value = Char(u"a");
    } catch (...) {
      return status;
    }
    return Status::OK();
  };
}

TEST(FailEverywhere, AcceptsAFailureThatComesAsTheStatusOfAText) {
  const auto convert =
      failing_with(Status::Invalid("Could not convert string in row 0 to UTF-16 string.\n"));
  EXPECT_EQ(reported(convert), 0U);
  EXPECT_EQ(FailEverywhere(convert).calls, 1U);
}

TEST(FailEverywhere, ReportsAnotherStatus) {
  EXPECT_GT(reported(failing_with(Status::OutOfMemory("no memory"))), 0U);
}

TEST(FailEverywhere, ReportsAnotherException) {
  EXPECT_GT(reported([] {
              try {
                const hxArrayPtr value = Char(u"a");
              } catch (...) {
                throw std::runtime_error("another");
              }
              return Status::OK();
            }),
            0U);
}

TEST(FailEverywhere, FailsEveryCheckForInterrupts) {
  const FaultSites sites = FailEverywhere([] {
    hxThrowIfInterruptPending();
    hxThrowIfInterruptPending();
    return Status::OK();
  });
  EXPECT_EQ(sites.interrupts, 2U);
}

TEST(FailEverywhere, ReportsAChangeOfTheInput) {
  std::string input;
  const auto convert = [&input] {
    input += "changed";
    const hxArrayPtr value = Char(u"a");
    return Status::OK();
  };
  EXPECT_GT(reported([&] { return convert(); }, [&input] { return input; }), 0U);
}

TEST(FailEverywhere, ReportsAConversionThatFailsAfterAFailure) {
  bool has_failed = false;
  EXPECT_GT(reported([&has_failed] {
              if (has_failed) return Status::Invalid("broken");
              has_failed = true;
              const hxArrayPtr value = Char(u"a");
              has_failed = false;
              return Status::OK();
            }),
            0U);
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
