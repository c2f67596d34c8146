#pragma once

/// \file
/// Every answer of the conversions towards Arrow, so that a run can report the answers it never
/// saw.

#include <set>
#include <string>
#include <vector>

#include "tests/gauntlet/reading/outcome.h"

namespace numera::gauntlet::reading {

/// The answer in one line: the type of an array, the code and message of a status, or the type and
/// text of an exception.
std::string answer_of(const Outcome& outcome);

/// The patterns of answers that match nothing in `seen`; `*` stands for any text.
std::vector<std::string> answers_missing(const std::set<std::string>& seen);

}  // namespace numera::gauntlet::reading
