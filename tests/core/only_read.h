#pragma once

#include <gtest/gtest.h>

#include <memory>

#include "numera/core/to_numera.h"
#include "tests/support/array_nodes.h"

namespace numera::testing {

/// Calls `to_numera` and expects that the nodes of the value are unchanged, even if the call fails.
template <class Value>
::arrow::Result<hxArrayPtr> ToNumeraOnlyReads(const std::shared_ptr<Value>& value) {
  const ArrayNodes before(*value);
  auto result = io::arrow::core::to_numera(value);
  EXPECT_EQ(before.difference(), "");
  return result;
}

}  // namespace numera::testing
