#pragma once

/// \file
/// Random values that the conversions towards Arrow accept, except that now and then a unit, a
/// class or a size is wrong.

#include <cstddef>

#include "tests/gauntlet/reading/draft.h"
#include "tests/gauntlet/reading/random.h"

namespace numera::gauntlet::reading {

/// Random dimensions for `count` elements.
Dims any_dims(Random& random, size_t count);

/// Numbers with random bits.
DraftPtr any_numbers(Random& random, hxClassID class_id, size_t count);

/// A small value of any class.
DraftPtr any_value(Random& random);

/// A buffer envelope of `size` bytes.
DraftPtr any_buffer(Random& random, size_t size);

/// An encoded array of any type, with up to `depth` nested lists and structs.
DraftPtr any_envelope(Random& random, size_t length, int depth);

/// A struct array of encoded arrays.
DraftPtr any_envelopes(Random& random, size_t count, size_t length, int depth);

/// One encoded array inside `levels` nested lists and structs.
DraftPtr deep_envelope(Random& random, size_t levels);

DraftPtr any_table(Random& random);

}  // namespace numera::gauntlet::reading
