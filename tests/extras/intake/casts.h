#pragma once

/// \file
/// Arrays that are cast where they are taken in.

#include <arrow/array.h>
#include <arrow/type.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "numera/core/to_numera.h"
#include "numera/extras/intake/intake.h"
#include "tests/extras/intake/intake_checks.h"
#include "tests/support/arrow_values.h"

namespace numera::testing {

/// A taken-in array, and its casts as texts.
struct Taken {
  std::shared_ptr<::arrow::Array> array;
  std::vector<std::string> casts;
};

inline Taken cast(const std::shared_ptr<::arrow::Array>& array) {
  auto result = extras::take_in(array, {.cast = true});
  if (!result.ok()) {
    ADD_FAILURE() << result.status();
    return {};
  }
  Taken taken{result->value, {}};
  for (const auto& one : result->casts) taken.casts.push_back(to_string(one));
  return taken;
}

/// Expects that every slice of `array` is taken in as the same slice of `expected`.
inline void expect_cast(const std::shared_ptr<::arrow::Array>& array,
                        const std::shared_ptr<::arrow::Array>& expected) {
  SCOPED_TRACE(array->type()->ToString());
  for (std::int64_t begin = 0; begin <= array->length(); ++begin) {
    for (std::int64_t end = begin; end <= array->length(); ++end) {
      SCOPED_TRACE(std::to_string(begin) + " to " + std::to_string(end));
      const Taken taken = cast(array->Slice(begin, end - begin));
      ASSERT_NE(taken.array, nullptr);
      ASSERT_TRUE(taken.array->ValidateFull().ok()) << taken.array->ValidateFull();
      EXPECT_EQ(Unfit(*taken.array->data()), "");
      EXPECT_TRUE(SameArray(*taken.array, *expected->Slice(begin, end - begin)));
      EXPECT_TRUE(io::arrow::core::to_numera(taken.array).ok());
      EXPECT_FALSE(taken.casts.empty());
      EXPECT_EQ(extras::take_in(array, {.cast = false}).status().code(),
                ::arrow::StatusCode::TypeError);
    }
  }
}

/// Values as JSON, and what they are cast to.
struct JsonCase {
  std::shared_ptr<::arrow::DataType> from;
  std::string json;
  std::shared_ptr<::arrow::DataType> to;
  std::string expected;
};

}  // namespace numera::testing
