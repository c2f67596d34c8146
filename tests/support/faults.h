#pragma once

/// \file
/// Fails every allocation and every host call of a conversion in turn.

#include <arrow/status.h>

#include <cstddef>
#include <functional>
#include <string>

#include "numera/host/array.h"

namespace numera::testing {

/// The number of sites that failed before the conversion succeeded.
struct FaultSites {
  size_t allocations = 0;
  size_t calls = 0;
  size_t interrupts = 0;
};

/// Runs `convert` repeatedly. The first run fails the first host allocation, the second run the
/// second one, and so on until a run succeeds. The same is done with the host calls that may throw,
/// and with the interrupt checks of this thread; these throw a different exception type.
///
/// After every failed run, expects that
/// - the injected exception comes out, except after a failure of `assign_utf8`: then the conversion
///   sets the texts one by one;
/// - no host array and no Arrow memory is left;
/// - `input`, which returns all input of the conversion as text, returns the same as before;
/// - the next, undisturbed run succeeds and `result` returns the same as before; `result` also
///   converts, and returns the output as text.
///
/// `convert` must create nothing outside the conversion and must do the same in every run. It runs
/// on the recording host, whose counts are reset.
FaultSites FailEverywhere(
    const std::function<::arrow::Status()>& convert,
    const std::function<std::string()>& input = [] { return std::string(); });
FaultSites FailEverywhere(const std::function<::arrow::Status()>& convert,
                          const std::function<std::string()>& input,
                          const std::function<std::string()>& result);

/// Expects at least as many failures of each kind. A test that counts too few has failed to inject
/// them.
void ExpectAtLeast(const FaultSites& sites, const FaultSites& floor);

/// The fewest sites at which this value can be made: each of its arrays is allocated, one call
/// creates it, and one stores it unless it is the outermost. A string array is made in two steps.
FaultSites SitesOfMaking(const hxArrayPtr& value);

/// The fewest sites at which this encoded value can be read: one call looks up each array but the
/// outermost, and one reads each text. "Length", "DateType" and the text of "Type" are left out,
/// since not every kind needs them.
FaultSites SitesOfReading(const hxArrayPtr& encoded);

}  // namespace numera::testing
