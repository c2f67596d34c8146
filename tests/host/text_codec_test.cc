#include "numera/host/text_codec.h"

#include <stdexcept>
#include <string>
#include <string_view>

#include "tests/host/host_test_support.h"

namespace numera::host::memory {
namespace {

std::u16string decode(std::string_view text) { return hxUTF8ToUTF16("UTF-8").convert(text); }
std::string encode(std::u16string_view text) {
  return hxUTF16ToUTF8("UTF-8").convert(text.data(), text.size());
}

struct BadBytes {
  std::string text;
  const char* error;
};

const BadBytes kBadBytes[] = {
    {"\x80", "Invalid lead byte at byte 0."},
    {"ab\xBFz", "Invalid lead byte at byte 2."},
    {"\xF8\x88\x80\x80\x80", "Invalid lead byte at byte 0."},
    {"\xFE", "Invalid lead byte at byte 0."},
    {"\xFF", "Invalid lead byte at byte 0."},
    {"\xC3", "Truncated sequence at byte 0."},
    {"a\xC3", "Truncated sequence at byte 1."},
    {"\xC3(", "Truncated sequence at byte 0."},
    {"\xE2\x82", "Truncated sequence at byte 0."},
    {"\xE2(\xA1", "Truncated sequence at byte 0."},
    {"\xE2\x82(", "Truncated sequence at byte 0."},
    {"\xF0\x9F\x98", "Truncated sequence at byte 0."},
    {"\xF0\x9F(\x80", "Truncated sequence at byte 0."},
    {"\xE2\x82\xAC\xE2\x82", "Truncated sequence at byte 3."},
    {"\xC0\x80", "Overlong sequence at byte 0."},
    {"abc\xC1\xBF", "Overlong sequence at byte 3."},
    {"\xE0\x80\x80", "Overlong sequence at byte 0."},
    {"\xE0\x9F\xBF", "Overlong sequence at byte 0."},
    {"\xF0\x80\x80\x80", "Overlong sequence at byte 0."},
    {"\xF0\x8F\xBF\xBF", "Overlong sequence at byte 0."},
    {"\xED\xA0\x80", "Surrogate code point at byte 0."},
    {"\xED\xBF\xBF", "Surrogate code point at byte 0."},
    {"x\xED\xA0\x81\xED\xB0\x80", "Surrogate code point at byte 1."},
    {"\xF4\x90\x80\x80", "Code point above U+10FFFF at byte 0."},
    {"\xF5\x80\x80\x80", "Code point above U+10FFFF at byte 0."},
    {"\xF7\xBF\xBF\xBF", "Code point above U+10FFFF at byte 0."},
    {"sixteen letters!sixteen letters!\xC3", "Truncated sequence at byte 32."},
};

TEST(TextCodec, SaysWhatIsWrongWithUtf8AndWhere) {
  for (const BadBytes& row : kBadBytes) {
    SCOPED_TRACE(row.error);
    EXPECT_EQ(thrown<hxCodecError>([&] { decode(row.text); }), row.error);
  }
}

struct BadUnits {
  std::u16string text;
  const char* error;
};

const BadUnits kBadUnits[] = {
    {u"\xD800", "Unpaired high surrogate at code unit 0."},
    {u"ab\xDBFF", "Unpaired high surrogate at code unit 2."},
    {u"a\xD800z", "Unpaired high surrogate at code unit 1."},
    {u"\xD800\xD800\xDC00", "Unpaired high surrogate at code unit 0."},
    {u"\xDC00", "Unpaired low surrogate at code unit 0."},
    {u"\xD800\xDC00\xDFFF", "Unpaired low surrogate at code unit 2."},
    {u"\xDC00\xD800", "Unpaired low surrogate at code unit 0."},
};

TEST(TextCodec, SaysWhatIsWrongWithUtf16AndWhere) {
  for (const BadUnits& row : kBadUnits) {
    SCOPED_TRACE(row.error);
    EXPECT_EQ(thrown<hxCodecError>([&] { encode(row.text); }), row.error);
    const hxArrayPtr array = hxCreateCharArray(row.text.data(), row.text.size());
    EXPECT_EQ(thrown<hxCodecError>([&] { hxGetString(array.get()); }), row.error);
  }
}

TEST(TextCodec, KnowsNoOtherEncoding) {
  for (const char* const encoding : {"utf-8", "UTF-16", "", static_cast<const char*>(nullptr)}) {
    EXPECT_EQ(thrown<std::invalid_argument>([&] { hxUTF8ToUTF16 codec(encoding); }),
              "Encoding is not UTF-8.");
    EXPECT_EQ(thrown<std::invalid_argument>([&] { hxUTF16ToUTF8 codec(encoding); }),
              "Encoding is not UTF-8.");
  }
}

}  // namespace
}  // namespace numera::host::memory
