#pragma once

/// \file
/// Arrow values from JSON text, and their comparison.

#include <arrow/array.h>
#include <arrow/array/util.h>
#include <arrow/chunked_array.h>
#include <arrow/json/from_string.h>
#include <arrow/table.h>
#include <arrow/type.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <typeinfo>
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

inline ::arrow::ArrayVector PartsOf(const ::arrow::Array& array) {
  switch (array.type_id()) {
    case ::arrow::Type::STRUCT:
      return static_cast<const ::arrow::StructArray&>(array).fields();
    case ::arrow::Type::LIST:
      return {static_cast<const ::arrow::ListArray&>(array).values()};
    case ::arrow::Type::LARGE_LIST:
      return {static_cast<const ::arrow::LargeListArray&>(array).values()};
    case ::arrow::Type::DICTIONARY: {
      const auto& coded = static_cast<const ::arrow::DictionaryArray&>(array);
      return {coded.indices(), coded.dictionary()};
    }
    default:
      return {};
  }
}

/// Whether the array and all its parts have the C++ classes to which a caller casts their types.
inline ::testing::AssertionResult HasClassOfItsType(const ::arrow::Array& array) {
  const auto by_arrow = ::arrow::MakeArray(array.data());
  const ::arrow::Array& expected = *by_arrow;
  if (typeid(array) != typeid(expected)) {
    return ::testing::AssertionFailure()
           << "an array of type " << *array.type() << " is of class " << typeid(array).name()
           << ", expected " << typeid(expected).name();
  }
  for (const auto& part : PartsOf(array)) {
    if (const auto result = HasClassOfItsType(*part); !result) return result;
  }
  return ::testing::AssertionSuccess();
}

/// Whether type, C++ class, length, validity and values are equal. Prints both on failure.
inline ::testing::AssertionResult SameArray(const ::arrow::Array& actual,
                                            const ::arrow::Array& expected) {
  if (!actual.type()->Equals(*expected.type(), /*check_metadata=*/true)) {
    return ::testing::AssertionFailure()
           << "types differ:\n  actual   " << *actual.type() << "\n  expected " << *expected.type();
  }
  if (const auto result = HasClassOfItsType(actual); !result) return result;
  if (actual.Equals(expected, ::arrow::EqualOptions::Defaults().nans_equal(true))) {
    return ::testing::AssertionSuccess();
  }
  return ::testing::AssertionFailure() << "actual:\n"
                                       << actual.ToString() << "\nexpected:\n"
                                       << expected.ToString();
}

/// Whether schema and values are equal and each chunk has the C++ class of its type. Prints both on
/// failure.
inline ::testing::AssertionResult SameTable(const ::arrow::Table& actual,
                                            const ::arrow::Table& expected) {
  for (const auto& column : actual.columns()) {
    for (const auto& chunk : column->chunks()) {
      if (const auto result = HasClassOfItsType(*chunk); !result) return result;
    }
  }
  if (actual.Equals(expected, /*check_metadata=*/true)) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "actual:\n"
                                       << actual.ToString() << "\nexpected:\n"
                                       << expected.ToString();
}

}  // namespace numera::testing
