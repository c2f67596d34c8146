#include "numera/core/util/text.h"

#include <gtest/gtest.h>

#include <string>

#include "numera/host/text_codec.h"
#include "tests/support/host_builder.h"

namespace numera::io::arrow::core::util {
namespace {

using namespace numera::testing;
using std::string_literals::operator""s;

TEST(HxArrayToString, GivesTheTextOfACharArray) {
  EXPECT_EQ(HxArrayToString(Char("list_array").get()), "list_array");
}

TEST(HxArrayToString, GivesUtf8) {
  EXPECT_EQ(HxArrayToString(Char(u"\u00e9\u20ac\U0001F600").get()),
            "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");
}

TEST(HxArrayToString, KeepsNul) {
  EXPECT_EQ(HxArrayToString(hxCreateCharArray("a\0b", 3).get()), "a\0b"s);
}

TEST(HxArrayToString, ReadsACharMatrixInStorageOrder) {
  EXPECT_EQ(HxArrayToString(CharMatrix({2, 2}, u"abcd").get()), "abcd");
}

TEST(HxArrayToString, GivesTheEmptyTextForEveryOtherClass) {
  const hxArrayPtr others[] = {
      Column<std::uint8_t>({97}), Strings({u"a"}), Scalar(97.0), Logical({true}),
      Cell({Char("a")}),          Struct({}),      Char(""),     CharMatrix({0, 0}, u""),
  };
  for (const hxArrayPtr& other : others) {
    SCOPED_TRACE(hxGetClassName(other.get()));
    EXPECT_EQ(HxArrayToString(other.get()), "");
  }
}

TEST(HxArrayToString, GivesTheEmptyTextForNull) { EXPECT_EQ(HxArrayToString(nullptr), ""); }

TEST(HxArrayToString, LetsTheCodecRefuseAnUnpairedSurrogate) {
  const char16_t unpaired[] = {u'a', 0xD800};
  const hxArrayPtr value = Char(std::u16string_view(unpaired, 2));
  EXPECT_THROW(HxArrayToString(value.get()), hxCodecError);
}

}  // namespace
}  // namespace numera::io::arrow::core::util
