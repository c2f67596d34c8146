#include "benchmarks/axes.h"

#include <algorithm>

namespace numera::benchmarks {

std::int64_t base_length(std::int64_t length, bool quick) {
  constexpr std::int64_t kQuickDivisor = 100;
  return quick ? length / kQuickDivisor : length;
}

std::vector<std::int64_t> lengths_beside(std::int64_t base, bool quick) {
  std::vector<std::int64_t> lengths = {1, 10, 1000, 100'000, 10'000'000};
  if (quick) lengths.resize(3);
  std::erase(lengths, base);
  return lengths;
}

std::vector<Variant> variants(std::int64_t length, bool quick) {
  std::vector<Variant> all = {{"", {.length = length}}};
  for (const std::int64_t other : lengths_beside(length, quick)) {
    all.push_back({"/length=" + std::to_string(other), {.length = other}});
  }
  all.push_back({"/nulls=some", {.length = length, .nulls = Nulls::Some}});
  all.push_back({"/nulls=all", {.length = length, .nulls = Nulls::All}});
  for (const std::int64_t chunks : {20, 1000}) {
    all.push_back({"/chunks=" + std::to_string(chunks), {.length = length, .chunks = chunks}});
  }
  all.push_back({"/sliced", {.length = length, .sliced = true}});
  return all;
}

}  // namespace numera::benchmarks
