#include "tests/support/faults.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <new>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "numera/host/string_array.h"
#include "tests/support/host_builder.h"

namespace numera::testing {
namespace {

using ::arrow::Status;

/// The test failures that `FailEverywhere` reports for a conversion.
template <class... Texts>
size_t reported(const std::function<Status()>& convert, const Texts&... texts) {
  ::testing::TestPartResultArray failures;
  {
    const ::testing::ScopedFakeTestPartResultReporter reporter(
        ::testing::ScopedFakeTestPartResultReporter::INTERCEPT_ONLY_CURRENT_THREAD, &failures);
    FailEverywhere(convert, texts...);
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

/// A conversion that turns every exception into this status.
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

const Status kRowStatus = Status::Invalid("Could not convert string in row 0 to UTF-16 string.\n");

/// A conversion that hands texts to a string array. `on_failure` decides the result if that throws.
std::function<Status()> handing_texts_over(const std::function<Status()>& on_failure) {
  return [on_failure] {
    constexpr std::array<std::int32_t, 2> kOffsets = {0, 1};
    constexpr std::array<std::uint8_t, 1> kBytes = {'a'};
    const auto strings = hxMakeStringArray(Dims{1, 1});
    try {
      strings->assign_utf8(0, kOffsets, kBytes.data());
    } catch (...) {
      return on_failure();
    }
    return Status::OK();
  };
}

TEST(FailEverywhere, AcceptsAConversionThatGoesOnWhereTextsCannotBeHandedOver) {
  const auto convert = handing_texts_over([] { return Status::OK(); });
  EXPECT_EQ(reported(convert), 0U);
  EXPECT_EQ(FailEverywhere(convert).calls, 2U);
}

TEST(FailEverywhere, ReportsAFailureOfHandingTextsOverThatComesAsAnException) {
  EXPECT_GT(reported(handing_texts_over([]() -> Status { throw; })), 0U);
}

TEST(FailEverywhere, ReportsTheStatusOfAText) {
  EXPECT_GT(reported(handing_texts_over([] { return kRowStatus; })), 0U);
  EXPECT_GT(reported(failing_with(kRowStatus)), 0U);
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

TEST(FailEverywhere, ReportsAConversionThatGivesAnotherValueAfterAFailure) {
  std::string value = "a";
  EXPECT_GT(reported(
                [&value] {
                  const hxArrayPtr first = Char(u"a");
                  const std::string before = std::exchange(value, "half made");
                  const hxArrayPtr second = Char(u"a");
                  value = before;
                  return Status::OK();
                },
                [] { return std::string(); }, [&value] { return value; }),
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
