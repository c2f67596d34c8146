#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "numera/core/to_numera.h"
#include "numera/core/types/categorical.h"
#include "tests/core/data_of.h"
#include "tests/core/fail_conversions.h"
#include "tests/core/types/dictionary_columns.h"
#include "tests/support/arrow_values.h"
#include "tests/support/dictionaries.h"
#include "tests/support/envelopes.h"
#include "tests/support/host_builder.h"
#include "tests/support/host_matchers.h"
#include "tests/support/results.h"

namespace numera::io::arrow::core {
namespace {

using namespace numera::testing;

TEST(DictionaryToHost, BecomesACategoricalStruct) {
  for (const auto& value_type : {::arrow::utf8(), ::arrow::large_utf8()}) {
    SCOPED_TRACE(value_type->ToString());
    const auto type = ::arrow::dictionary(::arrow::uint16(), value_type, /*ordered=*/true);

    const hxArrayPtr envelope =
        ValueOf(to_numera(Dictionary(type, "[1, 0, null, 1]", R"(["né", ""])")));

    const hxArrayPtr expected =
        WrittenArray("categorical", 4,
                     CategoricalData(Strings({u"né", u""}), Column<std::uint16_t>({1, 0, 0, 1}),
                                     Logical({true})),
                     {0b11111011});
    EXPECT_TRUE(SameHostValue(envelope.get(), expected.get()));
  }
}

TEST(DictionaryToHost, KeepsTheIndexTypeOfASingleChunk) {
  const std::pair<std::shared_ptr<::arrow::DataType>, hxArrayPtr> cases[] = {
      {::arrow::int8(), Column<std::int8_t>({1, 0})},
      {::arrow::uint8(), Column<std::uint8_t>({1, 0})},
      {::arrow::int16(), Column<std::int16_t>({1, 0})},
      {::arrow::uint16(), Column<std::uint16_t>({1, 0})},
      {::arrow::int32(), Column<std::int32_t>({1, 0})},
      {::arrow::uint32(), Column<std::uint32_t>({1, 0})},
      {::arrow::int64(), Column<std::int64_t>({1, 0})},
      {::arrow::uint64(), Column<std::uint64_t>({1, 0})}};
  for (const auto& [index_type, codes] : cases) {
    SCOPED_TRACE(index_type->ToString());
    const auto type = ::arrow::dictionary(index_type, ::arrow::utf8());

    const hxArrayPtr data = DataOf(Dictionary(type, "[1, 0]", R"(["a", "b"])"));

    const hxArrayPtr expected =
        CategoricalData(Strings({u"a", u"b"}), hxSharedCopy(codes.get()), Logical({false}));
    EXPECT_TRUE(SameHostValue(data.get(), expected.get()));
  }
}

TEST(DictionaryToHost, MakesNoCategoriesOfNoChunks) {
  for (const auto& value_type : {::arrow::utf8(), ::arrow::large_utf8()}) {
    SCOPED_TRACE(value_type->ToString());
    const auto type = ::arrow::dictionary(::arrow::int16(), value_type, /*ordered=*/true);

    const hxArrayPtr data = DataOf(ArrowChunks(type, {}));

    const hxArrayPtr expected =
        CategoricalData(Strings({0, 1}, {}), Column<std::int16_t>({}), Logical({true}));
    EXPECT_TRUE(SameHostValue(data.get(), expected.get()));
  }
}

TEST(DictionaryToHost, MergesTheDictionariesOfSeveralChunks) {
  for (const auto& value_type : {::arrow::utf8(), ::arrow::large_utf8()}) {
    SCOPED_TRACE(value_type->ToString());
    const auto type = ::arrow::dictionary(::arrow::int64(), value_type, /*ordered=*/true);
    const auto column = Chunks(
        {Dictionary(type, "[0, 1]", R"(["a", "b"])"), Dictionary(type, "[0, 1]", R"(["b", "c"])")});

    const hxArrayPtr expected = CategoricalData(
        Strings({u"a", u"b", u"c"}), Column<std::int8_t>({0, 1, 1, 2}), Logical({false}));
    EXPECT_TRUE(SameHostValue(DataOf(column).get(), expected.get()));
  }
}

TEST(DictionaryToHost, LosesOrderAndIndexTypeEvenWhereTheDictionariesAreTheSame) {
  const auto type = ::arrow::dictionary(::arrow::uint32(), ::arrow::utf8(), /*ordered=*/true);
  const auto column =
      Chunks({Dictionary(type, "[1]", R"(["a", "b"])"), Dictionary(type, "[0]", R"(["a", "b"])")});

  const hxArrayPtr expected =
      CategoricalData(Strings({u"a", u"b"}), Column<std::int8_t>({1, 0}), Logical({false}));
  EXPECT_TRUE(SameHostValue(DataOf(column).get(), expected.get()));
}

TEST(DictionaryToHost, TakesAWiderIndexTypeForManyCategories) {
  const auto type = ::arrow::dictionary(::arrow::uint8(), ::arrow::utf8());
  std::string first = "[";
  std::string second = "[";
  for (int i = 0; i < 100; ++i) {
    first += (i == 0 ? "\"a" : ", \"a") + std::to_string(i) + "\"";
    second += (i == 0 ? "\"b" : ", \"b") + std::to_string(i) + "\"";
  }
  const auto column =
      Chunks({Dictionary(type, "[99]", first + "]"), Dictionary(type, "[99, 0]", second + "]")});

  const hxArrayPtr data = DataOf(column);

  EXPECT_TRUE(SameHostValue(hxGetField(data.get(), 0, "Values"),
                            Column<std::int16_t>({99, 199, 100}).get()));
}

TEST(DictionaryToHost, TakesSlicesAndEmptyChunksAmongSeveral) {
  const auto type = ::arrow::dictionary(::arrow::int8(), ::arrow::utf8());
  const auto column = Chunks({Dictionary(type, "[0, 1, null, 1, 0]", R"(["a", "b"])")->Slice(1, 3),
                              Dictionary(type, "[]", "[]"),
                              Dictionary(type, "[0, 1, 0]", R"(["b", "a"])")->Slice(1)});

  const hxArrayPtr envelope = ValueOf(to_numera(column));

  const hxArrayPtr expected = CategoricalData(
      Strings({u"a", u"b"}), Column<std::int8_t>({1, 0, 1, 0, 1}), Logical({false}));
  EXPECT_TRUE(SameHostValue(hxGetField(envelope.get(), 0, "Data"), expected.get()));
}

TEST(DictionaryToHost, LeavesTheCodesOfASingleChunkAsTheyAre) {
  const auto type = ::arrow::dictionary(::arrow::int8(), ::arrow::utf8());

  const hxArrayPtr data = DataOf(Dictionary(type, "[7, -1]", R"(["a"])"));

  const hxArrayPtr expected =
      CategoricalData(Strings({u"a"}), Column<std::int8_t>({7, -1}), Logical({false}));
  EXPECT_TRUE(SameHostValue(data.get(), expected.get()));
}

TEST(DictionaryToHost, TakesCodesOutsideOfTheDictionaryForZeroUnderNulls) {
  const auto first = RawDictionary({0, -1, 1, 99}, {0b0101}, R"(["a", "b"])");
  const auto second = RawDictionary({5, -7, 0, 1}, {0b1100}, R"(["c", "a"])", 1);
  const std::vector<std::uint8_t> before(first->data()->buffers[1]->data(),
                                         first->data()->buffers[1]->data() + 4);

  const hxArrayPtr envelope = ValueOf(to_numera(Chunks({first, second})));

  const hxArrayPtr expected = CategoricalData(
      Strings({u"a", u"b", u"c"}), Column<std::int8_t>({0, 0, 1, 0, 2, 2, 0}), Logical({false}));
  EXPECT_TRUE(SameHostValue(hxGetField(envelope.get(), 0, "Data"), expected.get()));
  EXPECT_EQ(std::vector<std::uint8_t>(first->data()->buffers[1]->data(),
                                      first->data()->buffers[1]->data() + 4),
            before);
}

TEST(DictionaryToHost, TakesNullsOverAnEmptyDictionary) {
  const auto column =
      Chunks({RawDictionary({0, 3}, {0b00}, "[]"), RawDictionary({0}, {0b1}, R"(["a"])")});

  const hxArrayPtr data = DataOf(column);

  const hxArrayPtr expected =
      CategoricalData(Strings({u"a"}), Column<std::int8_t>({0, 0, 0}), Logical({false}));
  EXPECT_TRUE(SameHostValue(data.get(), expected.get()));
}

TEST(DictionaryChunksToSingle, KeepsTheNullsOfMergedCodes) {
  const auto type = ::arrow::dictionary(::arrow::int8(), ::arrow::utf8());
  const auto column = Chunks({Dictionary(type, "[0, null]", R"(["a"])"),
                              RawDictionary({-1, 1, 0}, {0b110}, R"(["b", "a"])")});

  const SingleDictionary single = ValueOf(DictionaryChunksToSingle(*column, type));

  EXPECT_TRUE(single.indices->Equals(ArrowChunks(::arrow::int8(), {"[0, null]", "[null, 0, 1]"})))
      << single.indices->ToString();
  EXPECT_TRUE(SameArray(*single.dictionary, *ArrowArray(::arrow::utf8(), R"(["a", "b"])")));
  EXPECT_TRUE(single.type->Equals(type));
}

TEST(DictionaryChunksToSingle, GivesTheTypeOfTheColumnForOneChunkAndForNone) {
  const auto type = ::arrow::dictionary(::arrow::uint32(), ::arrow::large_utf8(), true);
  const auto chunk = Dictionary(type, "[1, null]", R"(["a", "b"])");

  const SingleDictionary one = ValueOf(DictionaryChunksToSingle(*Chunks({chunk}), type));
  const SingleDictionary none = ValueOf(DictionaryChunksToSingle(*ArrowChunks(type, {}), type));

  EXPECT_EQ(one.type, type);
  EXPECT_TRUE(one.indices->Equals(ArrowChunks(::arrow::uint32(), {"[1, null]"})));
  EXPECT_TRUE(SameArray(*one.dictionary, *ArrowArray(::arrow::large_utf8(), R"(["a", "b"])")));
  EXPECT_EQ(none.type, type);
  EXPECT_TRUE(none.indices->Equals(ArrowChunks(::arrow::uint32(), {})));
  EXPECT_TRUE(SameArray(*none.dictionary, *ArrowArray(::arrow::large_utf8(), "[]")));
}

TEST(DictionaryToHost, WritesADictionaryWithANullAsItsBytes) {
  const auto type = ::arrow::dictionary(::arrow::int8(), ::arrow::utf8());

  const hxArrayPtr data = DataOf(Dictionary(type, "[0, 1]", R"(["a", null])"));

  const hxArrayPtr expected =
      CategoricalData(Strings({u"a", u""}), Column<std::int8_t>({0, 1}), Logical({false}));
  EXPECT_TRUE(SameHostValue(data.get(), expected.get()));
}

TEST(DictionaryToHost, NeitherFailsNorLeaksHalfWay) {
  const auto type = ::arrow::dictionary(::arrow::int8(), ::arrow::utf8());
  const auto column = Chunks({Dictionary(type, "[0, null]", R"(["a", "b"])"),
                              RawDictionary({9, 1}, {0b10}, R"(["b", "c"])")});
  FailWriting(column);
}

}  // namespace
}  // namespace numera::io::arrow::core
