#pragma once

/// \file
/// Random values as the conversions towards Arrow take them, but for a unit, a class or a size now
/// and then.

#include <cstddef>

#include "tests/gauntlet/reading/draft.h"
#include "tests/gauntlet/reading/random.h"

namespace numera::gauntlet::reading {

/// Sizes of so many elements.
Dims any_dims(Random& random, size_t count);

/// Numbers of any bits.
DraftPtr any_numbers(Random& random, hxClassID class_id, size_t count);

/// A small value of any class.
DraftPtr any_value(Random& random);

/// A buffer envelope of so many bytes.
DraftPtr any_buffer(Random& random, size_t size);

/// An encoded array of any type; up to `depth` lists and structs in one another.
DraftPtr any_envelope(Random& random, size_t length, int depth);

/// A struct array of encoded arrays.
DraftPtr any_envelopes(Random& random, size_t count, size_t length, int depth);

/// Lists and structs in one another, `levels` of them around one encoded array.
DraftPtr deep_envelope(Random& random, size_t levels);

DraftPtr any_table(Random& random);

}  // namespace numera::gauntlet::reading
