#include "numera/core/chunk_memory.h"

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
using ::arrow::Status;
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

TEST(ReadableBytes, AreAllBytesOfMainMemory) {
  EXPECT_THAT(copy_of(readable_bytes(ArrowBuffer({1, 2, 3}))), ElementsAre(1, 2, 3));
}

TEST(ReadableBytes, AreNoneWhereNothingCanBeRead) {
  const std::uint8_t byte = 1;
  const std::shared_ptr<::arrow::Buffer> buffers[] = {
      nullptr, ArrowBuffer({}), BufferOfOtherDevice(3),
      std::make_shared<::arrow::Buffer>(static_cast<const std::uint8_t*>(nullptr), 5),
      std::make_shared<::arrow::Buffer>(&byte, -1)};
  for (const auto& buffer : buffers) EXPECT_THAT(readable_bytes(buffer), IsEmpty());
}

TEST(ReadableBytes, AreNoneOfABufferThatTheArrayLacks) {
  const auto array = data_of(1, {nullptr, ArrowBuffer({1, 2})}, 0);
  EXPECT_THAT(readable_bytes(*array, 0), IsEmpty());
  EXPECT_THAT(copy_of(readable_bytes(*array, 1)), ElementsAre(1, 2));
  EXPECT_THAT(readable_bytes(*array, 2), IsEmpty());
}

TEST(FixedWidthValues, StartAtTheOffset) {
  const auto array = data_of(1, {nullptr, ArrowBuffer({1, 2, 3, 4, 5, 6})}, 0, 1);
  EXPECT_THAT(copy_of(fixed_width_values(*array, 2).ValueOrDie()), ElementsAre(3, 4));
}

TEST(FixedWidthValues, ReachTheVeryEndOfTheBuffer) {
  const auto array = data_of(2, {nullptr, ArrowBuffer({1, 2, 3, 4, 5, 6})}, 0, 1);
  EXPECT_THAT(copy_of(fixed_width_values(*array, 2).ValueOrDie()), ElementsAre(3, 4, 5, 6));
}

TEST(FixedWidthValues, AreNoneOfNoElementsOrNoWidth) {
  EXPECT_THAT(fixed_width_values(*data_of(0, {nullptr, nullptr}, 0, 100), 2).ValueOrDie(),
              IsEmpty());
  EXPECT_THAT(fixed_width_values(*data_of(100, {nullptr, nullptr}, 0), 0).ValueOrDie(), IsEmpty());
}

TEST(FixedWidthValues, EndWithTheBuffer) {
  const auto array = data_of(3, {nullptr, ArrowBuffer({1, 2, 3, 4, 5, 6})}, 0, 1);
  EXPECT_EQ(fixed_width_values(*array, 2).status(),
            Status::Invalid("Values buffer: found 6 bytes, expected enough for 4 elements."));
}

TEST(CountNulls, IsArrowsOwnCount) {
  const auto bitmap = ArrowBuffer({0xF5});
  EXPECT_EQ(count_nulls(*data_of(4, {bitmap, nullptr}, -1)), 2);
  EXPECT_EQ(count_nulls(*data_of(4, {bitmap, nullptr}, -1, 4)), 0);
  EXPECT_EQ(count_nulls(*data_of(4, {bitmap, nullptr}, 3)), 3);
  EXPECT_EQ(count_nulls(*data_of(4, {nullptr, nullptr}, -1)), 0);
}

TEST(CountNulls, GoesAsFarAsTheBitmap) {
  const auto bitmap = ArrowBuffer({0x0F, 0xFE});
  EXPECT_EQ(count_nulls(*data_of(100, {bitmap, nullptr}, -1)), 5);
  EXPECT_EQ(count_nulls(*data_of(100, {bitmap, nullptr}, -1, 8)), 1);
  EXPECT_EQ(count_nulls(*data_of(100, {bitmap, nullptr}, -1, 16)), 0);
  EXPECT_EQ(count_nulls(*data_of(100, {bitmap, nullptr}, -1, 1000)), 0);
  EXPECT_EQ(count_nulls(*data_of(100, {ArrowBuffer({}), nullptr}, -1)), 0);
  EXPECT_EQ(count_nulls(*data_of(4, {BufferOfOtherDevice(1), nullptr}, -1)), 0);
}

TEST(CountNulls, IsNoneOfAnExtentThatCannotBe) {
  const auto bitmap = ArrowBuffer({0});
  EXPECT_EQ(count_nulls(*data_of(-1, {bitmap, nullptr}, -1)), 0);
  EXPECT_EQ(count_nulls(*data_of(1, {bitmap, nullptr}, -1, -8)), 0);
  EXPECT_EQ(count_nulls(*data_of(0x7FFF'FFFF'FFFF'FFFF, {bitmap, nullptr}, -1, 8)), 0);
}

TEST(SingleChunk, WrapsTheArrayItself) {
  const auto array = ArrowArray(::arrow::int16(), "[1, null]");
  const auto column = single_chunk(array);
  EXPECT_EQ(column->num_chunks(), 1);
  EXPECT_EQ(column->chunk(0), array);
  EXPECT_EQ(column->null_count(), 1);
}

TEST(SingleChunk, CountsTheNullsOfABitmapThatIsTooShort) {
  const auto array = std::make_shared<::arrow::UInt8Array>(100, nullptr, ArrowBuffer({0xFE}), -1);
  const auto column = single_chunk(array);
  EXPECT_EQ(column->null_count(), 1);
  EXPECT_EQ(column->length(), 100);
}

TEST(SingleChunk, LeavesTheCountAsArrowWould) {
  const auto too_short =
      std::make_shared<::arrow::UInt8Array>(100, nullptr, ArrowBuffer({0xFE}), -1);
  const auto long_enough =
      std::make_shared<::arrow::UInt8Array>(8, nullptr, ArrowBuffer({0xFE}), -1);
  for (const auto& array : {too_short, long_enough}) {
    single_chunk(array);
    EXPECT_EQ(array->data()->null_count.load(), 1);
  }
}

TEST(CheckChunks, AcceptsWhatArrowMakes) {
  EXPECT_EQ(check_chunks(*ArrowChunks(::arrow::int8(), {"[1]", "[]", "[2, null]"})), Status::OK());
  EXPECT_EQ(check_chunks(*ArrowChunks(::arrow::int8(), {})), Status::OK());
}

TEST(CheckChunks, AcceptsEqualTypesThatAreNotTheSame) {
  const auto type = [] { return ::arrow::timestamp(::arrow::TimeUnit::SECOND, "UTC"); };
  EXPECT_EQ(check_chunks(::arrow::ChunkedArray({ArrowArray(type(), "[1]")}, type())), Status::OK());
}

}  // namespace
}  // namespace numera::io::arrow::core
