#pragma once

/// \file
/// Values in readable form and the host arrays that they are made of.

#include <arrow/array/array_base.h>
#include <arrow/result.h>

#include <cstddef>
#include <memory>

#include "numera/extras/encode/located.h"
#include "numera/format/names.h"
#include "numera/host/array.h"

namespace numera::extras::encoding {

/// What the fields of a readable envelope hold.
struct ReadableValue {
  const char* type;  ///< "Type", of static life
  hxArrayPtr data;
  size_t length = 0;
  hxArrayPtr valid = nullptr;  ///< a uint8 array of bits; null: every element is valid
  const char* kind = format::kArrayKind;
  bool is_valid = true;  ///< false: only Arrow's full validation can tell
};

/// An envelope, or a cell of envelopes, with the number of its elements.
struct Envelope {
  hxArrayPtr value;
  size_t length = 0;
};

/// Puts the fields into element `index` of a struct array that has them.
void store(hxArray* envelopes, size_t index, ReadableValue readable);
/// The 1-by-1 envelope of the value.
Envelope make_envelope(ReadableValue readable);

/// Element `index` of readable envelopes as the core reads it. A failure names `origin`.
::arrow::Result<std::shared_ptr<::arrow::Array>> borrow(const hxArray* envelopes, size_t index,
                                                        const Located& origin);

/// What Arrow's full validation says of this element.
::arrow::Status validate(const hxArray* envelopes, size_t index, const Located& origin);

}  // namespace numera::extras::encoding
