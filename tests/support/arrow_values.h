#pragma once

/// \file
/// Arrow values from JSON text, and their comparison.

#include <arrow/array.h>
#include <arrow/chunked_array.h>
#include <arrow/json/from_string.h>
#include <arrow/table.h>
#include <arrow/type.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace numera::testing {

inline std::shared_ptr<::arrow::Array> ArrowArray(const std::shared_ptr<::arrow::DataType>& type,
                                                  const std::string& json) {
  return ::arrow::json::ArrayFromJSONString(type, json).ValueOrDie();
}

inline std::shared_ptr<::arrow::ChunkedArray> ArrowChunks(
    const std::shared_ptr<::arrow::DataType>& type, const std::vector<std::string>& json) {
  ::arrow::ArrayVector chunks;
  for (const std::string& chunk : json) chunks.push_back(ArrowArray(type, chunk));
  return ::arrow::ChunkedArray::Make(std::move(chunks), type).ValueOrDie();
}

inline std::shared_ptr<::arrow::Buffer> ArrowBuffer(const std::vector<std::uint8_t>& bytes) {
  return ::arrow::Buffer::FromString(std::string(bytes.begin(), bytes.end()));
}

/// Equal in type, length, validity and values. Prints both on failure.
inline ::testing::AssertionResult SameArray(const ::arrow::Array& actual,
                                            const ::arrow::Array& expected) {
  if (!actual.type()->Equals(*expected.type(), /*check_metadata=*/true)) {
    return ::testing::AssertionFailure()
           << "types differ:\n  actual   " << *actual.type() << "\n  expected " << *expected.type();
  }
  if (actual.Equals(expected, ::arrow::EqualOptions::Defaults().nans_equal(true))) {
    return ::testing::AssertionSuccess();
  }
  return ::testing::AssertionFailure() << "actual:\n"
                                       << actual.ToString() << "\nexpected:\n"
                                       << expected.ToString();
}

}  // namespace numera::testing
