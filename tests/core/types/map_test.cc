#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "numera/core/to_arrow.h"
#include "numera/core/to_numera.h"
#include "tests/core/data_of.h"
#include "tests/core/fail_conversions.h"
#include "tests/core/only_read.h"
#include "tests/support/arrow_values.h"
#include "tests/support/envelopes.h"
#include "tests/support/host_builder.h"
#include "tests/support/host_matchers.h"
#include "tests/support/results.h"

namespace numera::io::arrow::core {
namespace {

using namespace numera::testing;
using ::arrow::Status;

const std::shared_ptr<::arrow::DataType> kCounts = ::arrow::map(::arrow::int8(), ::arrow::int32());

TEST(MapToHost, WritesTextKeysNumbersAndOffsets) {
  const auto maps =
      ArrowArray(::arrow::map(::arrow::utf8(), ::arrow::int32()), R"([[["a", 1], ["b", 2]], []])");
  EXPECT_TRUE(SameHostValue(
      ValueOf(to_numera(maps)).get(),
      WrittenNested("map", "map", 2,
                    MapData(WrittenArray("string", 2, Strings({u"a", u"b"})),
                            WrittenNumbers<std::int32_t>({1, 2}), Column<std::int32_t>({0, 2, 2})))
          .get()));
}

TEST(MapToHost, MarksANullRowInValidOnly) {
  const auto maps = ArrowArray(kCounts, "[[[1, 10]], null, [[2, null]]]");
  EXPECT_TRUE(
      SameHostValue(ValueOf(to_numera(maps)).get(),
                    WrittenNested("map", "map", 3,
                                  MapData(WrittenNumbers<std::int8_t>({1, 2}),
                                          WrittenNumbers<std::int32_t>({10, 0}, {0b11111101}),
                                          Column<std::int32_t>({0, 1, 1, 2})),
                                  {0b11111101})
                        .get()));
}

TEST(MapToHost, CopiesStoredOffsetsAndTheWholeChildrenOfASlice) {
  const auto maps = ArrowArray(kCounts, "[[[1, 10]], [[2, 20], [3, 30]], [], [[4, 40]]]");
  EXPECT_TRUE(SameHostValue(
      DataOf(maps->Slice(1, 2)).get(),
      MapData(WrittenNumbers<std::int8_t>({1, 2, 3, 4}),
              WrittenNumbers<std::int32_t>({10, 20, 30, 40}), Column<std::int32_t>({1, 3, 3}))
          .get()));
}

TEST(MapToHost, WritesOneElementAChunk) {
  const auto chunks = ArrowChunks(kCounts, {"[[[1, 10]]]", "[]"});
  EXPECT_TRUE(SameHostValue(
      ValueOf(to_numera(chunks)).get(),
      WrittenEnvelope(
          "map", "map", StructColumn(kBitmapFields, {WrittenBitmap(1), WrittenBitmap(0)}),
          StructColumn(kMapFields,
                       {MapData(WrittenNumbers<std::int8_t>({1}),
                                WrittenNumbers<std::int32_t>({10}), Column<std::int32_t>({0, 1})),
                        MapData(WrittenNumbers<std::int8_t>({}), WrittenNumbers<std::int32_t>({}),
                                Column<std::int32_t>({0}))}))
          .get()));
}

TEST(MapToHost, WritesNoElementsForNoChunks) {
  EXPECT_TRUE(SameHostValue(DataOf(ArrowChunks(kCounts, {})).get(),
                            StructArray({0, 1}, kMapFields, {}).get()));
}

TEST(MapToHost, WritesTheOneOffsetZeroWhereThereAreNeitherRowsNorOffsets) {
  const auto data = ArrowArray(kCounts, "[]")->data()->Copy();
  data->buffers[1] = nullptr;
  EXPECT_TRUE(SameHostValue(DataOf(::arrow::MakeArray(data)).get(),
                            MapData(WrittenNumbers<std::int8_t>({}),
                                    WrittenNumbers<std::int32_t>({}), Column<std::int32_t>({0}))
                                .get()));
}

TEST(MapToHost, RefusesOffsetsThatEndEarly) {
  const auto data = ArrowArray(kCounts, "[[[1, 10]], []]")->data()->Copy();
  data->buffers[1] = ArrowBuffer({0, 0, 0, 0, 1, 0, 0, 0});
  EXPECT_EQ(ToNumeraOnlyReads(::arrow::MakeArray(data)).status(),
            Status::Invalid("Offsets buffer: found 8 bytes, expected enough for 2 elements."));
}

TEST(MapToHost, ReturnsTheFailureOfKeysBeforeThatOfItems) {
  const auto unsupported = [](const char* type) {
    return Status::TypeError("Unsupported type for Arrrow-NUMERA conversion: ", type);
  };
  const auto both = ::arrow::map(::arrow::decimal128(3, 1), ::arrow::float16());
  EXPECT_EQ(ToNumeraOnlyReads(ArrowArray(both, "[]")).status(), unsupported("decimal128(3, 1)"));
  const auto items = ::arrow::map(::arrow::int8(), ::arrow::float16());
  EXPECT_EQ(ToNumeraOnlyReads(ArrowArray(items, "[]")).status(), unsupported("halffloat"));
}

TEST(MapToHost, IsNotReadBack) {
  const hxArrayPtr written = ValueOf(to_numera(ArrowArray(kCounts, "[[[1, 10]]]")));
  EXPECT_EQ(to_arrow<::arrow::Array>(written.get()).status(),
            Status::TypeError("Expected 'array' input type, received 'map' instead."));
}

TEST(MapToHost, LeavesNothingBehindWhereverItFails) {
  const auto maps = ArrowArray(kCounts, "[[[1, null]], null]");
  FailWriting(maps);
}

}  // namespace
}  // namespace numera::io::arrow::core
