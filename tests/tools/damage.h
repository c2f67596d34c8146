#pragma once

/// \file
/// Files with something wrong at random places.

#include <cstdint>
#include <string>

namespace numera::testing {

/// `content` with bytes flipped, cut off or swapped. The same `seed` does the same damage.
std::string damaged(std::string content, std::uint64_t seed);

/// How often something is tried: a sample, or the whole where the variable `NUMERA_TORTURE` of the
/// environment is "whole".
std::uint64_t rounds(std::uint64_t sample, std::uint64_t whole);

}  // namespace numera::testing
