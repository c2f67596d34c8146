#pragma once

#include <gtest/gtest.h>

#include <memory>

#include "numera/core/to_numera.h"
#include "tests/support/array_nodes.h"

namespace numera::testing {

/// `to_numera` of an Arrow value; expects its nodes to be what they were, whatever comes of it.
template <class Value>
::arrow::Result<hxArrayPtr> ToNumeraOnlyReads(const std::shared_ptr<Value>& value) {
  const ArrayNodes before(*value);
  auto result = io::arrow::core::to_numera(value);
  EXPECT_EQ(before.difference(), "");
  return result;
}

}  // namespace numera::testing
