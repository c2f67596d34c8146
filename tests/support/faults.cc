#include "tests/support/faults.h"

#include <arrow/memory_pool.h>
#include <gtest/gtest.h>

#include <array>
#include <exception>
#include <limits>
#include <new>
#include <string>
#include <string_view>

#include "numera/host/array.h"
#include "numera/host/memory.h"
#include "numera/host/string_array.h"
#include "tests/support/recording_host.h"

namespace numera::testing {
namespace {

using Convert = std::function<::arrow::Status()>;
using Text = std::function<std::string()>;

/// What a failed conversion must leave as it was.
struct Held {
  size_t host_arrays = host::memory::LiveArrays();
  std::int64_t arrow_bytes = ::arrow::default_memory_pool()->bytes_allocated();

  friend bool operator==(const Held&, const Held&) = default;
};

std::ostream& operator<<(std::ostream& out, const Held& held) {
  return out << held.host_arrays << " host arrays, " << held.arrow_bytes << " bytes of Arrow";
}

/// The exception that a failing host call or interrupt check throws. Nothing else throws it, and no
/// handler of standard exceptions catches it.
struct Fault {
  size_t site;
};

/// The site of a failed allocation, which throws `std::bad_alloc` and not `Fault`.
constexpr size_t kAllocation = std::numeric_limits<size_t>::max();

/// Returns whether the conversion succeeded. Only the failure of `site` may stop it.
bool succeeds(const Convert& convert, size_t site) {
  const Held before;
  bool succeeded = false;
  try {
    const ::arrow::Status status = convert();
    succeeded = status.ok();
    EXPECT_TRUE(succeeded) << "the failure came as a status: " << status;
  } catch (const std::bad_alloc&) {
    EXPECT_EQ(site, kAllocation) << "std::bad_alloc came out";
  } catch (const Fault& fault) {
    EXPECT_EQ(fault.site, site) << "another failure came out";
  } catch (...) {
    ADD_FAILURE() << "another exception came out";
  }
  EXPECT_EQ(Held(), before) << "left behind";
  return succeeded;
}

/// One kind of failure, to be injected at each site of a conversion in turn.
struct Way {
  std::string_view what;
  std::function<void(size_t)> arm;  ///< lets the given site fail
  std::function<bool()> disarm;     ///< stops that; returns whether the site was reached
  bool throws_faults = true;        ///< otherwise `std::bad_alloc`
};

/// Returns the number of failures before `convert` succeeds undisturbed.
size_t fail_each(const Way& way, const Convert& convert, const Text& input, const Text& result) {
  const std::string before = input();
  const std::string wanted = result();
  for (size_t site = 0;; ++site) {
    SCOPED_TRACE(std::string(way.what) + " " + std::to_string(site) + " fails");
    Reset();
    way.arm(site);
    const bool succeeded = succeeds(convert, way.throws_faults ? site : kAllocation);
    // If texts cannot be handed over at once, the conversion sets them one by one.
    const bool recovered = TextsAtOnceThrew();
    EXPECT_TRUE(succeeded || !recovered) << "the failure to hand texts over came out";
    const bool failed = way.disarm();
    EXPECT_EQ(failed, recovered || !succeeded)
        << "the failure was " << (failed ? "swallowed" : "not reached");
    EXPECT_EQ(input(), before) << "the input was changed";
    const std::string next = result();
    const bool goes_on = next == wanted;
    EXPECT_EQ(next, wanted) << "the next conversion fails or gives another value";
    if ((succeeded && !recovered) || !failed || !goes_on || ::testing::Test::HasFatalFailure())
      return site;
  }
}

/// Allocates once as a probe. The sites are tried in ascending order, so a pending failure hits the
/// next allocation: the probe throws.
bool allocation_failure_has_come() {
  try {
    const hxArrayPtr probe = hxCreateCellArray(std::array<size_t, 2>{0, 0});
  } catch (const std::bad_alloc&) {
    return false;
  }
  host::memory::ClearAllocationFailure();
  return true;
}

size_t fail_allocations(const Convert& convert, const Text& input, const Text& result) {
  return fail_each({.what = "allocation",
                    .arm = host::memory::FailAllocationAfter,
                    .disarm = allocation_failure_has_come,
                    .throws_faults = false},
                   convert, input, result);
}

size_t fail_calls(const Convert& convert, const Text& input, const Text& result) {
  const auto arm = [](size_t site) { FailCall(site, std::make_exception_ptr(Fault{site})); };
  const auto disarm = [] {
    const bool failed = HasFailed();
    Reset();
    return failed;
  };
  return fail_each({.what = "call", .arm = arm, .disarm = disarm}, convert, input, result);
}

size_t interrupt(const Convert& convert, const Text& input, const Text& result) {
  size_t checks = 0;
  size_t stop = 0;
  const auto arm = [&](size_t site) {
    checks = 0;
    stop = site;
    host::memory::SetInterruptCheck([&checks, &stop] {
      if (checks++ == stop) throw Fault{stop};
    });
  };
  const auto disarm = [&] {
    host::memory::SetInterruptCheck({});
    return checks > stop;
  };
  return fail_each({.what = "check for interrupts", .arm = arm, .disarm = disarm}, convert, input,
                   result);
}

/// Calls `visit` for every array within a value and the name of its field; cells have no name.
template <class Visit>
void for_each_within(const hxArray* value, const Visit& visit) {
  const auto go_on = [&visit](const hxArray* inner, std::string_view field) {
    if (inner == nullptr) return;
    visit(inner, field);
    for_each_within(inner, visit);
  };
  for (size_t i = 0; i < hxGetNumberOfElements(value); ++i) {
    if (hxGetClassID(value) == hxClassID::Cell) go_on(hxGetCell(value, i), "");
    for (int f = 0; f < hxGetNumberOfFields(value); ++f) {
      const char* const name = hxGetFieldName(value, f);
      go_on(hxGetField(value, i, name), name);
    }
  }
}

}  // namespace

FaultSites FailEverywhere(const Convert& convert, const Text& input) {
  return FailEverywhere(convert, input, [&convert] { return convert().ToString(); });
}

FaultSites FailEverywhere(const Convert& convert, const Text& input, const Text& result) {
  Reset();
  host::memory::ClearAllocationFailure();
  const ::arrow::Status undisturbed = convert();
  EXPECT_TRUE(undisturbed.ok()) << undisturbed;
  if (!undisturbed.ok()) return {};
  FaultSites sites;
  sites.allocations = fail_allocations(convert, input, result);
  sites.calls = fail_calls(convert, input, result);
  sites.interrupts = interrupt(convert, input, result);
  return sites;
}

void ExpectAtLeast(const FaultSites& sites, const FaultSites& floor) {
  EXPECT_GE(sites.allocations, floor.allocations);
  EXPECT_GE(sites.calls, floor.calls);
  EXPECT_GE(sites.interrupts, floor.interrupts);
}

FaultSites SitesOfMaking(const hxArrayPtr& value) {
  FaultSites sites{.allocations = 1, .calls = 1};
  for_each_within(value.get(), [&sites](const hxArray* inner, std::string_view) {
    const size_t steps = hxIsStringArray(inner) ? 2 : 1;
    sites.allocations += steps;
    sites.calls += steps + 1;
  });
  return sites;
}

FaultSites SitesOfReading(const hxArrayPtr& encoded) {
  FaultSites sites;
  for_each_within(encoded.get(), [&sites](const hxArray* inner, std::string_view field) {
    if (field == "Length" || field == "DateType") return;
    const bool is_read = hxGetClassID(inner) == hxClassID::Char && field != "Type";
    sites.calls += is_read ? 2 : 1;
  });
  return sites;
}

}  // namespace numera::testing
