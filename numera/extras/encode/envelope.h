#pragma once

/// \file
/// Encoded arrays of every kind.

#include <arrow/result.h>

#include <cstddef>

#include "numera/extras/encode/located.h"
#include "numera/extras/encode/readable.h"

namespace numera::extras::encoding {

/// Element `index` of a struct array of encoded arrays, which lies within `outer_levels` nested
/// values. The result is still to be checked by `checked_envelope`.
::arrow::Result<ReadableValue> read_element(const Located& envelopes, size_t index,
                                            int outer_levels);

/// The 1-by-1 envelope of a value, validated where that is still to be done. A failure names
/// `origin`.
::arrow::Result<Envelope> checked_envelope(ReadableValue readable, const Located& origin);

/// The envelope of a child, checked with all that is in it.
::arrow::Result<Envelope> read_child(const Located& child, int outer_levels);

/// The bits of element `index` of "Valid" for `length` elements; null where it has none.
::arrow::Result<hxArrayPtr> read_validity(const Located& valid, size_t index, size_t length);

}  // namespace numera::extras::encoding
