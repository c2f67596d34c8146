/// \file
/// Texts of a hundred megabytes and columns of ten million texts. They run on the plain in-memory
/// host, because recording ten million calls takes longer than the calls.

#include <gtest/gtest.h>

#include "numera/core/to_numera.h"
#include "numera/unicode/convert_utf16_to_utf8.h"
#include "tests/support/host_builder.h"
#include "tests/support/offset_arrays.h"
#include "tests/support/results.h"

namespace numera::io::arrow {
namespace {

using namespace numera::testing;
using namespace std::string_literals;

hxArrayPtr DataOf(const std::shared_ptr<::arrow::Array>& array) {
  return hxSharedCopy(hxGetField(ValueOf(core::to_numera(array)).get(), 0, "Data"));
}

struct Utf8 {
  hxArrayPtr bytes;
  hxArrayPtr offsets;
};

Utf8 Convert(const hxArrayPtr& text) {
  hxArrayPtr outputs[2];
  const hxArray* inputs[] = {text.get()};
  unicode::convertUTF16ToUTF8(2, outputs, 1, inputs);
  return {std::move(outputs[0]), std::move(outputs[1])};
}

TEST(TextToHost, TakesTenMillionTextsOfOneByte) {
  constexpr int kCount = 10'000'000;
  std::vector<std::int32_t> offsets(kCount + 1);
  std::string bytes(kCount, 'a');
  for (int i = 0; i <= kCount; ++i) offsets[static_cast<size_t>(i)] = i;
  for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>('a' + i % 26);

  const hxArrayPtr data = DataOf(NarrowArray(::arrow::utf8(), bytes, offsets));

  const hxStringArray& strings = hxGetStringArray(data.get());
  ASSERT_EQ(strings.size(), size_t{kCount});
  for (const size_t i : {size_t{0}, size_t{25}, size_t{26}, size_t{9'999'999}}) {
    EXPECT_EQ(strings.element(i), std::u16string(1, static_cast<char16_t>(u'a' + i % 26))) << i;
  }
}

TEST(TextToHost, TakesATextOfAHundredMegabytes) {
  constexpr size_t kCount = 20'000'000;
  std::string bytes;
  bytes.reserve(5 * kCount);
  for (size_t i = 0; i < kCount; ++i) bytes += "é漢";

  const hxArrayPtr data = DataOf(
      LargeArray(::arrow::large_utf8(), bytes, {0, static_cast<std::int64_t>(bytes.size())}));

  const auto text = hxGetStringArray(data.get()).element(0);
  ASSERT_EQ(text->size(), 2 * kCount);
  EXPECT_EQ(text->substr(0, 4), u"é漢é漢");
  EXPECT_EQ(text->substr(2 * kCount - 3), u"漢é漢");
}

TEST(TextToUtf8, TakesTenMillionTextsOfOneUnit) {
  constexpr size_t kRows = 10'000'000;
  std::u16string units(kRows, u'x');
  units[kRows - 1] = u'é';

  const Utf8 utf8 = Convert(CharMatrix({kRows, 1}, units));

  ASSERT_EQ(hxGetNumberOfElements(utf8.bytes.get()), kRows + 2);
  ASSERT_EQ(hxGetNumberOfElements(utf8.offsets.get()), kRows + 1);
  const auto* const bytes = static_cast<const char*>(hxGetData(utf8.bytes.get()));
  EXPECT_EQ(std::string(bytes + kRows - 2, 4), "xé\0"s);
  const auto* const offsets = static_cast<const std::uint64_t*>(hxGetData(utf8.offsets.get()));
  EXPECT_EQ(offsets[kRows - 1], kRows - 1);
  EXPECT_EQ(offsets[kRows], kRows + 1);
}

TEST(TextToUtf8, TakesATextOfAHundredMegabytes) {
  constexpr size_t kUnits = 50'000'000;
  const Utf8 utf8 = Convert(CharMatrix({1, kUnits}, std::u16string(kUnits, u'é')));

  ASSERT_EQ(hxGetNumberOfElements(utf8.bytes.get()), 2 * kUnits + 1);
  const auto* const bytes = static_cast<const char*>(hxGetData(utf8.bytes.get()));
  EXPECT_EQ(std::string(bytes + 2 * kUnits - 4, 5), "éé\0"s);
}

}  // namespace
}  // namespace numera::io::arrow
