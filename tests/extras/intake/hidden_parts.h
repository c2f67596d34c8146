#pragma once

/// \file
/// Structs and lists that may hide what they hold.

#include <arrow/array/data.h>
#include <arrow/type.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "tests/support/arrow_values.h"
#include "tests/support/offset_arrays.h"

namespace numera::testing {

/// A struct of one field with the length of its child.
inline std::shared_ptr<::arrow::ArrayData> struct_of(
    const std::shared_ptr<::arrow::ArrayData>& child, std::vector<std::uint8_t> bitmap) {
  return ::arrow::ArrayData::Make(::arrow::struct_({::arrow::field("a", child->type)}),
                                  child->length, {ArrowBuffer(bitmap)}, {child});
}

/// Lists with the given offsets.
inline std::shared_ptr<::arrow::ArrayData> lists_of(
    const std::shared_ptr<::arrow::ArrayData>& child, const std::vector<std::int32_t>& offsets,
    std::uint8_t bitmap) {
  return ::arrow::ArrayData::Make(::arrow::list(child->type),
                                  static_cast<std::int64_t>(offsets.size()) - 1,
                                  {ArrowBuffer({bitmap}), ExactBuffer(offsets)}, {child});
}

}  // namespace numera::testing
