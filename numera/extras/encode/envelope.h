#pragma once

/// \file
/// Encoded arrays of every kind.

#include <arrow/result.h>

#include <cstddef>

#include "numera/extras/encode/located.h"
#include "numera/extras/encode/readable.h"

namespace numera::extras::encoding {

/// Reads element `index` of a struct array of encoded arrays. The element is inside `outer_levels`
/// nested values. The caller must pass the result to `checked_envelope`.
::arrow::Result<ReadableValue> read_element(const Located& envelopes, size_t index,
                                            int outer_levels);

/// Makes the 1-by-1 envelope of a value, and validates it unless it is known to be valid. Error
/// messages start with the path of `origin`.
::arrow::Result<Envelope> checked_envelope(ReadableValue readable, const Located& origin);

/// Makes the readable envelope of a child, and checks the child with everything in it.
::arrow::Result<Envelope> read_child(const Located& child, int outer_levels);

/// The bitmap in element `index` of "Valid", with at least `length` bits. Null if it has no bytes:
/// then all elements are valid.
::arrow::Result<hxArrayPtr> read_validity(const Located& valid, size_t index, size_t length);

}  // namespace numera::extras::encoding
