#pragma once

/// \file
/// Every allocation and every host call of a conversion failed in turn.

#include <arrow/status.h>

#include <cstddef>
#include <functional>
#include <string>

namespace numera::testing {

/// How many places failed before the conversion went through.
struct FaultSites {
  size_t allocations = 0;
  size_t calls = 0;
  size_t interrupts = 0;
};

/// Runs `convert` again and again: with the first host allocation failing, with the second, and so
/// on until it succeeds; the same with the host calls that may throw, and with the checks for
/// interrupts of this thread, where each time an exception of another kind is thrown.
///
/// Expects of every failed run that
/// - the very exception comes out; only where texts are handed to a string array at once, the
///   conversion goes on without that;
/// - neither host arrays nor Arrow memory stay behind;
/// - `input`, which tells all of the conversion's input as text, is what it was;
/// - the next run, undisturbed, succeeds, with a `result` as before: that converts, too, and tells
///   what comes out as text.
///
/// `convert` makes nothing outside the conversion and does the same in every run. It runs on the
/// recording host, whose counts are forgotten.
FaultSites FailEverywhere(
    const std::function<::arrow::Status()>& convert,
    const std::function<std::string()>& input = [] { return std::string(); });
FaultSites FailEverywhere(const std::function<::arrow::Status()>& convert,
                          const std::function<std::string()>& input,
                          const std::function<std::string()>& result);

}  // namespace numera::testing
