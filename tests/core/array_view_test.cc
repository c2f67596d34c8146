#include "numera/core/array_view.h"

#include <arrow/array/array_primitive.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include "tests/support/arrow_values.h"
#include "tests/support/other_device.h"

namespace numera::io::arrow::core {
namespace {

using namespace numera::testing;
using ::arrow::ArrayData;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::vector<std::uint8_t> copy_of(std::span<const std::uint8_t> bytes) {
  return {bytes.begin(), bytes.end()};
}

std::shared_ptr<ArrayData> data_of(std::int64_t length,
                                   std::vector<std::shared_ptr<::arrow::Buffer>> buffers,
                                   std::int64_t null_count, std::int64_t offset = 0) {
  return ArrayData::Make(::arrow::int16(), length, std::move(buffers), null_count, offset);
}

TEST(BytesOf, ABufferAreAllOfThem) {
  EXPECT_THAT(copy_of(bytes_of(ArrowBuffer({1, 2, 3}).get())), ElementsAre(1, 2, 3));
}

TEST(BytesOf, ABufferAreNoneWhereThereIsNothingToRead) {
  const std::uint8_t byte = 1;
  const std::shared_ptr<::arrow::Buffer> buffers[] = {
      nullptr, ArrowBuffer({}), BufferOfOtherDevice(3),
      std::make_shared<::arrow::Buffer>(static_cast<const std::uint8_t*>(nullptr), 5),
      std::make_shared<::arrow::Buffer>(&byte, -1)};
  for (const auto& buffer : buffers) EXPECT_THAT(bytes_of(buffer.get()), IsEmpty());
}

TEST(BytesOf, ABufferThatTheArrayLacksAreNone) {
  const auto array = data_of(1, {nullptr, ArrowBuffer({1, 2})}, 0);
  EXPECT_THAT(bytes_of(*array, 0), IsEmpty());
  EXPECT_THAT(copy_of(bytes_of(*array, 1)), ElementsAre(1, 2));
  EXPECT_THAT(bytes_of(*array, 2), IsEmpty());
}

TEST(FixedWidthValues, StartAtTheOffset) {
  const auto array = data_of(1, {nullptr, ArrowBuffer({1, 2, 3, 4, 5, 6})}, 0, 1);
  EXPECT_THAT(copy_of(fixed_width_values(*array, 2)), ElementsAre(3, 4));
}

TEST(FixedWidthValues, ReachTheVeryEndOfTheBuffer) {
  const auto array = data_of(2, {nullptr, ArrowBuffer({1, 2, 3, 4, 5, 6})}, 0, 1);
  EXPECT_THAT(copy_of(fixed_width_values(*array, 2)), ElementsAre(3, 4, 5, 6));
}

TEST(FixedWidthValues, AreNoneOfNoElementsOrNoWidth) {
  EXPECT_THAT(fixed_width_values(*data_of(0, {nullptr, nullptr}, 0, 100), 2), IsEmpty());
  EXPECT_THAT(fixed_width_values(*data_of(100, {nullptr, nullptr}, 0), 0), IsEmpty());
}

struct Counted {
  std::shared_ptr<ArrayData> array;
  std::int64_t nulls;
  std::int64_t kept;  ///< the null count that the array stores afterwards
};

void expect_counts(const std::vector<Counted>& cases) {
  for (size_t i = 0; i < cases.size(); ++i) {
    EXPECT_EQ(count_nulls(*cases[i].array), cases[i].nulls) << "case " << i;
    EXPECT_EQ(cases[i].array->null_count.load(), cases[i].kept) << "case " << i;
  }
}

TEST(CountNulls, IsArrowsOwnCountAndIsKeptLikeIt) {
  const auto bitmap = ArrowBuffer({0xF5});
  expect_counts({{data_of(4, {bitmap, nullptr}, -1), 2, 2},
                 {data_of(8, {bitmap, nullptr}, -1), 2, 2},
                 {data_of(4, {bitmap, nullptr}, -1, 4), 0, 0},
                 {data_of(4, {bitmap, nullptr}, 3), 3, 3},
                 {data_of(4, {nullptr, nullptr}, -1), 0, 0}});
}

TEST(CountNulls, GoesAsFarAsTheBitmapAndIsNotKeptThen) {
  const auto bitmap = ArrowBuffer({0x0F, 0xFE});
  expect_counts({{data_of(17, {bitmap, nullptr}, -1), 5, -1},
                 {data_of(100, {bitmap, nullptr}, -1, 8), 1, -1},
                 {data_of(100, {bitmap, nullptr}, -1, 16), 0, -1},
                 {data_of(100, {bitmap, nullptr}, -1, 1000), 0, -1},
                 {data_of(100, {ArrowBuffer({}), nullptr}, -1), 0, -1}});
}

TEST(CountNulls, DoNotBelieveACountThatCannotBe) {
  const auto bitmap = ArrowBuffer({0xF5});
  constexpr std::int64_t kMost = 0x7FFF'FFFF'FFFF'FFFF;
  expect_counts({{data_of(4, {bitmap, nullptr}, 5), 2, 5},
                 {data_of(4, {bitmap, nullptr}, kMost), 2, kMost},
                 {data_of(4, {bitmap, nullptr}, -2), 2, -2}});
}

TEST(CountNulls, OfTheNullTypeAreAllElements) {
  for (const std::int64_t stored : {-1, 0, 5}) {
    EXPECT_EQ(count_nulls(*ArrayData::Make(::arrow::null(), 5, {nullptr}, stored)), 5);
  }
}

TEST(CountNulls, OfASliceFollowFromThoseOfTheArrayWhereTheyCan) {
  const auto bitmap = ArrowBuffer({0b0110});
  const std::pair<std::int64_t, std::int64_t> cases[] = {{0, 0}, {4, 2}, {2, 1}, {-1, 1}};
  for (const auto& [stored, nulls] : cases) {
    const auto array = data_of(4, {bitmap, nullptr}, -1);
    array->null_count = stored;
    ArrayView slice(*array);
    slice.offset = 2;
    slice.length = 2;
    EXPECT_EQ(count_nulls(slice), nulls) << stored << " in the array";
    EXPECT_EQ(array->null_count.load(), stored);
  }
}

}  // namespace
}  // namespace numera::io::arrow::core
