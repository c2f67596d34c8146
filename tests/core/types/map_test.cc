#include "numera/core/types/map.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "numera/core/to_arrow.h"
#include "numera/core/to_numera.h"
#include "tests/core/only_read.h"
#include "tests/support/arrow_values.h"
#include "tests/support/envelopes.h"
#include "tests/support/faults.h"
#include "tests/support/host_builder.h"
#include "tests/support/host_matchers.h"
#include "tests/support/results.h"

namespace numera::io::arrow::core {
namespace {

using namespace numera::testing;
using ::arrow::Status;

const std::shared_ptr<::arrow::DataType> kMap = ::arrow::map(::arrow::int8(), ::arrow::int32());

hxArrayPtr WrittenKeys(const std::vector<std::int8_t>& keys) {
  return WrittenEnvelope("array", "int8", WrittenValidity(static_cast<double>(keys.size())),
                         Column<std::int8_t>(keys));
}

hxArrayPtr WrittenItems(const std::vector<std::int32_t>& items) {
  return WrittenEnvelope("array", "int32", WrittenValidity(static_cast<double>(items.size())),
                         Column<std::int32_t>(items));
}

hxArrayPtr MapData(hxArrayPtr keys, hxArrayPtr values, const std::vector<std::int32_t>& offsets) {
  return Struct({{"Keys", std::move(keys)},
                 {"Values", std::move(values)},
                 {"StartOffsets", Column<std::int32_t>(offsets)}});
}

TEST(MapToHost, WritesTextKeysNumbersAndOffsets) {
  const auto maps =
      ArrowArray(::arrow::map(::arrow::utf8(), ::arrow::int32()), R"([[["a", 1], ["b", 2]], []])");
  EXPECT_TRUE(SameHostValue(
      ValueOf(to_numera(maps)).get(),
      WrittenEnvelope(
          "map", "map", WrittenBitmap(2),
          MapData(WrittenEnvelope("array", "string", WrittenValidity(2), Strings({u"a", u"b"})),
                  WrittenItems({1, 2}), {0, 2, 2}))
          .get()));
}

TEST(MapToHost, MarksANullRowInValidOnly) {
  const auto maps = ArrowArray(kMap, "[[[1, 10]], null, [[2, null]]]");
  EXPECT_TRUE(SameHostValue(
      ValueOf(to_numera(maps)).get(),
      WrittenEnvelope("map", "map", WrittenBitmap(3, {0b11111101}),
                      MapData(WrittenKeys({1, 2}),
                              WrittenEnvelope("array", "int32", WrittenValidity(2, {0b11111101}),
                                              Column<std::int32_t>({10, 0})),
                              {0, 1, 1, 2}))
          .get()));
}

TEST(MapToHost, CopiesStoredOffsetsAndTheWholeChildrenOfASlice) {
  const auto maps = ArrowArray(kMap, "[[[1, 10]], [[2, 20], [3, 30]], [], [[4, 40]]]");
  EXPECT_TRUE(SameHostValue(
      ValueOf(MapToHost(::arrow::ChunkedArray(maps->Slice(1, 2)))).get(),
      MapData(WrittenKeys({1, 2, 3, 4}), WrittenItems({10, 20, 30, 40}), {1, 3, 3}).get()));
}

TEST(MapToHost, WritesOneElementAChunk) {
  const auto chunks = ArrowChunks(kMap, {"[[[1, 10]]]", "[]"});
  EXPECT_TRUE(SameHostValue(
      ValueOf(to_numera(chunks)).get(),
      WrittenEnvelope(
          "map", "map",
          StructArray({2, 1}, {"Values", "Length", "ArrowType"},
                      {{Column<std::uint8_t>({}), Scalar(1.0), Char("buffer")},
                       {Column<std::uint8_t>({}), Scalar(0.0), Char("buffer")}}),
          StructArray({2, 1}, {"Keys", "Values", "StartOffsets"},
                      {{WrittenKeys({1}), WrittenItems({10}), Column<std::int32_t>({0, 1})},
                       {WrittenKeys({}), WrittenItems({}), Column<std::int32_t>({0})}}))
          .get()));
}

TEST(MapToHost, WritesNoElementsForNoChunks) {
  EXPECT_TRUE(SameHostValue(ValueOf(MapToHost(*ArrowChunks(kMap, {}))).get(),
                            StructArray({0, 1}, {"Keys", "Values", "StartOffsets"}, {}).get()));
}

TEST(MapToHost, WritesTheOneOffsetZeroWhereThereAreNeitherRowsNorOffsets) {
  const auto data = ArrowArray(kMap, "[]")->data()->Copy();
  data->buffers[1] = nullptr;
  EXPECT_TRUE(
      SameHostValue(ValueOf(MapToHost(::arrow::ChunkedArray(::arrow::MakeArray(data)))).get(),
                    MapData(WrittenKeys({}), WrittenItems({}), {0}).get()));
}

TEST(MapToHost, RefusesOffsetsThatEndEarly) {
  const auto data = ArrowArray(kMap, "[[[1, 10]], []]")->data()->Copy();
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
  const hxArrayPtr written = ValueOf(to_numera(ArrowArray(kMap, "[[[1, 10]]]")));
  EXPECT_EQ(to_arrow<::arrow::Array>(written.get()).status(),
            Status::TypeError("Expected 'array' input type, received 'map' instead."));
}

TEST(MapToHost, LeavesNothingBehindWhereverItFails) {
  const auto maps = ArrowArray(kMap, "[[[1, null]], null]");
  EXPECT_GE(FailEverywhere([&] { return to_numera(maps).status(); }).allocations, 25U);
}

}  // namespace
}  // namespace numera::io::arrow::core
