#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>

#include "tests/gauntlet/making.h"

namespace numera::gauntlet::reading {

/// Pseudo-random numbers from a seed, the same on every machine.
class Random {
 public:
  explicit Random(std::uint64_t seed) : seed_(seed) {}

  std::uint64_t next() { return mix(seed_, count_++); }
  /// A number from 0 to `end` - 1.
  size_t below(size_t end) { return static_cast<size_t>(next() % end); }
  /// True with probability 1 / `many`.
  bool once_in(size_t many) { return below(many) == 0; }

  template <class Range>
  const auto& pick(const Range& range) {
    return *(std::begin(range) + static_cast<std::ptrdiff_t>(below(std::size(range))));
  }

 private:
  std::uint64_t seed_;
  std::uint64_t count_ = 0;
};

}  // namespace numera::gauntlet::reading
