/// \file
/// Host values beyond 32 bits to Arrow, and texts of more than four gigabytes to UTF-8.

#include <arrow/api.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "numera/core/to_arrow.h"
#include "numera/core/types/binary.h"
#include "numera/unicode/convert_utf16_to_utf8.h"
#include "tests/support/envelopes.h"
#include "tests/support/results.h"

namespace numera::io::arrow {
namespace {

using namespace numera::testing;
using core::to_arrow;

constexpr size_t kTwoTo31 = size_t{1} << 31;
constexpr size_t kTwoTo32 = size_t{1} << 32;

/// A uint8 column of zeros with the given last element.
hxArrayPtr ZerosAnd(std::uint8_t last, size_t length) {
  hxArrayPtr bytes = hxCreateNumericArray(Dims{length, 1}, hxClassID::UInt8, hxComplexity::Real);
  static_cast<std::uint8_t*>(hxGetData(bytes.get()))[length - 1] = last;
  return bytes;
}

hxArrayPtr Texts(hxArrayPtr bytes, const std::vector<std::uint64_t>& offsets) {
  return ListData(std::move(bytes), Column<std::uint64_t>(offsets));
}

TEST(LargeToArrow, BorrowsMoreThanTwoToThe31Numbers) {
  const hxArrayPtr envelope = Envelope("uint8", ZerosAnd(7, kTwoTo31 + 9));

  const auto array = ValueOf(to_arrow<::arrow::Array>(envelope.get()));

  ASSERT_EQ(array->length(), 2147483657);
  EXPECT_EQ(static_cast<const ::arrow::UInt8Array&>(*array).Value(2147483656), 7);
}

TEST(LargeToArrow, BorrowsMoreThanTwoToThe32Bits) {
  const hxArrayPtr envelope =
      Envelope("logical", BitmapOf(ZerosAnd(0x10, kTwoTo32 / 8 + 1), Scalar(4294967301.0)));

  const auto array = ValueOf(to_arrow<::arrow::Array>(envelope.get()));

  ASSERT_EQ(array->length(), 4294967301);
  const auto& bits = static_cast<const ::arrow::BooleanArray&>(*array);
  EXPECT_TRUE(bits.Value(4294967300));
  EXPECT_FALSE(bits.Value(4294967299));
}

TEST(LargeToArrow, BorrowsTextsBeyondFourGigabytes) {
  const hxArrayPtr envelope =
      Envelope("string", Texts(ZerosAnd('z', kTwoTo32 + 4), {0, kTwoTo32 + 1, kTwoTo32 + 4}));

  const auto array = ValueOf(to_arrow<::arrow::Array>(envelope.get()));

  const auto& texts = static_cast<const ::arrow::LargeStringArray&>(*array);
  ASSERT_EQ(texts.length(), 2);
  EXPECT_EQ(texts.GetView(0).size(), kTwoTo32 + 1);
  EXPECT_EQ(texts.GetView(1), std::string_view("\0\0z", 3));
}

TEST(LargeToArrow, BorrowsTheOffsetsOfAListBeyond32Bits) {
  const hxArrayPtr envelope = ListEnvelope(
      Envelope("logical", BitmapOf(ZerosAnd(0x12, kTwoTo32 / 8 + 1), Scalar(4294967301.0))),
      Column<std::uint64_t>({0, kTwoTo32 + 1, kTwoTo32 + 5}));

  const auto array = ValueOf(to_arrow<::arrow::Array>(envelope.get()));

  const auto& lists = static_cast<const ::arrow::LargeListArray&>(*array);
  ASSERT_EQ(lists.length(), 2);
  EXPECT_EQ(lists.value_offset(1), 4294967297);
  EXPECT_EQ(lists.value_length(0), 4294967297);
  EXPECT_EQ(lists.value_length(1), 4);
  const auto& bits = static_cast<const ::arrow::BooleanArray&>(*lists.values());
  EXPECT_TRUE(bits.Value(4294967297));
  EXPECT_FALSE(bits.Value(4294967298));
  EXPECT_TRUE(bits.Value(4294967300));
}

TEST(LargeToArrow, NarrowsOffsetsUpToTheirLimit) {
  const hxArrayPtr fits = Texts(ZerosAnd('z', kTwoTo31 - 2), {0, 2147483645, 2147483646});

  const auto array = ValueOf(core::MakeBinaryArray(fits.get(), nullptr));

  const auto& binaries = static_cast<const ::arrow::BinaryArray&>(*array);
  EXPECT_EQ(binaries.GetView(0).size(), 2147483645U);
  EXPECT_EQ(binaries.GetView(1), "z");

  const hxArrayPtr beyond = Texts(ZerosAnd('z', kTwoTo31 - 1), {0, 2147483647});
  EXPECT_EQ(core::MakeBinaryArray(beyond.get(), nullptr).status(),
            ::arrow::Status::Invalid("Cannot construct arrow::StringArray or arrow::BinaryArray "
                                     "with 2147483647 offset."));
}

TEST(LargeToUtf8, ConvertsTextsBeyondFourGigabytes) {
  constexpr size_t kTexts = 43;
  constexpr size_t kUnits = kTwoTo31 / 64;
  const hxArrayPtr row = CharMatrix({1, kUnits}, std::u16string(kUnits, u'漢'));
  const hxArrayPtr texts = hxCreateCellArray(Dims{kTexts, 1});
  for (size_t i = 0; i < kTexts; ++i) hxSetCell(texts.get(), i, hxSharedCopy(row.get()));
  hxArrayPtr outputs[2];
  const hxArray* inputs[] = {texts.get()};

  unicode::convertUTF16ToUTF8(2, outputs, 1, inputs);

  ASSERT_EQ(hxGetNumberOfElements(outputs[0].get()), 4328521729U);
  const auto* const bytes = static_cast<const char*>(hxGetData(outputs[0].get()));
  EXPECT_EQ(std::string(bytes + 4328521725, 4), std::string("漢\0", 4));
  const auto* const offsets = static_cast<const std::uint64_t*>(hxGetData(outputs[1].get()));
  EXPECT_EQ(offsets[1], 100663296U);
  EXPECT_EQ(offsets[42], 4227858432U);
  EXPECT_EQ(offsets[43], 4328521728U);
}

}  // namespace
}  // namespace numera::io::arrow
