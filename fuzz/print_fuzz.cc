/// \file
/// Prints any host value as a tree, within limits and in full.

#include <algorithm>
#include <limits>
#include <span>
#include <string>
#include <string_view>

#include "fuzz/byte_source.h"
#include "fuzz/claims.h"
#include "fuzz/fuzzer.h"
#include "fuzz/host_tree.h"
#include "numera/extras/inspect/inspect.h"

namespace numera::fuzz {
namespace {

constexpr size_t kUnlimited = std::numeric_limits<size_t>::max();
constexpr extras::PrintOptions kWhole = {.max_depth = kUnlimited,
                                         .max_elements = kUnlimited,
                                         .max_width = kUnlimited,
                                         .max_lines = kUnlimited};

constexpr extras::PrintOptions kLimited = {
    .max_depth = 3, .max_elements = 2, .max_width = 30, .max_lines = 9};

size_t line_ends(std::string_view text) {
  return static_cast<size_t>(std::ranges::count(text, '\n'));
}

}  // namespace

void try_input(std::span<const std::uint8_t> input) {
  ByteSource source(input);
  const HostTree tree = read_host_tree(source);
  const std::string whole = extras::print(tree.root.get(), kWhole);
  const std::string limited = extras::print(tree.root.get(), kLimited);
  claim(!whole.empty() && !limited.empty(), "every value is printed");
  claim(!whole.ends_with('\n'), "the last line has no end");
  // One more line may say that lines were left out.
  claim(line_ends(limited) <= kLimited.max_lines, "no more lines than asked for");

  ByteSource again(input);
  const HostTree same = read_host_tree(again);
  claim(extras::print(same.root.get(), kWhole) == whole, "equal values are printed alike");
  if (tree.has_sparse) return;
  const auto difference = extras::first_difference(tree.root.get(), same.root.get());
  claim(!difference, "equal values have no difference", [&] { return *difference; });
}

}  // namespace numera::fuzz
