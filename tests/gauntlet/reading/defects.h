#pragma once

#include "tests/gauntlet/reading/draft.h"
#include "tests/gauntlet/reading/random.h"

namespace numera::gauntlet::reading {

/// Damages nothing, one place, a few places, or half of what one struct or cell array holds, so
/// that every two failures come to be in one value: which of them wins is part of the answer.
void damage(Random& random, DraftPtr& value);

}  // namespace numera::gauntlet::reading
