#pragma once

#include <gtest/gtest.h>

#include "numera/extras/encode/encode.h"
#include "numera/host/array.h"
#include "tests/support/host_matchers.h"

namespace numera::testing {

/// Expects that `make_readable` gives a value like `expected`.
inline void expect_encoded(const hxArrayPtr& value, const hxArrayPtr& expected) {
  const auto readable = extras::make_readable(value.get());
  ASSERT_TRUE(readable.ok()) << readable.status();
  EXPECT_TRUE(SameHostValue(readable->get(), expected.get()));
}

}  // namespace numera::testing
