#pragma once

#include "tests/gauntlet/reading/draft.h"
#include "tests/gauntlet/reading/random.h"

namespace numera::gauntlet::reading {

/// Damages nothing, one place, a few places, or half of the slots of one struct or cell array. So
/// any two failures meet in some value, and the test sees which of them wins.
void damage(Random& random, DraftPtr& value);

}  // namespace numera::gauntlet::reading
