#include "numera/core/types/binary.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "numera/core/to_arrow.h"
#include "numera/core/to_numera.h"
#include "tests/core/data_of.h"
#include "tests/core/fail_conversions.h"
#include "tests/core/only_read.h"
#include "tests/core/reading.h"
#include "tests/support/arrow_values.h"
#include "tests/support/envelopes.h"
#include "tests/support/host_builder.h"
#include "tests/support/host_matchers.h"
#include "tests/support/offset_arrays.h"
#include "tests/support/recording_host.h"
#include "tests/support/results.h"

namespace numera::io::arrow::core {
namespace {

using namespace numera::testing;
using namespace std::string_literals;
using ::arrow::Status;

const std::shared_ptr<::arrow::DataType> kBinaryTypes[] = {::arrow::binary(),
                                                           ::arrow::large_binary()};

hxArrayPtr Bytes(const std::vector<std::uint8_t>& bytes) { return Column<std::uint8_t>(bytes); }

/// An array of fixed-width elements over exactly these bytes.
std::shared_ptr<::arrow::Array> FixedWidth(int width, std::int64_t length,
                                           const std::vector<std::uint8_t>& bytes,
                                           std::int64_t offset = 0) {
  return ::arrow::MakeArray(::arrow::ArrayData::Make(::arrow::fixed_size_binary(width), length,
                                                     {nullptr, ExactBuffer(bytes)}, 0, offset));
}

TEST(BinaryToArrow, BecomesLargeBinary) {
  const hxArrayPtr encoded =
      Envelope("binary_array", TextData("\xFF\0\x80z"s, {0, 1, 1, 3, 4}), {0b0111});

  const auto array = ValueOf(to_arrow<::arrow::Array>(encoded.get()));

  auto expected = LargeArray(::arrow::large_binary(), "\xFF\0\x80"s, {0, 1, 1, 3, 3})->data();
  expected = expected->Copy();
  expected->buffers[0] = ArrowBuffer({0b0111});
  expected->null_count = 1;
  EXPECT_TRUE(SameArray(*array, *::arrow::MakeArray(expected)));
}

TEST(BinaryToArrow, BorrowsBytesOffsetsAndValidity) {
  const hxArrayPtr encoded = Envelope("binary_array", TextData("abc", {0, 1, 3}), {0b01});
  const hxArray* bytes = hxGetField(encoded.get(), 0, "Data");
  const hxArray* valid = hxGetField(encoded.get(), 0, "Valid");

  const auto array = ValueOf(to_arrow<::arrow::Array>(encoded.get()));

  const ::arrow::ArrayData& data = *array->data();
  EXPECT_EQ(data.buffers[0]->data(), hxGetData(hxGetField(valid, 0, "Values")));
  EXPECT_EQ(data.buffers[1]->data(), hxGetData(hxGetField(bytes, 0, "StartOffsets")));
  EXPECT_EQ(data.buffers[1]->size(), 24);
  EXPECT_EQ(data.buffers[2]->data(), hxGetData(hxGetField(bytes, 0, "Values")));
  EXPECT_EQ(data.buffers[2]->size(), 3);
  EXPECT_EQ(data.null_count, ::arrow::kUnknownNullCount);
  EXPECT_EQ(data.offset, 0);
}

TEST(BinaryToArrow, IsNarrowWithOffsetsOfItsOwnWhereThatIsAsked) {
  const hxArrayPtr encoded = TextData("\xFF\xFE\xFD", {0, 1, 3});

  const auto array = ValueOf(MakeBinaryArray(encoded.get(), ArrowBuffer({0b11})));

  EXPECT_TRUE(SameArray(*array, *NarrowArray(::arrow::binary(), "\xFF\xFE\xFD", {0, 1, 3})));
  EXPECT_EQ(array->data()->buffers[2]->data(), hxGetData(hxGetField(encoded.get(), 0, "Values")));
}

TEST(BinaryToArrow, HasNoFixedWidth) {
  const hxArrayPtr encoded = Envelope("fixed_binary_array", TextData("ab", {0, 1, 2}));

  EXPECT_EQ(StatusOfReading(encoded),
            Status::Invalid("Invalid type for NUMERA to Arrow conversion."));
}

TEST(BinaryToArrow, NeitherFailsNorLeaksHalfWay) {
  const hxArrayPtr encoded = Envelope("binary_array", TextData("abc", {0, 1, 3}));
  FailReading(encoded);
}

TEST(BinaryToHost, BecomesACellOfByteColumns) {
  for (const auto& type : kBinaryTypes) {
    SCOPED_TRACE(type->ToString());
    const hxArrayPtr envelope = ValueOf(to_numera(ArrowArray(type, R"(["a\u0000", "", null])")));

    const hxArrayPtr expected = WrittenArray(
        "binary_array", 3, Cell({Bytes({'a', 0}), Bytes({}), Bytes({})}), {0b11111011});
    EXPECT_TRUE(SameHostValue(envelope.get(), expected.get()));
  }
}

TEST(BinaryToHost, KeepsBytesThatAreNoText) {
  const auto array = NarrowArray(::arrow::binary(), "\xFF\xC3\x80", {0, 2, 3});

  EXPECT_TRUE(SameHostValue(DataOf(array).get(), Cell({Bytes({0xFF, 0xC3}), Bytes({0x80})}).get()));
}

TEST(BinaryToHost, JoinsChunksInOrder) {
  for (const auto& type : kBinaryTypes) {
    SCOPED_TRACE(type->ToString());
    const auto column = ArrowChunks(type, {R"(["a", "bc"])", "[]", R"(["d", "", "e"])"});

    const hxArrayPtr expected =
        Cell({Bytes({'a'}), Bytes({'b', 'c'}), Bytes({'d'}), Bytes({}), Bytes({'e'})});
    EXPECT_TRUE(SameHostValue(DataOf(column).get(), expected.get()));
  }
}

TEST(BinaryToHost, MakesAnEmptyCellOfNoElements) {
  for (const auto& type : kBinaryTypes) {
    SCOPED_TRACE(type->ToString());
    EXPECT_TRUE(SameHostValue(DataOf(ArrowChunks(type, {})).get(), Cell({0, 1}, {}).get()));
    const auto empty = ArrayOfOffsets(type, 0, nullptr, nullptr);
    EXPECT_TRUE(SameHostValue(DataOf(empty).get(), Cell({0, 1}, {}).get()));
  }
}

TEST(BinaryToHost, GivesWhatTheOffsetsOfANullSlotSpan) {
  auto data = NarrowArray(::arrow::binary(), "abc", {0, 1, 3})->data()->Copy();
  data->buffers[0] = ArrowBuffer({0b01});
  data->null_count = 1;

  EXPECT_TRUE(SameHostValue(DataOf(::arrow::MakeArray(data)).get(),
                            Cell({Bytes({'a'}), Bytes({'b', 'c'})}).get()));
}

TEST(BinaryToHost, TakesSlices) {
  const auto array = ArrowArray(::arrow::binary(), R"(["a", "bc", "", "def", "g"])");

  EXPECT_TRUE(SameHostValue(DataOf(array->Slice(1, 3)).get(),
                            Cell({Bytes({'b', 'c'}), Bytes({}), Bytes({'d', 'e', 'f'})}).get()));
  EXPECT_TRUE(SameHostValue(DataOf(array->Slice(1)->Slice(2, 1)).get(),
                            Cell({Bytes({'d', 'e', 'f'})}).get()));
}

TEST(BinaryToHost, RefusesOffsetsThatLeaveTheirBuffers) {
  const std::pair<std::vector<std::int32_t>, std::string> cases[] = {
      {{0, 3, 1}, "Element 1: found offsets 3 and 1, expected a range that rises within 3 bytes."},
      {{-1, 3}, "Element 0: found offsets -1 and 3, expected a range that rises within 3 bytes."},
      {{0, 4}, "Element 0: found offsets 0 and 4, expected a range that rises within 3 bytes."}};
  for (const auto& [offsets, message] : cases) {
    EXPECT_EQ(ToNumeraOnlyReads(NarrowArray(::arrow::binary(), "abc", offsets)).status(),
              Status::Invalid(message));
    EXPECT_EQ(ToNumeraOnlyReads(
                  LargeArray(::arrow::large_binary(), "abc", {offsets.begin(), offsets.end()}))
                  .status(),
              Status::Invalid(message));
  }
}

TEST(BinaryToHost, RefusesAShortOffsetsBuffer) {
  const auto offsets = ExactBuffer(std::vector<std::int32_t>{0, 1, 2});
  const auto array = ArrayOfOffsets(::arrow::binary(), 3, offsets, ExactBuffer(BytesOf("abc")));

  EXPECT_EQ(ToNumeraOnlyReads(array).status(),
            Status::Invalid("Offsets buffer: found 12 bytes, expected enough for 3 elements."));
}

TEST(BinaryToHost, MakesEachColumnWithoutZeroingItFirst) {
  const auto array = ArrowArray(::arrow::binary(), R"(["a", "bc"])");
  Reset();

  ValueOf(BinaryChunksToHost<::arrow::BinaryArray>(::arrow::ChunkedArray(array)));

  EXPECT_THAT(Created(), ::testing::ElementsAre(
                             Creation{"hxCreateCellArray", hxClassID::Cell, {2, 1}},
                             Creation{"hxCreateUninitNumericArray", hxClassID::UInt8, {1, 1}},
                             Creation{"hxCreateUninitNumericArray", hxClassID::UInt8, {2, 1}}));
}

TEST(BinaryToHost, NeitherFailsNorLeaksHalfWay) {
  const auto column = ArrowChunks(::arrow::binary(), {R"(["a", "bc"])", R"([null, "d"])"});
  FailWriting(column);
}

TEST(FixedSizeBinaryToHost, BecomesACellOfByteColumns) {
  const auto type = ::arrow::fixed_size_binary(4);

  const hxArrayPtr envelope = ValueOf(to_numera(ArrowArray(type, R"(["abcd", "efgh", null])")));

  const hxArrayPtr expected = WrittenArray(
      "fixed_binary_array", 3,
      Cell({Bytes({'a', 'b', 'c', 'd'}), Bytes({'e', 'f', 'g', 'h'}), Bytes({0, 0, 0, 0})}),
      {0b11111011});
  EXPECT_TRUE(SameHostValue(envelope.get(), expected.get()));
}

TEST(FixedSizeBinaryToHost, JoinsChunksAndSlices) {
  const auto type = ::arrow::fixed_size_binary(2);
  const auto column =
      ValueOf(::arrow::ChunkedArray::Make({ArrowArray(type, R"(["ab", "cd", "ef"])")->Slice(1, 2),
                                           ArrowArray(type, "[]"), ArrowArray(type, R"(["gh"])")},
                                          type));

  const hxArrayPtr expected = Cell({Bytes({'c', 'd'}), Bytes({'e', 'f'}), Bytes({'g', 'h'})});
  EXPECT_TRUE(SameHostValue(DataOf(column).get(), expected.get()));
}

TEST(FixedSizeBinaryToHost, TakesElementsOfNoBytes) {
  EXPECT_TRUE(SameHostValue(DataOf(FixedWidth(0, 3, {}, 2)).get(),
                            Cell({Bytes({}), Bytes({}), Bytes({})}).get()));
}

TEST(FixedSizeBinaryToHost, MakesAnEmptyCellOfNoElements) {
  const hxArrayPtr expected = Cell({0, 1}, {});
  EXPECT_TRUE(SameHostValue(DataOf(FixedWidth(4, 0, {})).get(), expected.get()));
  EXPECT_TRUE(
      SameHostValue(DataOf(ArrowChunks(::arrow::fixed_size_binary(4), {})).get(), expected.get()));
}

TEST(FixedSizeBinaryToHost, RefusesAShortValuesBuffer) {
  EXPECT_EQ(ToNumeraOnlyReads(FixedWidth(2, 2, {1, 2, 3})).status(),
            Status::Invalid("Values buffer: found 3 bytes, expected enough for 2 elements."));
  EXPECT_EQ(ToNumeraOnlyReads(FixedWidth(2, 1, {1, 2, 3}, 1)).status(),
            Status::Invalid("Values buffer: found 3 bytes, expected enough for 2 elements."));
}

TEST(FixedSizeBinaryToHost, NeitherFailsNorLeaksHalfWay) {
  const auto array = ArrowArray(::arrow::fixed_size_binary(2), R"(["ab", null])");
  FailWriting(array);
}

}  // namespace
}  // namespace numera::io::arrow::core
