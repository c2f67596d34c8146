#pragma once

/// \file
/// Every allocation and every host call of a conversion failed in turn.

#include <arrow/status.h>

#include <cstddef>
#include <functional>

namespace numera::testing {

/// How many places failed before the conversion went through.
struct FaultSites {
  size_t allocations = 0;
  size_t calls = 0;
};

/// Runs `convert` again and again: with the first host allocation failing, with the second, and so
/// on until it succeeds; then the same with the host calls that may throw. Expects of every failed
/// run that the exception or a status comes out and that neither host arrays nor Arrow memory stay
/// behind, and of a run afterwards that it succeeds.
///
/// `convert` makes nothing outside the conversion and does the same in every run. It runs on the
/// recording host, whose counts are forgotten.
FaultSites FailEverywhere(const std::function<::arrow::Status()>& convert);

}  // namespace numera::testing
