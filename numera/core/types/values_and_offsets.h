#pragma once

/// \file
/// Elements of any length as the host encodes them, the form that texts and byte strings share: a
/// struct with the fields "Values" (uint8, the bytes of all elements back to back) and
/// "StartOffsets" (uint64, N + 1 zero-based byte positions). Bytes behind the last offset are
/// allowed; no offset is looked at where it need not be copied.

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

  /// -1 where "StartOffsets" has no elements at all.
  std::int64_t length() const {
    return static_cast<std::int64_t>(hxGetNumberOfElements(offsets)) - 1;
  }
};

/// Reads element 0 of a struct. Errors: what `VerifyHxStructContains` says of "Values", then of
/// "StartOffsets"; then TypeError for a complex or sparse one.
::arrow::Result<ValuesAndStartOffsets> ReadValuesAndStartOffsets(const hxArray* s);

/// A copy of uint64 offsets as 32-bit ones, in memory of Arrow's default pool. Invalid "Cannot
/// construct arrow::StringArray or arrow::BinaryArray with O offset." from 2147483647 on: the
/// greatest 32-bit offset is refused as well.
::arrow::Result<std::shared_ptr<::arrow::Buffer>> NarrowOffsets(const hxArray* offsets);

/// An `ArrowArray` with 64-bit offsets over the memory of both fields. O(1).
template <class ArrowArray>
ArrayResult borrow_large_array(const hxArray* s, std::shared_ptr<::arrow::Buffer> validity) {
  ARROW_ASSIGN_OR_RAISE(const auto fields, ReadValuesAndStartOffsets(s));
  return std::make_shared<ArrowArray>(fields.length(), borrow_elements(fields.offsets),
                                      borrow_elements(fields.values), std::move(validity),
                                      ::arrow::kUnknownNullCount, 0);
}

/// An `ArrowArray` with 32-bit offsets over the memory of "Values"; the offsets are copied.
template <class ArrowArray>
ArrayResult borrow_narrow_array(const hxArray* s, std::shared_ptr<::arrow::Buffer> validity) {
  ARROW_ASSIGN_OR_RAISE(const auto fields, ReadValuesAndStartOffsets(s));
  ARROW_ASSIGN_OR_RAISE(auto offsets, NarrowOffsets(fields.offsets));
  return std::make_shared<ArrowArray>(fields.length(), std::move(offsets),
                                      borrow_elements(fields.values), std::move(validity),
                                      ::arrow::kUnknownNullCount, 0);
}

}  // namespace numera::io::arrow::core
