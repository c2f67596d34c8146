#pragma once

#include "tests/gauntlet/reading/draft.h"
#include "tests/gauntlet/reading/random.h"

namespace numera::gauntlet::reading {

/// Damages nothing, one place, two places, or most fields of one struct, so that every pair of
/// failures comes to be in one value.
void damage(Random& random, DraftPtr& value);

}  // namespace numera::gauntlet::reading
