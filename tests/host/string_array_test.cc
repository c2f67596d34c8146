#include "numera/host/string_array.h"

#include <array>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>

#include "tests/host/host_test_support.h"

namespace numera::host::memory {
namespace {

TEST(StringArray, SaysThatAnIndexIsOutOfRange) {
  const auto strings = hxMakeStringArray(Dims{2, 1});
  const std::string expected = "String index is out of range.";
  EXPECT_EQ(thrown<std::out_of_range>([&] { strings->element(2); }), expected);
  EXPECT_EQ(thrown<std::out_of_range>([&] { strings->set(2, u"a"); }), expected);
  EXPECT_EQ(thrown<std::out_of_range>([&] { strings->set_missing(2); }), expected);
  const std::array<std::int32_t, 2> offsets = {0, 1};
  EXPECT_EQ(thrown<std::out_of_range>([&] {
              strings->assign_utf8(3, offsets, reinterpret_cast<const std::uint8_t*>("a"));
            }),
            expected);
}

TEST(StringArray, IsNotMadeOfNull) {
  EXPECT_EQ(thrown<std::invalid_argument>([] { hxCreateStringArrayFrom(nullptr); }),
            "String array is null.");
}

TEST(StringArray, TakesTheExactRoomForTextsThatFillIt) {
  const auto strings = hxMakeStringArray(Dims{2, 1});
  const std::array<std::int32_t, 3> offsets = {0, 3, 6};
  // One allocation in total, for the arena; none per text.
  FailAllocationAfter(1);
  EXPECT_EQ(
      strings->assign_utf8(0, offsets, reinterpret_cast<const std::uint8_t*>("abc\xE2\x82\xAC")),
      std::nullopt);
  EXPECT_THROW(zeros({1, 1}), std::bad_alloc);
  EXPECT_EQ(texts_of(*strings), Texts({u"abc", u"\u20AC"}));
}

TEST(StringArray, GrowsPastSeveralHugePagesChunkByChunk) {
  constexpr size_t kTexts = 30;
  constexpr size_t kBytes = 300'000;  // per text; together about 17 MiB of code units
  const auto strings = hxMakeStringArray(Dims{kTexts, 1});
  const std::string text(kBytes, 'x');
  const std::array<std::int32_t, 2> offsets = {0, kBytes};
  for (size_t i = 0; i < kTexts; ++i) {
    SCOPED_TRACE(i);
    const auto* const start = reinterpret_cast<const std::uint8_t*>(text.data());
    ASSERT_EQ(strings->assign_utf8(i, offsets, start), std::nullopt);
  }
  EXPECT_EQ(strings->element(0), std::u16string(kBytes, u'x'));
  EXPECT_EQ(strings->element(kTexts - 1), std::u16string(kBytes, u'x'));
}

}  // namespace
}  // namespace numera::host::memory
