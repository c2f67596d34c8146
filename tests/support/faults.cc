#include "tests/support/faults.h"

#include <arrow/memory_pool.h>
#include <gtest/gtest.h>

#include <array>
#include <new>
#include <string>

#include "numera/host/array.h"
#include "numera/host/memory.h"
#include "tests/support/recording_host.h"

namespace numera::testing {
namespace {

using Convert = std::function<::arrow::Status()>;

/// What a conversion must leave as it found it.
struct Held {
  size_t host_arrays = host::memory::LiveArrays();
  std::int64_t arrow_bytes = ::arrow::default_memory_pool()->bytes_allocated();

  friend bool operator==(const Held&, const Held&) = default;
};

std::ostream& operator<<(std::ostream& out, const Held& held) {
  return out << held.host_arrays << " host arrays, " << held.arrow_bytes << " bytes of Arrow";
}

/// Whether the conversion went through; the failure that was asked for is the only exception that
/// it may end with.
bool succeeds(const Convert& convert) {
  const Held before;
  bool succeeded = false;
  try {
    succeeded = convert().ok();
  } catch (const std::bad_alloc&) {
  }
  EXPECT_EQ(Held(), before) << "left behind";
  return succeeded;
}

/// The number of failures until `convert` succeeds. `arm(k)` lets site k fail, `disarm` ends it and
/// tells whether the failure had come.
template <class Arm, class Disarm>
size_t fail_each(const std::string& what, const Convert& convert, Arm arm, Disarm disarm) {
  for (size_t site = 0;; ++site) {
    SCOPED_TRACE(what + " " + std::to_string(site) + " fails");
    arm(site);
    const bool succeeded = succeeds(convert);
    const bool failed = disarm();
    EXPECT_NE(succeeded, failed) << "the failure was " << (failed ? "swallowed" : "not reached");
    if (succeeded || !failed || ::testing::Test::HasFatalFailure()) return site;
  }
}

/// Allocates once: that throws where the failure asked for is still to come, at once since
/// everything before it has happened.
bool allocation_failure_has_come() {
  try {
    const hxArrayPtr probe = hxCreateCellArray(std::array<size_t, 2>{0, 0});
  } catch (const std::bad_alloc&) {
    return false;
  }
  host::memory::ClearAllocationFailure();
  return true;
}

bool call_failure_has_come() {
  const bool failed = HasFailed();
  Reset();
  return failed;
}

}  // namespace

FaultSites FailEverywhere(const Convert& convert) {
  Reset();
  host::memory::ClearAllocationFailure();
  const ::arrow::Status undisturbed = convert();
  EXPECT_TRUE(undisturbed.ok()) << undisturbed;
  if (!undisturbed.ok()) return {};
  FaultSites sites;
  sites.allocations = fail_each("allocation", convert, host::memory::FailAllocationAfter,
                                allocation_failure_has_come);
  sites.calls =
      fail_each("call", convert, [](size_t site) { FailCall(site); }, call_failure_has_come);
  EXPECT_TRUE(succeeds(convert)) << "after all failures";
  return sites;
}

}  // namespace numera::testing
