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
/// - the injected exception comes out. One exception: if `assign_utf8` fails, the conversion sets
/// the
///   texts one by one and succeeds;
/// - no host array and no Arrow memory is left;
/// - `input`, which returns all input of the conversion as text, returns the same as before;
/// - a further run without failure gives the same `result` as before. `result` runs the conversion
///   and returns its output as text; by default, its status.
///
/// `convert` must create nothing outside the conversion and must do the same in every run. It runs
/// on the recording host, whose counts are reset.
FaultSites FailEverywhere(
    const std::function<::arrow::Status()>& convert,
    const std::function<std::string()>& input = [] { return std::string(); });
FaultSites FailEverywhere(const std::function<::arrow::Status()>& convert,
                          const std::function<std::string()>& input,
                          const std::function<std::string()>& result);

/// Expects that each number of sites is at least that of `floor`: a smaller number means that
/// failures were not injected.
void ExpectAtLeast(const FaultSites& sites, const FaultSites& floor);

/// A lower bound for the sites of making this value: per array one allocation, one call that
/// creates it, and one call that stores it (none for the outermost). An inner string array takes
/// two allocations and two creating calls.
FaultSites SitesOfMaking(const hxArrayPtr& value);

/// A lower bound for the sites of reading this encoded value: one call per inner array, and one
/// more per text. Not counted, since some kinds do not read them: "Length", "DateType" and the text
/// of "Type".
FaultSites SitesOfReading(const hxArrayPtr& encoded);

}  // namespace numera::testing
