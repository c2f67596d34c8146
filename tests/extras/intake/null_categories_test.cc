/// \file
/// Text dictionaries with nulls among their values. Slots that point to such a null become null.

#include <arrow/api.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "numera/core/to_arrow.h"
#include "numera/core/to_numera.h"
#include "numera/extras/encode/encode.h"
#include "numera/extras/intake/column.h"
#include "numera/extras/intake/intake.h"
#include "tests/extras/encode/columns.h"
#include "tests/extras/encode/same_values.h"
#include "tests/extras/intake/intake_checks.h"
#include "tests/support/arrow_values.h"
#include "tests/support/dictionaries.h"
#include "tests/support/offset_arrays.h"

namespace numera::testing {
namespace {

using ::arrow::dictionary;
using ::arrow::int8;
using ::arrow::utf8;
using extras::take_in;
using ArrayPtr = std::shared_ptr<::arrow::Array>;
using TypePtr = std::shared_ptr<::arrow::DataType>;

struct Case {
  const char* what;
  std::string codes;
  std::string values;
  std::string taken_codes;
  std::string taken_values;
};

const Case kCases[] = {
    {"first", "[0, 1, 2, 1]", R"([null, "a", "b"])", "[null, 0, 1, 0]", R"(["a", "b"])"},
    {"last", "[2, 0, 1]", R"(["a", "b", null])", "[null, 0, 1]", R"(["a", "b"])"},
    {"several", "[0, 1, 2, 3, 4]", R"([null, "a", null, "b", null])", "[null, 0, null, 1, null]",
     R"(["a", "b"])"},
    {"nulls among the codes too", "[null, 0, 1, null]", R"(["a", null])", "[null, 0, null, null]",
     R"(["a"])"},
    {"values that repeat", "[3, 2, 1, 0]", R"(["a", null, "a", "a"])", "[2, 1, null, 0]",
     R"(["a", "a", "a"])"},
    {"a null that no code points at", "[0, 2]", R"(["a", null, ""])", "[0, 1]", R"(["a", ""])"},
    {"nothing but nulls", "[0, 1, null]", "[null, null]", "[null, null, null]", "[]"},
    {"no codes", "[]", R"(["a", null])", "[]", R"(["a"])"},
};

void expect_taken(const ArrayPtr& given, const ArrayPtr& expected) {
  const auto taken = take_in(given);
  ASSERT_TRUE(taken.ok()) << taken.status();
  EXPECT_TRUE(taken->value->ValidateFull().ok());
  EXPECT_TRUE(SameArray(*taken->value, *expected));
  EXPECT_EQ(Unfit(*taken->value->data()), "");
  EXPECT_TRUE(taken->casts.empty());
}

TEST(IntakeOfNullCategories, MovesThemToTheCodes) {
  for (const Case& one : kCases) {
    for (const TypePtr& type :
         {dictionary(int8(), utf8()), dictionary(::arrow::uint8(), utf8(), true),
          dictionary(::arrow::int16(), ::arrow::large_utf8()),
          dictionary(::arrow::uint16(), utf8()), dictionary(::arrow::int32(), utf8()),
          dictionary(::arrow::uint32(), ::arrow::large_utf8(), true),
          dictionary(::arrow::int64(), utf8()), dictionary(::arrow::uint64(), utf8())}) {
      SCOPED_TRACE(one.what + (": " + type->ToString()));
      expect_taken(Dictionary(type, one.codes, one.values),
                   Dictionary(type, one.taken_codes, one.taken_values));
    }
  }
}

TEST(IntakeOfNullCategories, MovesThemInSlices) {
  const TypePtr type = dictionary(int8(), utf8());
  const auto whole =
      Dictionary(type, "[0, 1, 2, null, 1, 0, 2, 2, 0, 1, 2]", R"(["a", null, "b"])");
  expect_taken(whole->Slice(1, 4), Dictionary(type, "[null, 1, null, null]", R"(["a", "b"])"));
  expect_taken(whole->Slice(8), Dictionary(type, "[0, null, 1]", R"(["a", "b"])"));
  const auto of_sliced_values = std::make_shared<::arrow::DictionaryArray>(
      type, ArrowArray(int8(), "[1, 0, 2]"),
      ArrowArray(utf8(), R"(["x", null, "a", "b", "y"])")->Slice(1, 3));
  expect_taken(of_sliced_values, Dictionary(type, "[0, null, 1]", R"(["a", "b"])"));
}

TEST(IntakeOfNullCategories, LeavesCodesOfNullSlotsAlone) {
  const TypePtr type = dictionary(int8(), utf8());
  const auto data = Dictionary(type, "[1, null, 0]", R"([null, "a"])")->data()->Copy();
  data->buffers[1] = ArrowBuffer({1, 77, 0});
  expect_taken(::arrow::MakeArray(data), Dictionary(type, "[0, null, null]", R"(["a"])"));
}

TEST(IntakeOfNullCategories, PutsZeroForTheCodesOfNullSlots) {
  const auto given = Dictionary(dictionary(int8(), utf8()), "[1, 0, null]", R"([null, "a"])");
  const auto taken = take_in(given).ValueOrDie().value;
  const auto* codes = taken->data()->GetValues<std::int8_t>(1);
  EXPECT_EQ(std::vector<std::int8_t>(codes, codes + 3), (std::vector<std::int8_t>{0, 0, 0}));
}

TEST(IntakeOfNullCategories, DropsTheTextBehindThem) {
  const TypePtr type = dictionary(int8(), utf8());
  const auto data = Dictionary(type, "[2, 1, 0]", R"(["a", null, "b"])")->data()->Copy();
  data->dictionary = data->dictionary->Copy();
  data->dictionary->buffers = {ArrowBuffer({0b101}), ExactBuffer<std::int32_t>({0, 1, 3, 4}),
                               ExactBuffer(BytesOf("a\xFF\xFE"
                                                   "b"))};
  expect_taken(::arrow::MakeArray(data), Dictionary(type, "[1, null, 0]", R"(["a", "b"])"));
}

TEST(IntakeOfNullCategories, CastsViewsFirst) {
  const auto given =
      Dictionary(dictionary(int8(), ::arrow::utf8_view()), "[0, 1]", R"(["a", null])");
  const auto taken = take_in(given, {.views = true}).ValueOrDie();
  EXPECT_TRUE(
      SameArray(*taken.value, *Dictionary(dictionary(int8(), utf8()), "[0, null]", R"(["a"])")));
}

TEST(IntakeOfNullCategories, HandlesDictionariesOfDictionaries) {
  const auto inner = Dictionary(dictionary(int8(), utf8()), "[0, 1, 0]", R"(["a", null])");
  const auto given = std::make_shared<::arrow::DictionaryArray>(
      dictionary(int8(), inner->type()), ArrowArray(int8(), "[2, 1, null, 0]"), inner);
  const auto taken = take_in(ArrayPtr(given), {.cast = true}).ValueOrDie();
  EXPECT_TRUE(
      SameArray(*taken.value, *Dictionary(inner->type(), "[0, null, null, 0]", R"(["a"])")));
}

TEST(IntakeOfNullCategories, MovesThemInEveryNestedType) {
  const TypePtr type = dictionary(int8(), utf8());
  const auto given = Dictionary(type, "[0, 1, 2]", R"(["a", null, "b"])");
  const auto expected = Dictionary(type, "[0, null, 1]", R"(["a", "b"])");
  for (const auto& nest : nestings()) expect_taken(nest(given), nest(expected));
}

TEST(IntakeOfNullCategories, RefusesThemAsKeysOfAMap) {
  const auto keys = Dictionary(dictionary(int8(), utf8()), "[0, 1]", R"(["a", null])");
  const auto map = ::arrow::MapArray::FromArrays(ArrowArray(::arrow::int32(), "[0, 2]"), keys,
                                                 ArrowArray(int8(), "[1, 2]"))
                       .ValueOrDie();
  EXPECT_EQ(take_in(ArrayPtr(map)).status(),
            ::arrow::Status::Invalid("Map: found 1 null keys, expected none."));
}

TEST(IntakeOfNullCategories, LeavesOneDictionaryToTheChunksThatShareIt) {
  const TypePtr type = dictionary(int8(), utf8());
  const auto whole = Dictionary(type, "[0, 1, 2, 0]", R"(["a", null, "b"])");
  const auto column = std::make_shared<::arrow::ChunkedArray>(
      ::arrow::ArrayVector{whole->Slice(0, 2), whole->Slice(2)});
  const auto fit = take_in(column).ValueOrDie().value;
  EXPECT_EQ(fit->chunk(0)->data()->dictionary, fit->chunk(1)->data()->dictionary);
  EXPECT_TRUE(SameArray(*fit->chunk(0), *Dictionary(type, "[0, null]", R"(["a", "b"])")));
  EXPECT_TRUE(SameArray(*fit->chunk(1), *Dictionary(type, "[1, 0]", R"(["a", "b"])")));
}

/// One chunk needs 64-bit offsets for the column that is cast. The dictionaries beside it keep
/// their type.
TEST(IntakeOfNullCategories, KeepsTheTypeOfEveryChunkBesideAWideCast) {
  const auto rows = [](const ArrayPtr& categories, const char* views) {
    return ArrayPtr(
        ::arrow::StructArray::Make({categories, ArrowArray(::arrow::utf8_view(), views)},
                                   std::vector<std::string>{"c", "v"})
            .ValueOrDie());
  };
  const TypePtr type = dictionary(int8(), utf8());
  const ::arrow::ArrayVector chunks = {
      rows(Dictionary(type, "[0]", R"(["a"])"), R"(["abcde"])"),
      rows(Dictionary(type, "[0, 1]", R"([null, "b"])"), R"(["c", "d"])")};
  extras::intake::Work work;
  work.cast = true;
  work.narrow_limit = 4;
  const auto taken =
      extras::intake::take_in_column("", chunks[0]->type(), chunks, work).ValueOrDie();
  EXPECT_EQ(taken.type->ToString(),
            "struct<c: dictionary<values=string, indices=int8, ordered=0>, v: large_string>");
  for (const auto& chunk : taken.chunks) EXPECT_TRUE(chunk->ValidateFull().ok());
}

TEST(IntakeOfNullCategories, LetsColumnsReturn) {
  const TypePtr type = dictionary(int8(), utf8());
  const auto one = Dictionary(type, "[0, 1, 2]", R"(["a", null, "b"])");
  const auto other = Dictionary(type, "[2, 1, 0, null]", R"([null, "a", "a"])");
  for (const ::arrow::ArrayVector& chunks :
       {::arrow::ArrayVector{one}, ::arrow::ArrayVector{one, other, one}}) {
    const auto column = std::make_shared<::arrow::ChunkedArray>(chunks);
    const auto taken = take_in(column).ValueOrDie().value;
    const hxArrayPtr written = io::arrow::core::to_numera(taken).ValueOrDie();
    const auto readable = extras::make_readable(written.get()).ValueOrDie();
    const auto back = io::arrow::core::to_arrow<::arrow::Array>(readable.get()).ValueOrDie();
    std::vector<std::string> texts;
    for (std::int64_t i = 0; i < back->length(); ++i) {
      texts.push_back(back->IsNull(i) ? "null" : std::string(bytes_of(*back, i)));
    }
    const std::vector<std::string> expected = {"a",    "null", "b", "a",    "a",
                                               "null", "null", "a", "null", "b"};
    const auto count = static_cast<std::int64_t>(back->length());
    EXPECT_EQ(texts, std::vector<std::string>(expected.begin(), expected.begin() + count));
    EXPECT_EQ(count, column->length());
  }
}

}  // namespace
}  // namespace numera::testing
