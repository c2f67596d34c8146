#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_set>

namespace numera::tools {

/// Counts how many different values there are, in bounded memory.
class DistinctValues {
 public:
  /// Holds at most so many values, of so many bytes together.
  DistinctValues(size_t most_values, size_t most_bytes)
      : most_values_(most_values), most_bytes_(most_bytes) {}

  /// The bytes of a value. Equal bytes are equal values.
  void add(std::string_view value);

  /// How many there are, or the bound if there are more.
  size_t count() const { return count_; }
  bool has_more() const { return is_full_; }

 private:
  struct Hash : std::hash<std::string_view> {
    using is_transparent = void;
  };

  size_t most_values_;
  size_t most_bytes_;
  size_t count_ = 0;
  size_t bytes_ = 0;
  bool is_full_ = false;
  std::unordered_set<std::string, Hash, std::equal_to<>> held_;
};

}  // namespace numera::tools
