/// \file
/// Literals: any text is refused by the one exception or gives a value that comes back, and any
/// value comes back from its literal and from the tree that is printed of it.

#include <limits>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "fuzz/byte_source.h"
#include "fuzz/claims.h"
#include "fuzz/fuzzer.h"
#include "fuzz/host_tree.h"
#include "numera/extras/inspect/inspect.h"
#include "numera/extras/inspect/literal.h"

namespace numera::fuzz {
namespace {

constexpr size_t kUnlimited = std::numeric_limits<size_t>::max();
constexpr extras::PrintOptions kWhole = {.max_depth = kUnlimited,
                                         .max_elements = kUnlimited,
                                         .max_width = kUnlimited,
                                         .max_lines = kUnlimited};

/// What our own texts give; a refusal is a finding.
hxArrayPtr parse_own(const std::string& text) {
  try {
    return extras::parse(text);
  } catch (const std::invalid_argument& error) {
    refute("what is written is read", error.what() + ("\n" + text));
  }
}

void check_comes_back(const hxArray* value, const std::string& text) {
  const hxArrayPtr back = parse_own(text);
  const auto difference = extras::first_difference(back.get(), value);
  claim(!difference, "a value comes back as it was", [&] { return *difference + "\n" + text; });
}

void check_value(const HostTree& tree) {
  extras::print(tree.root.get(),
                {.max_depth = 3, .max_elements = 2, .max_width = 30, .max_lines = 9});
  const std::string printed = extras::print(tree.root.get(), kWhole);
  if (tree.has_sparse) return;
  const std::string literal = extras::literal(tree.root.get());
  if (tree.has_odd_nan) {
    parse_own(literal);
    parse_own(printed);
    return;
  }
  check_comes_back(tree.root.get(), literal);
  if (tree.root != nullptr) check_comes_back(tree.root.get(), printed);
}

void check_text(std::string_view text) {
  hxArrayPtr value;
  try {
    value = extras::parse(text);
  } catch (const std::invalid_argument&) {
    return;
  }
  check_comes_back(value.get(), extras::literal(value.get()));
}

}  // namespace

/// An input that begins with a zero byte is a value, any other a text.
void try_input(std::span<const std::uint8_t> input) {
  if (!input.empty() && input[0] == 0) {
    ByteSource source(input.subspan(1));
    check_value(read_host_tree(source));
  } else {
    check_text({reinterpret_cast<const char*>(input.data()), input.size()});
  }
}

}  // namespace numera::fuzz
