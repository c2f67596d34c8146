#include "tools/histogram.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <tuple>

namespace numera::tools {
namespace {

constexpr size_t kBuckets = std::tuple_size_v<Histogram>;
constexpr const char* kBars[] = {"▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};

/// Halves do not overflow where the bounds lie as far apart as doubles can.
size_t bucket_of(double number, double least, double most) {
  const double width = most / 2 - least / 2;
  if (!(width > 0)) return 0;
  const double place = (number / 2 - least / 2) / width * static_cast<double>(kBuckets);
  return std::min(static_cast<size_t>(std::max(place, 0.0)), kBuckets - 1);
}

}  // namespace

Histogram histogram(const std::vector<double>& numbers, double least, double most) {
  Histogram counts = {};
  for (const double number : numbers) {
    if (std::isfinite(number)) ++counts[bucket_of(number, least, most)];
  }
  return counts;
}

std::string bars(const Histogram& counts) {
  const std::int64_t fullest = *std::ranges::max_element(counts);
  if (fullest == 0) return "";
  std::string text;
  for (const std::int64_t count : counts) {
    text += kBars[(count * (std::ssize(kBars) - 1) + fullest - 1) / fullest];
  }
  return text;
}

}  // namespace numera::tools
