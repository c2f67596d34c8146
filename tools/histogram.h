#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace numera::tools {

/// How many numbers lie in each twelfth of a range. Its upper end is in the last one.
using Histogram = std::array<std::int64_t, 12>;

/// How numbers are spread between two bounds. Infinite numbers are in no bucket.
Histogram histogram(const std::vector<double>& numbers, double least, double most);

/// The histogram in 12 characters. "▁" is a bucket without numbers; the others are as high as their
/// share of the fullest bucket. "" if there is no number.
std::string bars(const Histogram& counts);

}  // namespace numera::tools
