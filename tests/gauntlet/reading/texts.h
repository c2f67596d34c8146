#pragma once

/// \file
/// Every answer of the conversions towards Arrow, so that a run tells which of them it never saw.

#include <set>
#include <string>
#include <vector>

#include "tests/gauntlet/reading/outcome.h"

namespace numera::gauntlet::reading {

/// The answer in one line: the type of an array, the code and message of a status, the type and
/// text of an exception.
std::string answer_of(const Outcome& outcome);

/// The patterns of answers that none of these has; `*` stands for any text.
std::vector<std::string> answers_missing(const std::set<std::string>& seen);

}  // namespace numera::gauntlet::reading
