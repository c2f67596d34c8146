#pragma once

/// \file
/// Files with random damage.

#include <cstdint>
#include <string>

namespace numera::testing {

/// `content` with bytes flipped, cut out or swapped. The same `seed` does the same damage.
std::string damaged(std::string content, std::uint64_t seed);

/// The number of rounds: `sample`, or `whole` if the environment variable `NUMERA_TORTURE` is
/// "whole".
std::uint64_t rounds(std::uint64_t sample, std::uint64_t whole);

}  // namespace numera::testing
