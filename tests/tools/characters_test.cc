#include "tools/characters.h"

#include <gtest/gtest.h>

#include <utility>

namespace numera::testing {
namespace {

TEST(Characters, TakeACellEachUnlessTheyAreWideOrCombine) {
  const std::pair<const char*, size_t> cases[] = {
      {"", 0},          {"abc", 3},      {"äöü", 3},
      {"a\xCC\x88", 1},  // a and a diaeresis
      {"東京", 4},      {"한국", 4},     {"ﾊﾝｶｸ", 4},
      {"😀", 2},        {"\xC2\xA0", 1}, {"e\xE2\x80\x8D", 1},  // a joiner of width 0
      {"Ünï", 3},       {"ไทย", 3}};
  for (const auto& [text, width] : cases) EXPECT_EQ(tools::width_of(text), width) << text;
}

TEST(Characters, ThatDoNotFitAreCutAtAWholeCharacter) {
  struct Case {
    const char* text;
    size_t width;
    const char* fitted;
  };
  const Case cases[] = {{"abc", 3, "abc"},
                        {"abcd", 3, "ab…"},
                        {"äöüß", 3, "äö…"},
                        {"東京都", 6, "東京都"},
                        {"東京都", 5, "東京…"},
                        {"東京都", 4, "東…"},
                        {"abc", 1, "…"},
                        {"", 0, ""},
                        {"a\tb\x1b[1m", 20, "a?b?[1m"},
                        {"\xFF\xFE", 5, "??"},
                        {"a\nbc", 3, "a?…"}};
  for (const auto& [text, width, fitted] : cases) {
    EXPECT_EQ(tools::fitted(text, width), fitted) << text;
  }
}

}  // namespace
}  // namespace numera::testing
