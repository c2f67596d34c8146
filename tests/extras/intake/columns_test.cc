#include "numera/extras/intake/column.h"

#include <arrow/array.h>
#include <arrow/extension/bool8.h>
#include <arrow/extension/opaque.h>
#include <arrow/table.h>
#include <arrow/util/key_value_metadata.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "numera/extras/intake/intake.h"
#include "numera/host/memory.h"
#include "tests/extras/intake/intake_checks.h"
#include "tests/support/arrow_values.h"

namespace numera::testing {
namespace {

using ::arrow::field;
using ::arrow::int32;
using ::arrow::int8;
using ::arrow::list;
using ::arrow::utf8;
using extras::take_in;
using extras::intake::take_in_column;
using extras::intake::Work;
using TypePtr = std::shared_ptr<::arrow::DataType>;

/// Takes in chunks with a limit of 4 for 32-bit offsets.
::arrow::Result<extras::intake::TakenColumn> take_in_narrowly(const TypePtr& type,
                                                              const ::arrow::ArrayVector& chunks) {
  Work work;
  work.cast = true;
  work.narrow_limit = 4;
  return take_in_column("", type, chunks, work);
}

struct WideCase {
  ::arrow::ArrayVector chunks;
  TypePtr type;
  std::vector<std::string> expected;
};

std::shared_ptr<::arrow::Array> coded(const std::string& codes, const TypePtr& type,
                                      const std::string& values) {
  return ::arrow::DictionaryArray::FromArrays(ArrowArray(int8(), codes), ArrowArray(type, values))
      .ValueOrDie();
}

TEST(IntakeColumns, GetLargeOffsetsWhereOneChunkNeedsThem) {
  const TypePtr pairs = ::arrow::fixed_size_list(int8(), 2);
  const TypePtr views = ::arrow::list_view(int8());
  const WideCase cases[] = {
      {{ArrowArray(::arrow::utf8_view(), R"(["ab"])"),
        ArrowArray(::arrow::utf8_view(), R"(["abc", "de"])")},
       ::arrow::large_utf8(),
       {R"(["ab"])", R"(["abc", "de"])"}},
      {{ArrowArray(::arrow::binary_view(), R"(["abcde"])")},
       ::arrow::large_binary(),
       {R"(["abcde"])"}},
      {{ArrowArray(::arrow::month_interval(), "[1000]")}, ::arrow::large_utf8(), {R"(["P1000M"])"}},
      {{ArrowArray(pairs, "[[1, 2]]"), ArrowArray(pairs, "[[1, 2], [3, 4], [5, 6]]")},
       ::arrow::large_list(int8()),
       {"[[1, 2]]", "[[1, 2], [3, 4], [5, 6]]"}},
      {{ArrowArray(views, "[[1, 2, 3, 4, 5]]")},
       ::arrow::large_list(int8()),
       {"[[1, 2, 3, 4, 5]]"}},
      {{coded("[0, 0, 0]", ::arrow::binary(), R"(["ab"])")},
       ::arrow::large_binary(),
       {R"(["ab", "ab", "ab"])"}},
      {{coded("[0, null, 0]", list(utf8()), R"([["a", "bc"], ["d"]])")},
       ::arrow::large_list(::arrow::large_utf8()),
       {R"([["a", "bc"], null, ["a", "bc"]])"}},
  };
  for (const WideCase& one : cases) {
    SCOPED_TRACE(one.chunks[0]->type()->ToString());
    const auto taken = take_in_narrowly(one.chunks[0]->type(), one.chunks);
    ASSERT_TRUE(taken.ok()) << taken.status();
    EXPECT_TRUE(taken->type->Equals(*one.type)) << *taken->type;
    ASSERT_EQ(taken->chunks.size(), one.expected.size());
    for (size_t i = 0; i < one.expected.size(); ++i) {
      EXPECT_TRUE(SameArray(*taken->chunks[i], *ArrowArray(one.type, one.expected[i])));
      EXPECT_EQ(Unfit(*taken->chunks[i]->data()), "");
    }
    EXPECT_EQ(taken->casts.back().to->ToString(), one.type->ToString());
  }
}

TEST(IntakeColumns, KeepNarrowOffsetsThatJustSuffice) {
  const auto views = ArrowArray(::arrow::utf8_view(), R"(["abc", "d"])");
  EXPECT_TRUE(take_in_narrowly(views->type(), {views})->type->Equals(*utf8()));
  const auto pairs = ArrowArray(::arrow::fixed_size_list(int8(), 2), "[[1, 2], [3, 4]]");
  EXPECT_TRUE(take_in_narrowly(pairs->type(), {pairs})->type->Equals(*list(int8())));
}

TEST(IntakeColumns, RefuseMapsThatNeedLargeOffsets) {
  const TypePtr map = ::arrow::map(int8(), int8());
  const auto maps = coded("[0, 0, 0]", map, "[[[1, 2], [3, 4]]]");
  EXPECT_EQ(take_in_narrowly(maps->type(), {maps}).status(),
            ::arrow::Status::Invalid(
                "Map: found 6 entries, expected at most 4, because maps have 32-bit offsets."));
}

TEST(IntakeColumns, HaveOneTypeAndReportEachCastOnce) {
  const TypePtr type = list(::arrow::float16());
  const auto column = ArrowChunks(type, {"[[1]]", "[]", "[null, [2]]"});
  const auto taken = take_in(column, {.cast = true}).ValueOrDie();
  EXPECT_TRUE(taken.value->ValidateFull().ok());
  EXPECT_TRUE(
      taken.value->Equals(*ArrowChunks(list(::arrow::float64()), {"[[1]]", "[]", "[null, [2]]"})));
  EXPECT_EQ(taken.value->num_chunks(), 3);
  ASSERT_EQ(taken.casts.size(), 1U);
  EXPECT_EQ(to_string(taken.casts[0]), "[]: halffloat to double");
}

TEST(IntakeColumns, WithoutChunksAreCastAllTheSame) {
  const auto column = ArrowChunks(::arrow::fixed_size_list(::arrow::utf8_view(), 3), {});
  const auto taken = take_in(column, {.cast = true}).ValueOrDie();
  EXPECT_TRUE(taken.value->type()->Equals(*list(utf8())));
  EXPECT_EQ(taken.value->length(), 0);
  EXPECT_EQ(taken.casts.size(), 2U);
}

TEST(IntakeColumns, WithoutChunksHaveTheStorageOfExtensionTypesAtAnyDepth) {
  const TypePtr truth = ::arrow::extension::bool8();
  const std::pair<TypePtr, TypePtr> cases[] = {
      {truth, int8()},
      {list(truth), list(int8())},
      {::arrow::large_list(truth), ::arrow::large_list(int8())},
      {::arrow::fixed_size_list(truth, 2), list(int8())},
      {::arrow::list_view(truth), list(int8())},
      {::arrow::struct_({field("a", truth), field("b", utf8())}),
       ::arrow::struct_({field("a", int8()), field("b", utf8())})},
      {::arrow::map(utf8(), truth), ::arrow::map(utf8(), int8())},
      {::arrow::dictionary(int8(), truth), int8()},
      {::arrow::run_end_encoded(int32(), truth), int8()},
      {::arrow::extension::opaque(list(truth), "type", "vendor"), list(int8())},
  };
  for (const auto& [type, expected] : cases) {
    SCOPED_TRACE(type->ToString());
    const auto taken = take_in(ArrowChunks(type, {}), {.cast = true});
    ASSERT_TRUE(taken.ok()) << taken.status();
    EXPECT_TRUE(taken->value->type()->Equals(*expected)) << taken->value->type()->ToString();
    EXPECT_EQ(taken->value->length(), 0);
  }
}

TEST(IntakeTables, KeepNamesNullabilityMetadataAndRows) {
  const auto metadata = ::arrow::key_value_metadata({"k"}, {"v"});
  const auto schema =
      ::arrow::schema({field("a", int32(), false, metadata), field("b", ::arrow::utf8_view())},
                      ::arrow::key_value_metadata({"s"}, {"t"}));
  const auto table = ::arrow::Table::Make(
      schema,
      {ArrowArray(int32(), "[1, 2, 3]"), ArrowArray(::arrow::utf8_view(), R"(["x", null, "y"])")});
  const auto taken = take_in(table->Slice(1), {.cast = true}).ValueOrDie();
  EXPECT_TRUE(taken.value->ValidateFull().ok());
  EXPECT_TRUE(taken.value->schema()->Equals(
      *::arrow::schema({field("a", int32(), false, metadata), field("b", utf8())},
                       ::arrow::key_value_metadata({"s"}, {"t"})),
      /*check_metadata=*/true));
  EXPECT_TRUE(SameArray(*taken.value->column(0)->chunk(0), *ArrowArray(int32(), "[2, 3]")));
  EXPECT_TRUE(SameArray(*taken.value->column(1)->chunk(0), *ArrowArray(utf8(), R"([null, "y"])")));
  EXPECT_EQ(taken.value->column(0)->chunk(0)->offset(), 0);
  ASSERT_EQ(taken.casts.size(), 1U);
  EXPECT_EQ(to_string(taken.casts[0]), "b: string_view to string");
}

TEST(IntakeTables, AreLeftBetweenColumnsByAnInterrupt) {
  const auto column = ArrowArray(int8(), "[1]");
  const auto table = ::arrow::Table::Make(::arrow::schema({field("a", int8()), field("b", int8())}),
                                          {column, column});
  int checks = 0;
  host::memory::SetInterruptCheck([&] {
    if (++checks == 2) throw host::memory::InterruptException();
  });
  EXPECT_THROW(static_cast<void>(take_in(table)), host::memory::InterruptException);
  host::memory::SetInterruptCheck({});
  EXPECT_EQ(checks, 2);
}

TEST(IntakeTables, MayHaveRowsAndNoColumns) {
  const auto table = ::arrow::Table::Make(::arrow::schema({}), ::arrow::ChunkedArrayVector{}, 7);
  EXPECT_EQ(take_in(table).ValueOrDie().value->num_rows(), 7);
}

}  // namespace
}  // namespace numera::testing
