#pragma once

/// \file
/// Values in readable form, and functions that make envelopes of them.

#include <arrow/array/array_base.h>
#include <arrow/result.h>

#include <cstddef>
#include <memory>

#include "numera/extras/encode/located.h"
#include "numera/format/names.h"
#include "numera/host/array.h"

namespace numera::extras::encoding {

/// The values of the fields of a readable envelope.
struct ReadableValue {
  const char* type;  ///< "Type"; static lifetime
  hxArrayPtr data;
  size_t length = 0;
  hxArrayPtr valid = nullptr;  ///< a uint8 array of bits; null: every element is valid
  const char* kind = format::kArrayKind;
  bool is_valid = true;  ///< false: unknown, so Arrow's full validation must check it
};

/// An envelope, or a cell of envelopes, with the number of its elements.
struct Envelope {
  hxArrayPtr value;
  size_t length = 0;
};

/// The 1-by-1 envelope of the value.
Envelope make_envelope(ReadableValue readable);

/// Converts a readable envelope with `to_arrow`. The array borrows its memory. Error messages start
/// with the path of `origin`.
::arrow::Result<std::shared_ptr<::arrow::Array>> borrow(const Envelope& envelope,
                                                        const Located& origin);

}  // namespace numera::extras::encoding
