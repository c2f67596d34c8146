#include <gtest/gtest.h>

#include <random>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "numera/extras/inspect/literal.h"
#include "numera/host/memory.h"
#include "tests/support/host_matchers.h"

namespace numera::testing {
namespace {

constexpr std::string_view kSeeds[] = {
    R"(struct(ArrowType="array", Type="double", Valid=struct(ArrowType="buffer", Values=uint8 0x1 [])"
    R"(, Length=double 1x1 [3]), Data=double 3x1 [1 2.5 NaN]))",
    R"(cell 2x2 {"a", "c\u00e9\n"; logical 1x2 [true false], complex single 1x1 [1-2i]})",
    R"(struct 2x1 {(Name="Ada", "two words"=<empty>), (Name="Jo", "two words"=cell {})})",
    R"(object "Point" 1x2x1 {(X=string 2x2 ["a" <missing>; "b" "ü"]), (X=char 2x2x2 ["ac" "bd" "eg" )"
    R"("fh"])})",
    "struct 0x1(Name, Age)",
    "cell 2x2\n  {0,0}: double 1x1 [1]\n  {1,0}: cell 0x1\n  {0,1}: struct 2x1\n    (0):\n"
    "      A: char 1x1 \"x\"\n    (1):\n      A: <empty>\n  {1,1}: <empty>",
    "struct 1x1\n  A: object \"Point\" 0x1\n    X:\n  \"b c\": int64 2x3 [1 -2 3; 4 5 -6]\n",
};

constexpr std::string_view kPieces[] = {
    "[",      "]",      "(",    ")",        "{",           "}",   ";",    ",",   "\"",      "\\",
    "\n",     " ",      "  ",   "=",        ":",           "0",   "1",    "9",   "x",       "-",
    "+",      "i",      ".",    "e",        "\0",          "<",   "\xFF", "NaN", "<empty>", "cell",
    "struct", "double", "char", "complex ", "99999999999", "\\u", "\\x"};

std::string mutated(std::string text, std::mt19937& random) {
  const auto below = [&](size_t limit) { return random() % limit; };
  for (size_t changes = 1 + below(4); changes > 0; --changes) {
    const size_t at = below(text.size() + 1);
    const size_t length = below(3);
    const std::string_view piece = kPieces[below(std::size(kPieces))];
    const std::string copied = text.substr(below(text.size() + 1), below(12));
    switch (below(4)) {
      case 0:
        text.erase(at, length);
        break;
      case 1:
        text.insert(at, piece);
        break;
      case 2:
        text.replace(at, length, piece);
        break;
      default:
        text.insert(at, copied);
        break;
    }
  }
  return text;
}

// Values without fields.
bool is_literal_itself(std::string_view beginning) {
  for (std::string_view known : {"struct", "struct ", "struct 0x1", "struct 1x1"}) {
    if (beginning == known) return true;
  }
  return beginning == "object \"Point\"" || beginning == "object \"Point\" ";
}

// Whatever the text, it is refused by the one exception, or it gives a value whose literal gives
// the same value again.
TEST(ParseMutation, IsRefusedOrGivesAValueThatComesBack) {
  std::mt19937 random(20260);
  const size_t before = host::memory::LiveArrays();
  size_t read = 0;
  for (int round = 0; round < 20'000; ++round) {
    const std::string text = mutated(std::string(kSeeds[random() % std::size(kSeeds)]), random);
    SCOPED_TRACE(text);
    try {
      const hxArrayPtr value = extras::parse(text);
      ++read;
      const std::string written = extras::literal(value.get());
      ASSERT_TRUE(SameHostValue(extras::parse(written).get(), value.get())) << written;
    } catch (const std::invalid_argument&) {
    }
  }
  EXPECT_GT(read, 500u) << "too few mutations are literals for this test to say much";
  EXPECT_EQ(host::memory::LiveArrays(), before);
}

TEST(ParseMutation, RefusesTheBeginningOfALiteral) {
  for (const std::string_view seed : kSeeds) {
    const std::string_view first_line = seed.substr(0, seed.find('\n'));
    for (size_t length = 0; length < first_line.size(); ++length) {
      const std::string_view beginning = seed.substr(0, length);
      if (is_literal_itself(beginning)) continue;
      SCOPED_TRACE(beginning);
      EXPECT_THROW(extras::parse(beginning), std::invalid_argument);
    }
  }
}

}  // namespace
}  // namespace numera::testing
