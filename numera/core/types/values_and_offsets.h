#pragma once

/// \file
/// The encoded form that texts and byte strings share: a struct with the fields "Values" (uint8,
/// the bytes of all elements back to back) and "StartOffsets" (uint64, N + 1 zero-based byte
/// positions). Bytes after the last offset are allowed. Offsets are read only if they must be
/// copied.

#include <arrow/buffer.h>
#include <arrow/result.h>

#include <cstdint>
#include <memory>
#include <utility>

#include "numera/core/dispatch.h"
#include "numera/core/host_values.h"
#include "numera/host/array.h"

namespace numera::io::arrow::core {

/// The two fields, borrowed from the struct.
struct ValuesAndStartOffsets {
  const hxArray* values;
  const hxArray* offsets;

  /// -1 if "StartOffsets" has no elements.
  std::int64_t length() const {
    return static_cast<std::int64_t>(hxGetNumberOfElements(offsets)) - 1;
  }
};

/// Reads element 0 of a struct. Errors: those of `VerifyHxStructContains` for "Values", then for
/// "StartOffsets"; then TypeError if either is complex or sparse.
::arrow::Result<ValuesAndStartOffsets> ReadValuesAndStartOffsets(const hxArray* s);

/// A copy of uint64 offsets as 32-bit offsets, in memory of Arrow's default pool. Offsets of
/// 2147483647 (the maximum of int32) or more are Invalid "Cannot construct arrow::StringArray or
/// arrow::BinaryArray with O offset."
::arrow::Result<std::shared_ptr<::arrow::Buffer>> NarrowOffsets(const hxArray* offsets);

/// An `ArrowArray` with 64-bit offsets over the memory of both fields. O(1).
template <class ArrowArray>
ArrayResult borrow_large_array(const hxArray* s, std::shared_ptr<::arrow::Buffer> validity) {
  ARROW_ASSIGN_OR_RAISE(const auto fields, ReadValuesAndStartOffsets(s));
  return std::make_shared<ArrowArray>(fields.length(), borrow_elements(fields.offsets),
                                      borrow_elements(fields.values), std::move(validity),
                                      ::arrow::kUnknownNullCount, 0);
}

/// An `ArrowArray` with 32-bit offsets over the memory of "Values". The offsets are copied.
template <class ArrowArray>
ArrayResult borrow_narrow_array(const hxArray* s, std::shared_ptr<::arrow::Buffer> validity) {
  ARROW_ASSIGN_OR_RAISE(const auto fields, ReadValuesAndStartOffsets(s));
  ARROW_ASSIGN_OR_RAISE(auto offsets, NarrowOffsets(fields.offsets));
  return std::make_shared<ArrowArray>(fields.length(), std::move(offsets),
                                      borrow_elements(fields.values), std::move(validity),
                                      ::arrow::kUnknownNullCount, 0);
}

}  // namespace numera::io::arrow::core
