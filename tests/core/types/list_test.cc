#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>

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
#include "tests/support/results.h"

namespace numera::io::arrow::core {
namespace {

using namespace numera::testing;
using ::arrow::Status;

/// A list array with one int32 child and the given offsets buffer, which is not checked.
std::shared_ptr<::arrow::Array> RawList(std::int64_t length, std::int64_t offset,
                                        std::shared_ptr<::arrow::Buffer> offsets) {
  const auto child = ArrowArray(::arrow::int32(), "[1, 2]");
  return ::arrow::MakeArray(::arrow::ArrayData::Make(::arrow::list(::arrow::int32()), length,
                                                     {nullptr, std::move(offsets)}, {child->data()},
                                                     0, offset));
}

TEST(ListToArrow, MakesALargeListOverItsOffsets) {
  const hxArrayPtr encoded =
      ListEnvelope(Numbers<std::int32_t>({1, 2, 3, 4, 5}), Column<std::uint64_t>({0, 2, 2, 5}));
  const auto lists = ValueOf(to_arrow<::arrow::Array>(encoded.get()));
  EXPECT_TRUE(SameArray(
      *lists, *ArrowArray(::arrow::large_list(::arrow::int32()), "[[1, 2], [], [3, 4, 5]]")));
  const hxArray* data = hxGetField(encoded.get(), 0, "Data");
  EXPECT_EQ(lists->data()->buffers[1]->data(), hxGetData(hxGetField(data, 0, "StartOffsets")));
  EXPECT_EQ(lists->data()->buffers[1]->size(), 32);
}

TEST(ListToArrow, TakesItsNullsFromValid) {
  const hxArrayPtr encoded =
      ListEnvelope(Numbers<std::int32_t>({1, 2}), Column<std::uint64_t>({0, 1, 1, 2}), {0b101});
  EXPECT_TRUE(SameArray(*ValueOf(to_arrow<::arrow::Array>(encoded.get())),
                        *ArrowArray(::arrow::large_list(::arrow::int32()), "[[1], null, [2]]")));
}

TEST(ListToArrow, HasNoBitmapWhereValidHasNoBytes) {
  const hxArrayPtr encoded =
      ListEnvelope(Numbers<std::int32_t>({1}), Column<std::uint64_t>({0, 1}));
  EXPECT_EQ(ValueOf(to_arrow<::arrow::Array>(encoded.get()))->data()->buffers[0], nullptr);
}

TEST(ListToArrow, ReadsOffsetsOfAnyShape) {
  const hxArrayPtr encoded =
      ListEnvelope(Numbers<std::int32_t>({1, 2, 3}), Matrix<std::uint64_t>({2, 2}, {0, 1, 2, 3}));
  EXPECT_TRUE(SameArray(*ValueOf(to_arrow<::arrow::Array>(encoded.get())),
                        *ArrowArray(::arrow::large_list(::arrow::int32()), "[[1], [2], [3]]")));
}

TEST(ListToArrow, ReadsOneOffsetAsNoLists) {
  const hxArrayPtr encoded = ListEnvelope(Numbers<std::int32_t>({}), Scalar<std::uint64_t>(0));
  EXPECT_TRUE(SameArray(*ValueOf(to_arrow<::arrow::Array>(encoded.get())),
                        *ArrowArray(::arrow::large_list(::arrow::int32()), "[]")));
}

TEST(ListToArrow, TakesOffsetsAsTheyStand) {
  const hxArrayPtr encoded =
      ListEnvelope(Numbers<std::int32_t>({1}), Column<std::uint64_t>({9, 3, 1ULL << 63}));
  const auto lists = ValueOf(to_arrow<::arrow::Array>(encoded.get()));
  ASSERT_EQ(lists->length(), 2);
  const auto* offsets = static_cast<const ::arrow::LargeListArray&>(*lists).raw_value_offsets();
  EXPECT_EQ(std::vector<std::int64_t>(offsets, offsets + 3),
            (std::vector<std::int64_t>{9, 3, std::numeric_limits<std::int64_t>::min()}));
}

TEST(ListToArrow, ReadsListsOfLists) {
  const hxArrayPtr encoded =
      ListEnvelope(ListEnvelope(Numbers<std::int32_t>({1, 2, 3}), Column<std::uint64_t>({0, 1, 3})),
                   Column<std::uint64_t>({0, 0, 2}));
  EXPECT_TRUE(SameArray(*ValueOf(to_arrow<::arrow::Array>(encoded.get())),
                        *ArrowArray(::arrow::large_list(::arrow::large_list(::arrow::int32())),
                                    "[[], [[1], [2, 3]]]")));
}

TEST(ListToArrow, ReadsTheFirstChunkOnly) {
  const hxArrayPtr encoded = KindEnvelope(
      "list_array", "list_array",
      StructColumn(kListFields,
                   {ListData(Numbers<std::int32_t>({1}), Column<std::uint64_t>({0, 1})),
                    ListData(Empty(), Empty())}));
  EXPECT_TRUE(SameArray(*ValueOf(to_arrow<::arrow::Array>(encoded.get())),
                        *ArrowArray(::arrow::large_list(::arrow::int32()), "[[1]]")));
}

TEST(ListToArrow, RefusesOffsetsOfAnotherClassBeforeItConvertsValues) {
  const std::pair<hxArrayPtr, const char*> cases[] = {
      {Column<std::int64_t>({0, 1}), "a 2-by-1 int64 array, expected a uint64 array."},
      {Column<std::int32_t>({0, 1}), "a 2-by-1 int32 array, expected a uint64 array."},
      {Column<double>({0, 1}), "a 2-by-1 double array, expected a uint64 array."},
      {Cell({}), "a 0-by-1 cell array, expected a uint64 array."},
      {Empty(), "no value, expected a uint64 array."},
      {Complex<std::uint64_t>({1, 2}, {{0, 0}, {1, 0}}),
       "a complex 1-by-2 uint64 array, expected a real array that is not sparse."},
      {host::memory::CreateSparseArray(Dims{2, 1}, hxClassID::UInt64),
       "a sparse 2-by-1 uint64 array, expected a real array that is not sparse."}};
  for (const auto& [offsets, found] : cases) {
    SCOPED_TRACE(found);
    const hxArrayPtr encoded =
        ListEnvelope(Scalar(1.0), offsets ? hxSharedCopy(offsets.get()) : Empty());
    EXPECT_EQ(StatusOfReading(encoded), Status::TypeError("Field 'StartOffsets': found ", found));
  }
}

TEST(ListToArrow, RefusesOffsetsWithoutElements) {
  EXPECT_EQ(StatusOfReading(ListEnvelope(Scalar(1.0), Column<std::uint64_t>({}))),
            Status::Invalid("Field 'StartOffsets': found no elements, expected one more than there "
                            "are lists."));
}

TEST(ListToArrow, ReturnsTheFailureOfItsParts) {
  const std::pair<hxArrayPtr, Status> cases[] = {
      {WrittenEnvelope("list_array", "list_array", BufferOf(Char("array"), Empty()), Scalar(1.0)),
       Status::TypeError("Missing field 'Values' in input struct array")},
      {ListEnvelope(Empty(), Column<std::uint64_t>({0})),
       Status::TypeError("Struct array required for input")},
      {ListEnvelope(Scalar(1.0), Column<std::uint64_t>({0})),
       Status::TypeError("Struct array required for input")},
      {ListEnvelope(KindEnvelope("map", "map", Scalar(1.0)), Column<std::uint64_t>({0})),
       Status::TypeError("Expected 'array' input type, received 'map' instead.")},
      {ListEnvelope(Envelope("double", Struct({})), Column<std::uint64_t>({0})),
       Status::Invalid("Invalid type for NUMERA to Arrow conversion.")}};
  for (const auto& [encoded, status] : cases) EXPECT_EQ(StatusOfReading(encoded), status);
}

TEST(ListToArrow, LetsTheHostReportDataThatIsNoListStruct) {
  const std::pair<hxArrayPtr, const char*> cases[] = {
      {KindEnvelope("list_array", "list_array", Scalar(1.0)), "Array is not struct array."},
      {KindEnvelope("list_array", "list_array", Struct({{"Values", Numbers<std::int32_t>({1})}})),
       "Wrong field name."},
      {KindEnvelope("list_array", "list_array",
                    Struct({{"StartOffsets", Column<std::uint64_t>({0})}})),
       "Wrong field name."}};
  for (const auto& [encoded, message] : cases) {
    EXPECT_THAT([&] { return StatusOfReading(encoded); },
                ::testing::ThrowsMessage<std::invalid_argument>(message));
  }
  const hxArrayPtr no_element =
      KindEnvelope("list_array", "list_array", StructArray({0, 0}, kListFields, {}));
  EXPECT_THAT([&] { return StatusOfReading(no_element); },
              ::testing::ThrowsMessage<std::out_of_range>("Struct index is out of range."));
}

TEST(ListToHost, WritesInt32OffsetsForListsAndInt64ForLargeLists) {
  const auto lists = ArrowArray(::arrow::list(::arrow::int32()), "[[1, 2], null, [3]]");
  EXPECT_TRUE(SameHostValue(ValueOf(to_numera(lists)).get(),
                            WrittenNested("list_array", "list_array", 3,
                                          ListData(WrittenNumbers<std::int32_t>({1, 2, 3}),
                                                   Column<std::int32_t>({0, 2, 2, 3})),
                                          {0b11111101})
                                .get()));
  const auto large = ArrowArray(::arrow::large_list(::arrow::int32()), "[[1, 2], [], [3]]");
  EXPECT_TRUE(SameHostValue(ValueOf(to_numera(large)).get(),
                            WrittenNested("list_array", "large_list_array", 3,
                                          ListData(WrittenNumbers<std::int32_t>({1, 2, 3}),
                                                   Column<std::int64_t>({0, 2, 2, 3})))
                                .get()));
}

TEST(ListToHost, CopiesStoredOffsetsAndTheWholeChildOfASlice) {
  const auto lists = ArrowArray(::arrow::list(::arrow::int32()),
                                "[[1, 2, 3], [4, 5, 6, 7], [8, 9], [], [10, 11, 12], [13]]");
  EXPECT_TRUE(SameHostValue(
      DataOf(lists->Slice(2, 3)).get(),
      ListData(WrittenNumbers<std::int32_t>({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13}),
               Column<std::int32_t>({7, 9, 9, 12}))
          .get()));
}

TEST(ListToHost, CopiesOffsetsThatNoListCanHave) {
  const auto lists = RawList(2, 0, ArrowBuffer({255, 255, 255, 255, 7, 0, 0, 0, 1, 0, 0, 128}));
  EXPECT_TRUE(SameHostValue(
      DataOf(lists).get(),
      ListData(WrittenNumbers<std::int32_t>({1, 2}), Column<std::int32_t>({-1, 7, -2147483647}))
          .get()));
}

TEST(ListToHost, WritesOneElementAChunk) {
  const auto chunks = ArrowChunks(::arrow::list(::arrow::int32()), {"[[1], null]", "[]", "[[2]]"});
  EXPECT_TRUE(SameHostValue(
      ValueOf(to_numera(chunks)).get(),
      WrittenEnvelope(
          "list_array", "list_array",
          StructColumn(kBitmapFields,
                       {WrittenBitmap(2, {0b11111101}), WrittenBitmap(0), WrittenBitmap(1)}),
          StructColumn(
              kListFields,
              {ListData(WrittenNumbers<std::int32_t>({1}), Column<std::int32_t>({0, 1, 1})),
               ListData(WrittenNumbers<std::int32_t>({}), Column<std::int32_t>({0})),
               ListData(WrittenNumbers<std::int32_t>({2}), Column<std::int32_t>({0, 1}))}))
          .get()));
}

TEST(ListToHost, WritesNoElementsForNoChunks) {
  for (const auto& type : {::arrow::list(::arrow::int32()), ::arrow::large_list(::arrow::utf8())}) {
    EXPECT_TRUE(SameHostValue(DataOf(ArrowChunks(type, {})).get(),
                              StructArray({0, 1}, kListFields, {}).get()));
  }
}

TEST(ListToHost, WritesListsOfLists) {
  const auto lists = ArrowArray(::arrow::list(::arrow::list(::arrow::int32())), "[[[1], []]]");
  EXPECT_TRUE(SameHostValue(DataOf(lists).get(),
                            ListData(WrittenNested("list_array", "list_array", 2,
                                                   ListData(WrittenNumbers<std::int32_t>({1}),
                                                            Column<std::int32_t>({0, 1, 1}))),
                                     Column<std::int32_t>({0, 2}))
                                .get()));
}

TEST(ListToHost, WritesTheOneOffsetZeroWhereThereAreNeitherListsNorOffsets) {
  for (const auto& offsets : {ArrowBuffer({}), std::shared_ptr<::arrow::Buffer>()}) {
    EXPECT_TRUE(SameHostValue(
        DataOf(RawList(0, 0, offsets)).get(),
        ListData(WrittenNumbers<std::int32_t>({1, 2}), Column<std::int32_t>({0})).get()));
  }
}

TEST(ListToHost, RefusesOffsetsThatEndEarly) {
  const auto two = ArrowBuffer({0, 0, 0, 0, 1, 0, 0, 0});
  const std::tuple<std::int64_t, std::int64_t, std::shared_ptr<::arrow::Buffer>, const char*>
      cases[] = {{2, 0, two, "found 8 bytes, expected enough for 2 elements."},
                 {1, 1, two, "found 8 bytes, expected enough for 2 elements."},
                 {0, 2, two, "found 8 bytes, expected enough for 2 elements."},
                 {1, 0, ArrowBuffer({0, 0, 0, 0, 1, 0, 0}),
                  "found 7 bytes, expected enough for 1 elements."},
                 {1, 0, ArrowBuffer({}), "found 0 bytes, expected enough for 1 elements."},
                 {1, 0, nullptr, "found 0 bytes, expected enough for 1 elements."},
                 {std::numeric_limits<std::int64_t>::max(), 0, two,
                  "found 8 bytes, expected enough for 9223372036854775807 elements."}};
  for (const auto& [length, offset, offsets, message] : cases) {
    EXPECT_EQ(ToNumeraOnlyReads(RawList(length, offset, offsets)).status(),
              Status::Invalid("Offsets buffer: ", message));
  }
}

TEST(ListToHost, ReadsOffsetsAtAnyAddress) {
  const auto odd = ::arrow::SliceBuffer(ArrowBuffer({9, 0, 0, 0, 0, 2, 0, 0, 0}), 1);
  EXPECT_TRUE(SameHostValue(
      DataOf(RawList(1, 0, odd)).get(),
      ListData(WrittenNumbers<std::int32_t>({1, 2}), Column<std::int32_t>({0, 2})).get()));
}

TEST(ListToHost, ReturnsTheFailureOfItsValues) {
  const auto lists = ArrowArray(::arrow::list(::arrow::decimal128(3, 1)), R"([["1.5"]])");
  EXPECT_EQ(ToNumeraOnlyReads(lists).status(),
            Status::TypeError("Unsupported type for Arrrow-NUMERA conversion: decimal128(3, 1)"));
}

TEST(List, LeavesNothingBehindWhereverItFails) {
  const hxArrayPtr encoded = ListEnvelope(
      ListEnvelope(Numbers<std::int32_t>({1, 2, 3}), Column<std::uint64_t>({0, 1, 3}), {3}),
      Column<std::uint64_t>({0, 2}), {1});
  FailReading(encoded);
  const auto lists = ArrowArray(::arrow::list(::arrow::int32()), "[[1, null], null]");
  FailWriting(lists);
}

}  // namespace
}  // namespace numera::io::arrow::core
