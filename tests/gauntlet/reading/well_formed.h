#pragma once

/// \file
/// Random values that the conversions towards Arrow accept, except that now and then a unit, a
/// class or a size is wrong.

#include <cstddef>

#include "numera/host/array.h"
#include "tests/gauntlet/reading/random.h"
#include "tests/support/host_builder.h"

namespace numera::gauntlet::reading {

/// Lengths around the borders of bytes in a bitmap.
inline constexpr size_t kLengths[] = {0, 1, 2, 3, 7, 8, 9, 17};

/// Random dimensions for `count` elements.
testing::Dims any_dims(Random& random, size_t count);

/// Numbers with random bits.
hxArrayPtr any_numbers(Random& random, hxClassID class_id, size_t count);

/// A small value of any class.
hxArrayPtr any_value(Random& random);

/// A buffer envelope of `size` bytes.
hxArrayPtr any_buffer(Random& random, size_t size);

/// An encoded array of any type, with up to `depth` nested lists and structs.
hxArrayPtr any_envelope(Random& random, size_t length, int depth);

/// A struct array of encoded arrays.
hxArrayPtr any_envelopes(Random& random, size_t count, size_t length, int depth);

/// One encoded array inside `levels` nested lists and structs.
hxArrayPtr deep_envelope(Random& random, size_t levels);

hxArrayPtr any_table(Random& random);

}  // namespace numera::gauntlet::reading
