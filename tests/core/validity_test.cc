#include "numera/core/validity.h"

#include <arrow/array/array_primitive.h>
#include <gtest/gtest.h>

#include "tests/support/arrow_values.h"
#include "tests/support/envelopes.h"
#include "tests/support/faults.h"
#include "tests/support/host_builder.h"
#include "tests/support/host_matchers.h"
#include "tests/support/results.h"

namespace numera::io::arrow::core {
namespace {

using namespace numera::testing;

/// A chunk whose bitmap buffer has exactly these bytes.
std::shared_ptr<::arrow::Array> chunk(std::int64_t length, std::vector<std::uint8_t> bitmap,
                                      std::int64_t offset = 0) {
  const auto values = ArrowBuffer(std::vector<std::uint8_t>(static_cast<size_t>(offset + length)));
  return std::make_shared<::arrow::UInt8Array>(length, values, ArrowBuffer(bitmap), -1, offset);
}

std::shared_ptr<::arrow::Array> chunk_without_bitmap(std::int64_t length) {
  return std::make_shared<::arrow::UInt8Array>(
      length, ArrowBuffer(std::vector<std::uint8_t>(static_cast<size_t>(length))));
}

hxArrayPtr plain(::arrow::ArrayVector chunks) {
  return validity_to_numera(::arrow::ChunkedArray(std::move(chunks)), true);
}

hxArrayPtr each(::arrow::ArrayVector chunks) {
  return validity_to_numera(::arrow::ChunkedArray(std::move(chunks), ::arrow::uint8()), false);
}

TEST(Validity, OrdersTheFieldsOfASingleBitmap) {
  const hxArrayPtr valid = plain({chunk(2, {0x01})});
  const char* expected[] = {"ArrowType", "Values", "Length"};
  ASSERT_EQ(hxGetNumberOfFields(valid.get()), 3);
  for (int i = 0; i < 3; ++i) EXPECT_STREQ(hxGetFieldName(valid.get(), i), expected[i]);
}

TEST(Validity, OrdersTheFieldsOfBitmapsOfChunks) {
  const hxArrayPtr valid = each({chunk(2, {0x01})});
  const char* expected[] = {"Values", "Length", "ArrowType"};
  ASSERT_EQ(hxGetNumberOfFields(valid.get()), 3);
  for (int i = 0; i < 3; ++i) EXPECT_STREQ(hxGetFieldName(valid.get(), i), expected[i]);
}

TEST(Validity, HasNoBytesWithoutNulls) {
  EXPECT_TRUE(SameHostValue(plain({chunk_without_bitmap(9)}).get(), WrittenValidity(9).get()));
  EXPECT_TRUE(
      SameHostValue(plain({chunk(8, {0xFF}), chunk(3, {0x07})}).get(), WrittenValidity(11).get()));
  EXPECT_TRUE(SameHostValue(plain({chunk(0, {})}).get(), WrittenValidity(0).get()));
}

TEST(Validity, JoinsTheBitsOfChunks) {
  const hxArrayPtr valid =
      plain({chunk_without_bitmap(3), chunk(5, {0x0A}), chunk_without_bitmap(4)});
  EXPECT_TRUE(SameHostValue(valid.get(), WrittenValidity(12, {0x57, 0xFF}).get()));
}

TEST(Validity, FillsTheUnusedBitsWithOnes) {
  EXPECT_TRUE(SameHostValue(plain({chunk(11, {0x00, 0x00})}).get(),
                            WrittenValidity(11, {0x00, 0xF8}).get()));
}

TEST(Validity, CarriesWholeBytesIntoTheUnusedBitsOnly) {
  EXPECT_TRUE(
      SameHostValue(plain({chunk(3, {0x00, 0x00})}).get(), WrittenValidity(3, {0x00}).get()));
  EXPECT_TRUE(SameHostValue(plain({chunk(8, {0x00, 0x00}), chunk_without_bitmap(4)}).get(),
                            WrittenValidity(12, {0x00, 0x0F}).get()));
}

TEST(Validity, ReadsASliceFromTheStartOfItsBitmap) {
  const hxArrayPtr valid = plain({chunk(8, {0xF0, 0x00}, 8)});
  EXPECT_TRUE(SameHostValue(valid.get(), WrittenValidity(8, {0xF0}).get()));
}

TEST(Validity, TakesAShortSliceOfALongParent) {
  const std::vector<std::uint8_t> bitmap(1000, 0xAA);
  const hxArrayPtr valid = plain({chunk(8000, bitmap)->Slice(0, 2)});
  EXPECT_TRUE(SameHostValue(valid.get(), WrittenValidity(2, {0xAA}).get()));
}

TEST(Validity, KeepsTheOnesBeyondABitmapThatIsTooShort) {
  const auto array = std::make_shared<::arrow::UInt8Array>(
      20, ArrowBuffer(std::vector<std::uint8_t>(20)), ArrowBuffer({0x00}), 20);
  EXPECT_TRUE(SameHostValue(plain({array}).get(), WrittenValidity(20, {0x00, 0xFF, 0xFF}).get()));
}

TEST(Validity, KeepsTheBitsOfANullColumnSet) {
  const auto column = ArrowChunks(::arrow::null(), {"[null, null, null]", "[null]"});
  EXPECT_TRUE(
      SameHostValue(validity_to_numera(*column, true).get(), WrittenValidity(4, {0xFF}).get()));
}

TEST(Validity, DescribesEveryChunkOfOtherKinds) {
  const hxArrayPtr valid =
      each({chunk_without_bitmap(3), chunk(5, {0x0A}), chunk(0, {}), chunk(9, {0xFF, 0x00})});
  const hxArrayPtr expected =
      StructColumn(kBitmapFields, {WrittenBitmap(3), WrittenBitmap(5, {0xEA}), WrittenBitmap(0),
                                   WrittenBitmap(9, {0xFF, 0xFE})});
  EXPECT_TRUE(SameHostValue(valid.get(), expected.get()));
}

TEST(Validity, OfOneChunkOfAnotherKindIsAStructOfTheOtherOrder) {
  EXPECT_TRUE(SameHostValue(each({chunk(2, {0x01})}).get(), WrittenBitmap(2, {0xFD}).get()));
}

TEST(Validity, OfNoChunksIsAStructArrayWithoutElements) {
  const ::arrow::ChunkedArray none({}, ::arrow::uint8());
  const hxArrayPtr expected = StructArray({0, 1}, kBitmapFields, {});
  for (const bool is_plain : {true, false}) {
    EXPECT_TRUE(SameHostValue(validity_to_numera(none, is_plain).get(), expected.get()));
  }
}

TEST(Validity, LeavesNothingBehindWhereverItFails) {
  const ::arrow::ChunkedArray column({chunk_without_bitmap(3), chunk(5, {0x0A})});
  for (const bool is_plain : {true, false}) {
    const auto convert = [&column, is_plain] { return validity_to_numera(column, is_plain); };
    const FaultSites sites = FailEverywhere([&convert] {
      static_cast<void>(convert());
      return ::arrow::Status::OK();
    });
    ExpectAtLeast(sites, SitesOfMaking(convert()));
  }
}

}  // namespace
}  // namespace numera::io::arrow::core
