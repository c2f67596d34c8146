#include "numera/core/types/categorical.h"

#include <arrow/array/array_dict.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>

#include "numera/core/to_arrow.h"
#include "numera/core/to_numera.h"
#include "numera/host/memory.h"
#include "tests/support/arrow_values.h"
#include "tests/support/dictionaries.h"
#include "tests/support/encoded_texts.h"
#include "tests/support/envelopes.h"
#include "tests/support/faults.h"
#include "tests/support/host_builder.h"
#include "tests/support/host_matchers.h"
#include "tests/support/results.h"

namespace numera::io::arrow::core {
namespace {

using namespace numera::testing;
using ::arrow::Status;

hxArrayPtr WrittenCategorical(hxArrayPtr categories, hxArrayPtr codes, bool ordinal) {
  return Struct({{"Categories", std::move(categories)},
                 {"Values", std::move(codes)},
                 {"Ordinal", Logical({ordinal})}});
}

std::shared_ptr<::arrow::ChunkedArray> Chunks(::arrow::ArrayVector chunks) {
  return std::make_shared<::arrow::ChunkedArray>(std::move(chunks));
}

template <class ArrowValue>
hxArrayPtr DataOf(const std::shared_ptr<ArrowValue>& value) {
  return hxSharedCopy(hxGetField(ValueOf(to_numera(value)).get(), 0, "Data"));
}

TEST(DictionaryToHost, BecomesACategoricalStruct) {
  for (const auto& value_type : {::arrow::utf8(), ::arrow::large_utf8()}) {
    SCOPED_TRACE(value_type->ToString());
    const auto type = ::arrow::dictionary(::arrow::uint16(), value_type, /*ordered=*/true);

    const hxArrayPtr envelope =
        ValueOf(to_numera(Dictionary(type, "[1, 0, null, 1]", R"(["né", ""])")));

    const hxArrayPtr expected = WrittenEnvelope(
        "array", "categorical", WrittenValidity(4, {0b11111011}),
        WrittenCategorical(Strings({u"né", u""}), Column<std::uint16_t>({1, 0, 0, 1}), true));
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
        WrittenCategorical(Strings({u"a", u"b"}), hxSharedCopy(codes.get()), false);
    EXPECT_TRUE(SameHostValue(data.get(), expected.get()));
  }
}

TEST(DictionaryToHost, MakesNoCategoriesOfNoChunks) {
  for (const auto& value_type : {::arrow::utf8(), ::arrow::large_utf8()}) {
    SCOPED_TRACE(value_type->ToString());
    const auto type = ::arrow::dictionary(::arrow::int16(), value_type, /*ordered=*/true);

    const hxArrayPtr data = DataOf(ArrowChunks(type, {}));

    const hxArrayPtr expected =
        WrittenCategorical(Strings({0, 1}, {}), Column<std::int16_t>({}), true);
    EXPECT_TRUE(SameHostValue(data.get(), expected.get()));
  }
}

TEST(DictionaryToHost, MergesTheDictionariesOfSeveralChunks) {
  for (const auto& value_type : {::arrow::utf8(), ::arrow::large_utf8()}) {
    SCOPED_TRACE(value_type->ToString());
    const auto type = ::arrow::dictionary(::arrow::int64(), value_type, /*ordered=*/true);
    const auto column = Chunks(
        {Dictionary(type, "[0, 1]", R"(["a", "b"])"), Dictionary(type, "[0, 1]", R"(["b", "c"])")});

    const hxArrayPtr expected =
        WrittenCategorical(Strings({u"a", u"b", u"c"}), Column<std::int8_t>({0, 1, 1, 2}), false);
    EXPECT_TRUE(SameHostValue(DataOf(column).get(), expected.get()));
  }
}

TEST(DictionaryToHost, LosesOrderAndIndexTypeEvenWhereTheDictionariesAreTheSame) {
  const auto type = ::arrow::dictionary(::arrow::uint32(), ::arrow::utf8(), /*ordered=*/true);
  const auto column =
      Chunks({Dictionary(type, "[1]", R"(["a", "b"])"), Dictionary(type, "[0]", R"(["a", "b"])")});

  const hxArrayPtr expected =
      WrittenCategorical(Strings({u"a", u"b"}), Column<std::int8_t>({1, 0}), false);
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

  const hxArrayPtr expected =
      WrittenCategorical(Strings({u"a", u"b"}), Column<std::int8_t>({1, 0, 1, 0, 1}), false);
  EXPECT_TRUE(SameHostValue(hxGetField(envelope.get(), 0, "Data"), expected.get()));
}

TEST(DictionaryToHost, RefusesValuesThatAreNoText) {
  const std::pair<std::shared_ptr<::arrow::DataType>, const char*> cases[] = {
      {::arrow::int32(), "Invalid dictionary value type: int32"},
      {::arrow::binary(), "Invalid dictionary value type: binary"},
      {::arrow::timestamp(::arrow::TimeUnit::SECOND, "UTC"),
       "Invalid dictionary value type: timestamp[s, tz=UTC]"}};
  for (const auto& [value_type, message] : cases) {
    const auto type = ::arrow::dictionary(::arrow::int8(), value_type);
    EXPECT_EQ(to_numera(ArrowChunks(type, {})).status(), Status::Invalid(message));
    EXPECT_EQ(to_numera(Dictionary(type, "[]", "[]")).status(), Status::Invalid(message));
  }
}

TEST(DictionaryToHost, LeavesTheCodesOfASingleChunkAsTheyAre) {
  const auto type = ::arrow::dictionary(::arrow::int8(), ::arrow::utf8());

  const hxArrayPtr data = DataOf(Dictionary(type, "[7, -1]", R"(["a"])"));

  const hxArrayPtr expected =
      WrittenCategorical(Strings({u"a"}), Column<std::int8_t>({7, -1}), false);
  EXPECT_TRUE(SameHostValue(data.get(), expected.get()));
}

TEST(DictionaryToHost, RefusesACodeOutsideOfTheDictionaryAmongSeveralChunks) {
  struct Case {
    std::shared_ptr<::arrow::DataType> index_type;
    const char* codes;
    const char* message;
  };
  const Case cases[] = {
      {::arrow::int8(), "[0, 1, 2]",
       "Dictionary code: found 2 at slot 2, expected an index into a dictionary of 2 values."},
      {::arrow::int8(), "[null, -1]",
       "Dictionary code: found -1 at slot 1, expected an index into a dictionary of 2 values."},
      {::arrow::uint8(), "[255, 254]",
       "Dictionary code: found 255 at slot 0, expected an index into a dictionary of 2 values."},
      {::arrow::int16(), "[-32768]",
       "Dictionary code: found -32768 at slot 0, expected an index into a dictionary of 2 values."},
      {::arrow::uint16(), "[65535]",
       "Dictionary code: found 65535 at slot 0, expected an index into a dictionary of 2 values."},
      {::arrow::int32(), "[2147483647]",
       "Dictionary code: found 2147483647 at slot 0, expected an index into a dictionary of 2 "
       "values."},
      {::arrow::uint32(), "[4294967295]",
       "Dictionary code: found 4294967295 at slot 0, expected an index into a dictionary of 2 "
       "values."},
      {::arrow::int64(), "[-9223372036854775808]",
       "Dictionary code: found -9223372036854775808 at slot 0, expected an index into a "
       "dictionary of 2 values."},
      {::arrow::uint64(), "[18446744073709551615]",
       "Dictionary code: found 18446744073709551615 at slot 0, expected an index into a "
       "dictionary of 2 values."}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.index_type->ToString() + " " + c.codes);
    const auto type = ::arrow::dictionary(c.index_type, ::arrow::utf8());
    const auto column =
        Chunks({Dictionary(type, "[0]", R"(["a"])"), Dictionary(type, c.codes, R"(["a", "b"])")});
    EXPECT_EQ(to_numera(column).status(), Status::Invalid(c.message));
  }
}

/// Codes under a validity bitmap, over blocks of exactly their size.
std::shared_ptr<::arrow::Array> RawDictionary(const std::vector<std::int8_t>& codes,
                                              const std::vector<std::uint8_t>& validity,
                                              const std::string& values, std::int64_t offset = 0) {
  auto data = ::arrow::ArrayData::Make(::arrow::dictionary(::arrow::int8(), ::arrow::utf8()),
                                       static_cast<std::int64_t>(codes.size()) - offset,
                                       {ExactBuffer(validity), ExactBuffer(codes)},
                                       ::arrow::kUnknownNullCount, offset);
  data->dictionary = ArrowArray(::arrow::utf8(), values)->data();
  return ::arrow::MakeArray(data);
}

TEST(DictionaryToHost, TakesCodesOutsideOfTheDictionaryForZeroUnderNulls) {
  const auto first = RawDictionary({0, -1, 1, 99}, {0b0101}, R"(["a", "b"])");
  const auto second = RawDictionary({5, -7, 0, 1}, {0b1100}, R"(["c", "a"])", 1);
  const std::vector<std::uint8_t> before(first->data()->buffers[1]->data(),
                                         first->data()->buffers[1]->data() + 4);

  const hxArrayPtr envelope = ValueOf(to_numera(Chunks({first, second})));

  const hxArrayPtr expected = WrittenCategorical(Strings({u"a", u"b", u"c"}),
                                                 Column<std::int8_t>({0, 0, 1, 0, 2, 2, 0}), false);
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
      WrittenCategorical(Strings({u"a"}), Column<std::int8_t>({0, 0, 0}), false);
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
      WrittenCategorical(Strings({u"a", u""}), Column<std::int8_t>({0, 1}), false);
  EXPECT_TRUE(SameHostValue(data.get(), expected.get()));
}

TEST(DictionaryToHost, DoesNotMergeDictionariesWithNulls) {
  const auto type = ::arrow::dictionary(::arrow::int8(), ::arrow::utf8());
  const auto column =
      Chunks({Dictionary(type, "[0]", R"(["a"])"), Dictionary(type, "[0]", R"(["a", null])")});

  EXPECT_EQ(to_numera(column).status(),
            Status::Invalid("Cannot yet unify dictionaries with nulls"));
}

TEST(DictionaryToHost, ReportsTheRowOfACategoryThatIsNoText) {
  const auto type = ::arrow::dictionary(::arrow::int8(), ::arrow::utf8());
  const auto chunk = std::make_shared<::arrow::DictionaryArray>(
      type, ArrowArray(::arrow::int8(), "[0]"), NarrowArray(::arrow::utf8(), "a\xFF", {0, 1, 2}));

  EXPECT_EQ(to_numera(std::shared_ptr<::arrow::Array>(chunk)).status(),
            Status::Invalid("Could not convert string in row 1 to UTF-16 string.\n"));
}

/// A chunk whose dictionary was replaced after it was made.
std::shared_ptr<::arrow::Array> WithDictionary(std::shared_ptr<::arrow::ArrayData> dictionary) {
  const auto chunk =
      Dictionary(::arrow::dictionary(::arrow::int8(), ::arrow::utf8()), "[0]", R"(["a"])");
  chunk->data()->dictionary = std::move(dictionary);
  return chunk;
}

TEST(DictionaryToHost, RefusesADictionaryThatIsNotWhatItsTypeSays) {
  auto without_buffers = ArrowArray(::arrow::utf8(), R"(["a"])")->data()->Copy();
  without_buffers->buffers.resize(1);
  auto falling = NarrowArray(::arrow::utf8(), "ab", {2, 1})->data();
  auto short_offsets = NarrowArray(::arrow::utf8(), "ab", {0, 1})->data()->Copy();
  short_offsets->length = 5;
  auto negative = NarrowArray(::arrow::utf8(), "ab", {0, 1})->data()->Copy();
  negative->length = -1;
  const std::pair<std::shared_ptr<::arrow::ArrayData>, const char*> cases[] = {
      {nullptr, "Dictionary: found none, expected an array of type string."},
      {ArrowArray(::arrow::int32(), "[1]")->data(),
       "Dictionary: found int32, expected an array of type string."},
      {ArrowArray(::arrow::large_utf8(), R"(["a"])")->data(),
       "Dictionary: found large_utf8, expected an array of type string."},
      {without_buffers,
       "Dictionary: found an array without its buffers, expected an array of type string."},
      {falling, "Element 0: found offsets 2 and 1, expected a range that rises within 2 bytes."},
      {short_offsets, "Offsets buffer: found 8 bytes, expected enough for 5 elements."},
      {negative,
       "Array: found offset 0 and length -1, expected neither negative and their sum within 64 "
       "bits."}};
  for (const auto& [dictionary, message] : cases) {
    SCOPED_TRACE(message);
    const auto chunk = WithDictionary(dictionary);
    const auto good =
        Dictionary(::arrow::dictionary(::arrow::int8(), ::arrow::utf8()), "[0]", R"(["a"])");
    EXPECT_EQ(to_numera(chunk).status(), Status::Invalid(message));
    EXPECT_EQ(to_numera(Chunks({good, chunk})).status(), Status::Invalid(message));
  }
}

TEST(DictionaryToHost, RefusesShortCodes) {
  const auto type = ::arrow::dictionary(::arrow::int8(), ::arrow::utf8());
  const auto chunk = Dictionary(type, "[0, 0]", R"(["a"])");
  auto data = chunk->data()->Copy();
  data->buffers[1] = ExactBuffer(std::vector<std::int8_t>{0});
  const auto short_codes = ::arrow::MakeArray(data);
  const Status expected =
      Status::Invalid("Values buffer: found 1 bytes, expected enough for 2 elements.");

  EXPECT_EQ(to_numera(short_codes).status(), expected);
  EXPECT_EQ(to_numera(Chunks({chunk, short_codes})).status(), expected);
}

TEST(DictionaryToHost, ReadsNoFurtherThanAShortBitmapGoes) {
  const std::vector<std::int8_t> codes(12, 0);
  auto data = RawDictionary(codes, {0xFE, 0xFF}, R"(["a"])")->data()->Copy();
  data->buffers[0] = ExactBuffer(std::vector<std::uint8_t>{0xFE});
  data->null_count = 1;
  const auto short_bitmap = ::arrow::MakeArray(data);
  const auto column = Chunks({short_bitmap->Slice(3), short_bitmap});
  const auto type = ::arrow::dictionary(::arrow::int8(), ::arrow::utf8());

  const SingleDictionary single = ValueOf(UnifyDictionaryChunks(*column, type));

  EXPECT_TRUE(single.indices->Equals(ArrowChunks(
      ::arrow::int8(), {"[0, 0, 0, 0, 0, 0, 0, 0, 0]", "[null, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0]"})))
      << single.indices->ToString();
}

TEST(DictionaryToHost, CountsTheNullsOfADictionaryNoFurtherThanItsBitmapGoes) {
  static constexpr std::uint8_t kBits[] = {0xFF, 0x00};  // only the first byte is the bitmap
  auto entries =
      ArrowArray(::arrow::utf8(), R"(["0", "1", "2", "3", "4", "5", "6", "7", "8", "9"])")
          ->data()
          ->Copy();
  entries->buffers[0] = std::make_shared<::arrow::Buffer>(kBits, 1);
  entries->null_count = ::arrow::kUnknownNullCount;
  const auto type = ::arrow::dictionary(::arrow::int8(), ::arrow::utf8());
  auto data = Dictionary(type, "[9, 8]", R"(["0"])")->data()->Copy();
  data->dictionary = entries;
  const auto chunk = ::arrow::MakeArray(data);

  const SingleDictionary single = ValueOf(UnifyDictionaryChunks(*Chunks({chunk, chunk}), type));

  EXPECT_EQ(single.dictionary->length(), 10);
  EXPECT_TRUE(single.indices->Equals(ArrowChunks(::arrow::int8(), {"[9, 8]", "[9, 8]"})));
}

TEST(DictionaryToHost, NeitherFailsNorLeaksHalfWay) {
  const auto type = ::arrow::dictionary(::arrow::int8(), ::arrow::utf8());
  const auto column = Chunks({Dictionary(type, "[0, null]", R"(["a", "b"])"),
                              RawDictionary({9, 1}, {0b10}, R"(["b", "c"])")});
  const FaultSites sites = FailEverywhere([&] { return to_numera(column).status(); });
  EXPECT_GE(sites.allocations, 12U);
  EXPECT_GE(sites.calls, 20U);
}

}  // namespace
}  // namespace numera::io::arrow::core
