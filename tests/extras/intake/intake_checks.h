#pragma once

/// \file
/// Helpers of the intake tests: they make elements by number and check whether an array is fit.

#include <arrow/array.h>
#include <arrow/type.h>
#include <arrow/util/bit_util.h>
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/arrow_values.h"

namespace numera::testing {

/// The JSON text of element i.
using Element = std::string (*)(int i);

/// Elements `begin` to `end` - 1, built as an array of their own.
inline std::shared_ptr<::arrow::Array> Elements(const std::shared_ptr<::arrow::DataType>& type,
                                                Element element, int begin, int end) {
  std::string json = "[";
  for (int i = begin; i < end; ++i) json += (i == begin ? "" : ", ") + element(i);
  return ArrowArray(type, json + "]");
}

inline std::int64_t bitmap_size(std::int64_t bits) { return (bits + 7) / 8; }

template <class Offset>
std::string unfit_offsets(const ::arrow::ArrayData& array) {
  const auto* offsets = array.GetValues<Offset>(1, 0);
  if (offsets[0] != 0) return "list offsets begin above 0";
  if (offsets[array.length] != array.child_data[0]->length) return "child is not cut";
  return "";
}

/// Why an array is unfit for the host, at any depth; empty if it is fit.
inline std::string Unfit(const ::arrow::ArrayData& array) {
  using ::arrow::Type;
  const Type::type id = array.type->id();
  if (array.offset != 0) return "offset of " + array.type->ToString();
  const auto& bitmap = array.buffers[0];
  if (bitmap != nullptr && bitmap->size() != bitmap_size(array.length)) return "size of bitmap";
  const auto nulls = array.null_count.load();
  auto counted = array.Copy();
  counted->null_count = ::arrow::kUnknownNullCount;
  const auto expected = id == Type::NA ? array.length : counted->GetNullCount();
  if (nulls != -1 && nulls != expected) return "null count";
  if (id == Type::BOOL && array.buffers[1]->size() != bitmap_size(array.length)) {
    return "size of truth values";
  }
  std::string found;
  if (id == Type::LIST || id == Type::MAP) found = unfit_offsets<std::int32_t>(array);
  if (id == Type::LARGE_LIST) found = unfit_offsets<std::int64_t>(array);
  for (const auto& child : array.child_data) {
    if (id == Type::STRUCT && child->length != array.length) return "length of a field";
    if (found.empty()) found = Unfit(*child);
  }
  if (found.empty() && array.dictionary != nullptr) found = Unfit(*array.dictionary);
  return found;
}

}  // namespace numera::testing
