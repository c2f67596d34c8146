#include "numera/core/chunk_memory.h"

#include <arrow/array/array_primitive.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include "tests/support/arrow_values.h"
#include "tests/support/other_device.h"
#include "tests/support/results.h"

namespace numera::io::arrow::core {
namespace {

using namespace numera::testing;
using ::arrow::ArrayData;
using ::arrow::Status;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

const Status kNotReadable =
    Status::Invalid("Buffer: found bytes that cannot be read here, expected main memory.");

std::vector<std::uint8_t> copy_of(std::span<const std::uint8_t> bytes) {
  return {bytes.begin(), bytes.end()};
}

std::shared_ptr<ArrayData> data_of(std::int64_t length,
                                   std::vector<std::shared_ptr<::arrow::Buffer>> buffers,
                                   std::int64_t null_count, std::int64_t offset = 0) {
  return ArrayData::Make(::arrow::int16(), length, std::move(buffers), null_count, offset);
}

TEST(ReadableBytes, AreAllBytesOfMainMemory) {
  EXPECT_THAT(copy_of(ValueOf(readable_bytes(ArrowBuffer({1, 2, 3})))), ElementsAre(1, 2, 3));
}

TEST(ReadableBytes, AreNoneWhereThereIsNothingToRead) {
  const std::uint8_t byte = 1;
  const std::shared_ptr<::arrow::Buffer> buffers[] = {
      nullptr, ArrowBuffer({}),
      std::make_shared<::arrow::Buffer>(static_cast<const std::uint8_t*>(nullptr), 5),
      std::make_shared<::arrow::Buffer>(&byte, -1)};
  for (const auto& buffer : buffers) EXPECT_THAT(ValueOf(readable_bytes(buffer)), IsEmpty());
}

TEST(ReadableBytes, AreRefusedInTheMemoryOfAnotherDevice) {
  EXPECT_EQ(readable_bytes(BufferOfOtherDevice(3)).status(), kNotReadable);
}

TEST(ReadableBytes, AreNoneOfABufferThatTheArrayLacks) {
  const auto array = data_of(1, {nullptr, ArrowBuffer({1, 2})}, 0);
  EXPECT_THAT(ValueOf(readable_bytes(*array, 0)), IsEmpty());
  EXPECT_THAT(copy_of(ValueOf(readable_bytes(*array, 1))), ElementsAre(1, 2));
  EXPECT_THAT(ValueOf(readable_bytes(*array, 2)), IsEmpty());
}

TEST(FixedWidthValues, StartAtTheOffset) {
  const auto array = data_of(1, {nullptr, ArrowBuffer({1, 2, 3, 4, 5, 6})}, 0, 1);
  EXPECT_THAT(copy_of(ValueOf(fixed_width_values(*array, 2))), ElementsAre(3, 4));
}

TEST(FixedWidthValues, ReachTheVeryEndOfTheBuffer) {
  const auto array = data_of(2, {nullptr, ArrowBuffer({1, 2, 3, 4, 5, 6})}, 0, 1);
  EXPECT_THAT(copy_of(ValueOf(fixed_width_values(*array, 2))), ElementsAre(3, 4, 5, 6));
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

struct Counted {
  std::shared_ptr<ArrayData> array;
  std::int64_t nulls;
  std::int64_t kept;  ///< the null count that the array stores afterwards
};

void expect_counts(const std::vector<Counted>& cases) {
  for (size_t i = 0; i < cases.size(); ++i) {
    EXPECT_EQ(ValueOf(count_nulls(*cases[i].array)), cases[i].nulls) << "case " << i;
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

TEST(CountNulls, IsNoneOfAnExtentThatCannotBe) {
  const auto bitmap = ArrowBuffer({0});
  expect_counts({{data_of(-1, {bitmap, nullptr}, -1), 0, -1},
                 {data_of(1, {bitmap, nullptr}, -1, -8), 0, -1},
                 {data_of(0x7FFF'FFFF'FFFF'FFFF, {bitmap, nullptr}, -1, 8), 0, -1}});
}

TEST(CountNulls, RefusesABitmapInTheMemoryOfAnotherDevice) {
  EXPECT_EQ(count_nulls(*data_of(4, {BufferOfOtherDevice(1), nullptr}, -1)).status(), kNotReadable);
  EXPECT_EQ(ValueOf(count_nulls(*data_of(4, {BufferOfOtherDevice(1), nullptr}, 2))), 2);
}

TEST(CountNulls, OfTheNullTypeAreAllElements) {
  for (const std::int64_t stored : {-1, 0, 5}) {
    EXPECT_EQ(ValueOf(count_nulls(*ArrayData::Make(::arrow::null(), 5, {nullptr}, stored))), 5);
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
    EXPECT_EQ(ValueOf(count_nulls(slice)), nulls) << stored << " in the array";
    EXPECT_EQ(array->null_count.load(), stored);
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

TEST(CheckChunks, AcceptsFieldsOfOtherNamesNullabilityAndMetadata) {
  const auto type = [](const char* name, bool nullable) {
    const auto metadata = ::arrow::key_value_metadata({"key"}, {name});
    const auto leaf = ::arrow::field(name, ::arrow::int8(), nullable, metadata);
    return ::arrow::struct_({::arrow::field(name, ::arrow::list(leaf)),
                             ::arrow::field(name, ::arrow::map(::arrow::utf8(), leaf))});
  };
  const auto chunk = ArrowArray(type("a", true), R"([[[1], [["k", 2]]]])");
  EXPECT_EQ(check_chunks(::arrow::ChunkedArray({chunk}, type("b", false))), Status::OK());
}

TEST(CheckChunks, ShowsBothTypesInFullWhereTheyDiffer) {
  const auto chunk = ArrowArray(::arrow::list(::arrow::int16()), "[[1]]");
  EXPECT_EQ(check_chunks(::arrow::ChunkedArray({chunk}, ::arrow::list(::arrow::int8()))),
            Status::Invalid("Chunk 0: found list<item: int16>, expected list<item: int8>, the type "
                            "of the column."));
  const auto field = ::arrow::field("a", ::arrow::int8());
  EXPECT_EQ(
      check_chunks(::arrow::ChunkedArray({ArrowArray(::arrow::struct_({field, field}), "[]")},
                                         ::arrow::struct_({field}))),
      Status::Invalid("Chunk 0: found struct<a: int8, a: int8>, expected struct<a: int8>, the "
                      "type of the column."));
  EXPECT_EQ(check_chunks(
                ::arrow::ChunkedArray({ArrowArray(::arrow::utf8(), "[]")}, ::arrow::struct_({}))),
            Status::Invalid("Chunk 0: found string, expected struct<>, the type of the column."));
}

}  // namespace
}  // namespace numera::io::arrow::core
