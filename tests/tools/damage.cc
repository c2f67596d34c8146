#include "tests/tools/damage.h"

#include <algorithm>
#include <cstdlib>
#include <random>
#include <string_view>

namespace numera::testing {
namespace {

/// The same numbers on every machine. The distributions of the standard library do not promise
/// that.
class Dice {
 public:
  explicit Dice(std::uint64_t seed) : engine_(seed) {}

  std::size_t below(std::size_t limit) { return engine_() % limit; }

 private:
  std::mt19937_64 engine_;
};

void flip(std::string& content, Dice& dice) {
  const std::size_t count = 1 + dice.below(4);
  for (std::size_t i = 0; i < count; ++i) {
    const auto bits = static_cast<char>(1 + dice.below(255));
    char& byte = content[dice.below(content.size())];
    byte = static_cast<char>(byte ^ bits);
  }
}

void cut(std::string& content, Dice& dice) {
  const std::size_t from = dice.below(content.size());
  const bool to_the_end = dice.below(2) == 0;
  content.erase(from, to_the_end ? std::string::npos : 1 + dice.below(64));
}

void swap(std::string& content, Dice& dice) {
  const std::size_t length = 1 + dice.below(std::min<std::size_t>(64, content.size() / 2));
  const std::size_t first = dice.below(content.size() - 2 * length + 1);
  const std::size_t second = first + length + dice.below(content.size() - first - 2 * length + 1);
  const auto at = [&](std::size_t place) {
    return content.begin() + static_cast<std::ptrdiff_t>(place);
  };
  std::swap_ranges(at(first), at(first + length), at(second));
}

}  // namespace

std::string damaged(std::string content, std::uint64_t seed) {
  Dice dice(seed);
  constexpr void (*kDamages[])(std::string&, Dice&) = {flip, cut, swap};
  kDamages[dice.below(std::size(kDamages))](content, dice);
  return content;
}

std::uint64_t rounds(std::uint64_t sample, std::uint64_t whole) {
  const char* const asked = std::getenv("NUMERA_TORTURE");
  return asked != nullptr && std::string_view(asked) == "whole" ? whole : sample;
}

}  // namespace numera::testing
