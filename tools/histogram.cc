#include "tools/histogram.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace numera::tools {
namespace {

constexpr size_t kBuckets = 12;
constexpr const char* kBars[] = {"▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};

/// Halves do not overflow where the bounds lie as far apart as doubles can.
size_t bucket_of(double number, double least, double most) {
  const double width = most / 2 - least / 2;
  if (!(width > 0)) return 0;
  const double place = (number / 2 - least / 2) / width * static_cast<double>(kBuckets);
  return std::min(static_cast<size_t>(std::max(place, 0.0)), kBuckets - 1);
}

}  // namespace

std::string histogram(const std::vector<double>& numbers, double least, double most) {
  std::array<size_t, kBuckets> counts = {};
  for (const double number : numbers) {
    if (std::isfinite(number)) ++counts[bucket_of(number, least, most)];
  }
  const size_t fullest = *std::ranges::max_element(counts);
  if (fullest == 0) return "";
  std::string text;
  for (const size_t count : counts) {
    text += kBars[(count * (std::size(kBars) - 1) + fullest - 1) / fullest];
  }
  return text;
}

}  // namespace numera::tools
