#pragma once

/// \file
/// Comparison of whole host values: `EXPECT_TRUE(SameHostValue(actual.get(), expected.get()));`
/// A test that uses it links `numera_extras`.

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "numera/extras/inspect/inspect.h"
#include "numera/host/array.h"

namespace numera::testing {

/// Succeeds if the values are equal bit by bit. A failure shows the first difference and both
/// values.
inline ::testing::AssertionResult SameHostValue(const hxArray* actual, const hxArray* expected) {
  const std::optional<std::string> difference = extras::first_difference(actual, expected);
  if (!difference) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure()
         << "first difference (actual, expected): " << *difference << "\nactual:\n"
         << extras::print(actual) << "\nexpected:\n"
         << extras::print(expected);
}

}  // namespace numera::testing
