#include <arrow/api.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "numera/core/limits.h"
#include "numera/core/to_arrow.h"
#include "numera/core/to_numera.h"
#include "numera/extras/encode/encode.h"
#include "tests/support/arrow_values.h"
#include "tests/support/envelopes.h"
#include "tests/support/host_matchers.h"
#include "tests/support/nested_values.h"

namespace numera::testing {
namespace {

using extras::make_readable;
using io::arrow::core::kMaxNestingLevels;
using io::arrow::core::to_arrow;
using io::arrow::core::to_numera;

hxArrayPtr Lists(double length, hxArrayPtr values, hxArrayPtr offsets, const Bits& valid = {}) {
  return WrittenEnvelope("list_array", "large_list_array", WrittenValidity(length, valid),
                         ListData(std::move(values), std::move(offsets)));
}

hxArrayPtr Structs(double length, const std::vector<std::string>& names,
                   std::initializer_list<Slot> fields, const Bits& valid = {}) {
  return WrittenEnvelope("struct", "struct", WrittenValidity(length, valid),
                         StructData(names, fields));
}

/// The encoded form of the envelope that `to_numera` writes for these chunks.
hxArrayPtr encoded(const std::shared_ptr<::arrow::DataType>& type,
                   const std::vector<std::string>& chunks) {
  const hxArrayPtr written = to_numera(ArrowChunks(type, chunks)).ValueOrDie();
  return make_readable(written.get()).ValueOrDie();
}

TEST(EncodeNestedValues, ListsOfOneChunkAreRewrittenInPlace) {
  const hxArrayPtr readable = encoded(::arrow::list(::arrow::int16()), {"[[1, 2], null, [3]]"});
  const hxArrayPtr expected = Lists(3, WrittenNumbers<std::int16_t>({1, 2, 3}),
                                    Column<std::uint64_t>({0, 2, 2, 3}), {0xFD});
  EXPECT_TRUE(SameHostValue(readable.get(), expected.get()));
}

TEST(EncodeNestedValues, ValuesOfListsOfOneChunkAreNotCopied) {
  const hxArrayPtr written =
      to_numera(ArrowArray(::arrow::list(::arrow::float64()), "[[1, 2], [3]]")).ValueOrDie();
  const hxArrayPtr readable = make_readable(written.get()).ValueOrDie();
  const auto leaf = [](const hxArrayPtr& envelope) {
    const hxArray* const values = hxGetField(hxGetField(envelope.get(), 0, "Data"), 0, "Values");
    return hxGetData(hxGetField(values, 0, "Data"));
  };
  EXPECT_EQ(leaf(readable), leaf(written));
}

TEST(EncodeNestedValues, ReadableOffsetsAreNotCopied) {
  const hxArrayPtr lists =
      Lists(1, WrittenNumbers<std::int8_t>({1, 2}), Column<std::uint64_t>({0, 2}));
  const hxArrayPtr readable = make_readable(lists.get()).ValueOrDie();
  const auto offsets = [](const hxArrayPtr& envelope) {
    return hxGetData(hxGetField(hxGetField(envelope.get(), 0, "Data"), 0, "StartOffsets"));
  };
  EXPECT_EQ(offsets(readable), offsets(lists));
}

TEST(EncodeNestedValues, ListsOfSeveralChunksAreJoinedWithTheirValidity) {
  const hxArrayPtr readable =
      encoded(::arrow::large_list(::arrow::int16()), {"[[1, null], null, [3]]", "[]", "[[], [4]]"});
  const hxArrayPtr expected = Lists(5, WrittenNumbers<std::int16_t>({1, 0, 3, 4}, {0b1101}),
                                    Column<std::uint64_t>({0, 2, 2, 3, 3, 4}), {0b11101});
  EXPECT_TRUE(SameHostValue(readable.get(), expected.get()));
}

TEST(EncodeNestedValues, ChunksWithoutNullsHaveNoBits) {
  const hxArrayPtr readable = encoded(::arrow::list(::arrow::int16()), {"[[1]]", "[[2, 3]]"});
  const hxArrayPtr expected =
      Lists(2, WrittenNumbers<std::int16_t>({1, 2, 3}), Column<std::uint64_t>({0, 1, 3}));
  EXPECT_TRUE(SameHostValue(readable.get(), expected.get()));
}

TEST(EncodeNestedValues, OffsetsOfASliceStayInTheWholeChild) {
  const auto lists = ArrowArray(::arrow::list(::arrow::int16()), "[[1], [2, 3], [4]]");
  const hxArrayPtr written = to_numera(lists->Slice(1, 2)).ValueOrDie();
  const hxArrayPtr readable = make_readable(written.get()).ValueOrDie();
  const hxArrayPtr expected =
      Lists(2, WrittenNumbers<std::int16_t>({1, 2, 3, 4}), Column<std::uint64_t>({1, 3, 4}));
  EXPECT_TRUE(SameHostValue(readable.get(), expected.get()));
}

TEST(EncodeNestedValues, StructsOfSeveralChunksAreJoined) {
  const auto type = ::arrow::struct_(
      {::arrow::field("é", ::arrow::boolean()), ::arrow::field("b", ::arrow::date32())});
  const hxArrayPtr readable =
      encoded(type, {R"([{"é": true, "b": 1}, null])", R"([{"é": null, "b": 2}])"});
  const hxArrayPtr expected =
      Structs(3, {"é", "b"},
              {WrittenArray("logical", 3, WrittenBitmap(3, {1}), {3}),
               WrittenArray("datetime", 3,
                            WrittenTimestampData(Column<std::int64_t>({86400, 0, 172800}),
                                                 Char("seconds"), Char("")))},
              {5});
  EXPECT_TRUE(SameHostValue(readable.get(), expected.get()));
}

TEST(EncodeNestedValues, MapsBecomeListsOfKeysAndValues) {
  const hxArrayPtr readable =
      encoded(::arrow::map(::arrow::int8(), ::arrow::int16()), {"[[[1, 10], [2, null]], null]"});
  const hxArrayPtr expected = Lists(
      2,
      Structs(2, {"key", "value"},
              {WrittenNumbers<std::int8_t>({1, 2}), WrittenNumbers<std::int16_t>({10, 0}, {0xFD})}),
      Column<std::uint64_t>({0, 2, 2}), {0xFD});
  EXPECT_TRUE(SameHostValue(readable.get(), expected.get()));
}

TEST(EncodeNestedValues, DictionariesOfTheChunksAreMerged) {
  const auto type = ::arrow::list(::arrow::dictionary(::arrow::int8(), ::arrow::utf8(), true));
  const hxArrayPtr readable = encoded(type, {R"([["b", "a"]])", R"([["c", null, "a"]])"});
  const auto array = to_arrow<::arrow::Array>(readable.get()).ValueOrDie();
  const auto& codes = static_cast<const ::arrow::DictionaryArray&>(
      *static_cast<const ::arrow::LargeListArray&>(*array).values());
  EXPECT_TRUE(SameArray(*codes.indices(), *ArrowArray(::arrow::int8(), "[0, 1, 2, null, 1]")));
  EXPECT_TRUE(
      SameArray(*codes.dictionary(), *ArrowArray(::arrow::large_utf8(), R"(["b", "a", "c"])")));
  EXPECT_TRUE(static_cast<const ::arrow::DictionaryType&>(*codes.type()).ordered());
}

TEST(EncodeNestedValues, ReadableOffsetsOfEveryIntegerWidthAreRead) {
  const auto lists = [](hxArrayPtr offsets) {
    return Lists(1, WrittenNumbers<std::int8_t>({1, 2}), std::move(offsets));
  };
  const hxArrayPtr expected = lists(Column<std::uint64_t>({0, 2}));
  for (const hxArrayPtr& value :
       {lists(Column<std::int32_t>({0, 2})), lists(Column<std::int64_t>({0, 2})),
        lists(Column<std::uint64_t>({0, 2}))}) {
    EXPECT_TRUE(SameHostValue(make_readable(value.get()).ValueOrDie().get(), expected.get()));
  }
}

TEST(EncodeNestedValues, ValuesAsDeepAsTheCoreReadsAreEncoded) {
  const struct {
    Container container;
    size_t levels;
  } rows[] = {
      {kList, kMaxNestingLevels}, {kStruct, kMaxNestingLevels}, {kMap, kMaxNestingLevels / 2}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.container.name);
    const auto readable = make_readable(NestedWritten({row.container}, row.levels).get());
    ASSERT_TRUE(readable.ok()) << readable.status();
    EXPECT_TRUE(to_arrow<::arrow::Array>(readable->get()).ok());
    const auto deeper = make_readable(NestedWritten({row.container}, row.levels + 1).get());
    EXPECT_EQ(deeper.status().ToString(),
              "Invalid: Nested value: found more than 1024 levels, expected at most 1024.");
  }
}

TEST(EncodeNestedValues, ValuesNestedMuchDeeperAreRefused) {
  for (const Container& container : {kList, kStruct, kMap}) {
    const hxArrayPtr value = NestedWritten({container}, 5 * kMaxNestingLevels);
    EXPECT_TRUE(make_readable(value.get()).status().IsInvalid());
  }
}

TEST(EncodeNestedValues, DeepValuesOfSeveralChunksAreJoined) {
  // Arrow joins the chunks. It recurses as deep as the types are.
  for (const Container& container : {kList, kStruct}) {
    const auto chunk = [&container] { return NestedWritten({container}, kMaxNestingLevels - 1); };
    const hxArrayPtr written = WrittenTwoChunksOfLists(chunk(), chunk());
    const auto readable = make_readable(written.get());
    ASSERT_TRUE(readable.ok()) << readable.status();
    EXPECT_EQ(to_arrow<::arrow::Array>(readable->get()).ValueOrDie()->length(), 2);
  }
}

}  // namespace
}  // namespace numera::testing
