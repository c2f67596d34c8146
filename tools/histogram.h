#pragma once

#include <string>
#include <vector>

namespace numera::tools {

/// How numbers are spread between two bounds, in 12 characters. "▁" is a bucket without numbers;
/// the others are as high as their share of the fullest bucket. Infinite numbers are in no bucket.
/// "" if there is no other number.
std::string histogram(const std::vector<double>& numbers, double least, double most);

}  // namespace numera::tools
