#pragma once

/// \file
/// Inputs and results of conversions as text, exact to the last bit.

#include <arrow/api.h>
#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <utility>

#include "numera/extras/inspect/inspect.h"
#include "numera/host/array.h"
#include "tests/support/array_nodes.h"
#include "tests/support/faults.h"

namespace numera::testing {

/// The bytes of an array, of its children and of its dictionary.
inline std::string text_of(const ::arrow::ArrayData& array) {
  std::string text = std::to_string(array.offset) + "+" + std::to_string(array.length);
  for (const auto& buffer : array.buffers) text += buffer == nullptr ? "-" : buffer->ToString();
  for (const auto& child : array.child_data) text += text_of(*child);
  if (array.dictionary != nullptr) text += text_of(*array.dictionary);
  return text;
}

inline std::string text_of(const ::arrow::ChunkedArray& column) {
  std::string text;
  for (const auto& chunk : column.chunks()) text += text_of(*chunk->data());
  return text;
}

inline std::string text_of(const ::arrow::Table& table) {
  std::string text = table.schema()->ToString();
  for (const auto& column : table.columns()) text += text_of(*column);
  return text;
}

inline std::string text_of(const hxArray* value) {
  constexpr size_t kAll = std::numeric_limits<size_t>::max();
  return extras::print(value, {.max_elements = kAll, .max_width = kAll, .max_lines = kAll});
}

inline std::string text_of(const hxArrayPtr& value) { return text_of(value.get()); }

template <class ArrowValue>
std::string text_of(const std::shared_ptr<ArrowValue>& value) {
  if constexpr (requires { value->data()->child_data; }) {
    return value->type()->ToString() + text_of(*value->data());
  } else {
    return text_of(*value);
  }
}

inline std::string text_of(const std::shared_ptr<::arrow::Buffer>& value) {
  return value->ToString();
}

/// Returns the bytes of an Arrow value. Each call also expects that no node has changed since.
template <class ArrowValue>
std::function<std::string()> input_of(const std::shared_ptr<ArrowValue>& value) {
  return [value, nodes = ArrayNodes(*value)] {
    EXPECT_EQ(nodes.difference(), "") << "the input was changed";
    return text_of(*value);
  };
}

/// The same column with unknown null counts in all nodes.
inline std::shared_ptr<::arrow::ChunkedArray> uncounted(const ::arrow::ChunkedArray& column) {
  ::arrow::ArrayVector chunks;
  for (const auto& chunk : column.chunks()) {
    chunks.push_back(::arrow::MakeArray(Uncounted(*chunk->data())));
  }
  return std::make_shared<::arrow::ChunkedArray>(std::move(chunks), column.type());
}

/// Calls `FailEverywhere` for a conversion, with its result converted to text.
template <class Convert>
FaultSites fail_everywhere(const Convert& convert, const std::function<std::string()>& input) {
  const auto result = [&convert] {
    const auto converted = convert();
    return converted.ok() ? text_of(*converted) : converted.status().ToString();
  };
  return FailEverywhere([&convert] { return convert().status(); }, input, result);
}

}  // namespace numera::testing
