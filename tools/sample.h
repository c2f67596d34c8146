#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <random>
#include <utility>
#include <vector>

namespace numera::tools {

/// All values while they are few, then a random sample of them: each has the same chance to be in
/// it. The same values give the same sample.
template <typename Value>
class Sample {
 public:
  /// Holds at most so many values, at least one.
  explicit Sample(size_t most) : most_(most) {}

  void add(Value value) {
    ++seen_;
    if (held_.size() < most_) {
      held_.push_back(std::move(value));
      return;
    }
    const std::uint64_t place = dice_() % seen_;
    if (place < most_) held_[place] = std::move(value);
  }

  /// Whether values are missing in it.
  bool is_partial() const { return seen_ > held_.size(); }

  template <typename Less>
  std::vector<Value> sorted(const Less& less) const {
    std::vector<Value> values = held_;
    std::sort(values.begin(), values.end(), less);
    return values;
  }

 private:
  size_t most_;
  std::uint64_t seen_ = 0;
  std::vector<Value> held_;
  std::mt19937_64 dice_{1};  // NOLINT(bugprone-random-generator-seed): the same sample every time
};

/// The smallest of the sorted values that so many percent of them do not exceed. There is one.
template <typename Value>
const Value& quantile(const std::vector<Value>& sorted, size_t percent) {
  return sorted[std::max<size_t>((percent * sorted.size() + 99) / 100, 1) - 1];
}

}  // namespace numera::tools
