#include <arrow/array.h>
#include <arrow/extension/bool8.h>
#include <arrow/table.h>
#include <arrow/type.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "numera/core/limits.h"
#include "numera/core/util/table_error.h"
#include "numera/extras/intake/intake.h"
#include "tests/support/arrow_values.h"

namespace numera::testing {
namespace {

using ::arrow::Array;
using ::arrow::field;
using ::arrow::int32;
using ::arrow::int8;
using ::arrow::list;
using ::arrow::Status;
using ::arrow::StatusCode;
using ::arrow::utf8;
using extras::take_in;
using io::arrow::core::kMaxNestingLevels;
using ::testing::HasSubstr;
using TypePtr = std::shared_ptr<::arrow::DataType>;

Status refusal(const TypePtr& type, bool cast) {
  const auto empty = std::make_shared<::arrow::ChunkedArray>(::arrow::ArrayVector{}, type);
  return take_in(empty, {.cast = cast}).status();
}

TEST(IntakeRefusals, LeaveViewsOutWhereThoseAreAskedFor) {
  const auto refusal_but_of_views = [](const TypePtr& type) {
    const auto empty = std::make_shared<::arrow::ChunkedArray>(::arrow::ArrayVector{}, type);
    return take_in(empty, {.views = true}).status();
  };
  const TypePtr views[] = {::arrow::utf8_view(),
                           ::arrow::binary_view(),
                           ::arrow::list_view(int8()),
                           ::arrow::large_list_view(::arrow::utf8_view()),
                           ::arrow::struct_({field("v", ::arrow::utf8_view())}),
                           ::arrow::dictionary(int8(), ::arrow::utf8_view())};
  for (const TypePtr& type : views) EXPECT_EQ(refusal_but_of_views(type), Status::OK());
  EXPECT_EQ(refusal_but_of_views(list(::arrow::float16())),
            Status::TypeError("[]: found type halffloat, expected one that has a host form; casts "
                              "were not asked for."));
  EXPECT_EQ(refusal_but_of_views(::arrow::dictionary(int8(), ::arrow::binary_view())),
            Status::TypeError("found type dictionary<values=binary_view, indices=int8, ordered=0>, "
                              "expected one that has a host form; casts were not asked for."));
}

TEST(IntakeRefusals, NameTheTypeThatWouldNeedACast) {
  const TypePtr types[] = {::arrow::float16(),
                           ::arrow::month_interval(),
                           ::arrow::day_time_interval(),
                           ::arrow::month_day_nano_interval(),
                           ::arrow::decimal32(5, 2),
                           ::arrow::decimal64(5, 2),
                           ::arrow::decimal128(5, 2),
                           ::arrow::decimal256(5, 2),
                           ::arrow::extension::bool8(),
                           ::arrow::fixed_size_list(int8(), 2),
                           ::arrow::run_end_encoded(int32(), int8()),
                           ::arrow::utf8_view(),
                           ::arrow::binary_view(),
                           ::arrow::list_view(int8()),
                           ::arrow::large_list_view(int8()),
                           ::arrow::dictionary(int8(), int32())};
  for (const TypePtr& type : types) {
    EXPECT_EQ(refusal(type, false),
              Status::TypeError("found type ", type->ToString(),
                                ", expected one that has a host form; casts were not asked for."));
    EXPECT_EQ(refusal(type, true), Status::OK());
  }
}

TEST(IntakeRefusals, NameUnionsEvenWhereCastsAreAskedFor) {
  const ::arrow::FieldVector fields = {field("a", int8())};
  for (const TypePtr& type : {::arrow::sparse_union(fields), ::arrow::dense_union(fields)}) {
    for (const bool cast : {false, true}) {
      EXPECT_EQ(refusal(type, cast), Status::TypeError("found type ", type->ToString(),
                                                       ", expected one that has a host form."));
    }
  }
}

TEST(IntakeRefusals, NameThePath) {
  const TypePtr bad = ::arrow::dense_union({field("a", int8())});
  const std::pair<TypePtr, std::string> cases[] = {
      {list(bad), "[]: "},
      {::arrow::list_view(bad), "[]: "},
      {::arrow::fixed_size_list(bad, 2), "[]: "},
      {::arrow::struct_({field("ok", int8()), field("x", list(bad))}), ".x[]: "},
      {::arrow::map(bad, int8()), "{key}: "},
      {::arrow::map(int8(), ::arrow::struct_({field("u", bad)})), "{item}.u: "},
      {::arrow::dictionary(int8(), bad), "<dictionary>: "},
      {::arrow::run_end_encoded(int32(), bad), "<values>: "},
  };
  for (const auto& [type, path] : cases) {
    const Status status = refusal(type, true);
    EXPECT_EQ(status.code(), StatusCode::TypeError);
    EXPECT_EQ(status.message(),
              path + "found type " + bad->ToString() + ", expected one that has a host form.");
  }
}

TEST(IntakeRefusals, MeetTablesThatAreNotWhatTheirSchemaSays) {
  const auto schema = ::arrow::schema({field("a", int8()), field("b", int8())});
  const auto column = std::make_shared<::arrow::ChunkedArray>(ArrowArray(int8(), "[1]"));
  EXPECT_EQ(take_in(::arrow::Table::Make(nullptr, {column}, 1)).status(),
            Status::Invalid("Schema: found a null pointer, expected a value."));
  EXPECT_EQ(
      take_in(::arrow::Table::Make(schema, {column}, 1)).status(),
      Status::Invalid("Table: found 1 columns, expected 2, one for each field of the schema."));
  EXPECT_EQ(
      take_in(::arrow::Table::Make(schema, {column, column}, 2)).status().WithDetail(nullptr),
      Status::Invalid("Column 'a' (index 0): found 1 elements, expected 2, the number of rows of "
                      "the table."));
}

TEST(IntakeRefusals, CarryTheColumnOfATable) {
  const auto bad = ArrowArray(::arrow::float16(), "[1]");
  const auto table =
      ::arrow::Table::Make(::arrow::schema({field("a", int8()), field("b", ::arrow::float16())}),
                           {ArrowArray(int8(), "[1]"), bad});
  const Status status = take_in(table).status();
  EXPECT_EQ(status.message(),
            "Column 'b' (index 1): found type halffloat, expected one that has a host form; casts "
            "were not asked "
            "for.");
  const auto* detail =
      dynamic_cast<const io::arrow::core::util::TableErrorStatusDetail*>(status.detail().get());
  ASSERT_NE(detail, nullptr);
  EXPECT_STREQ(detail->type_id(), "TypeError");
  EXPECT_EQ(detail->column_name(), "b");
  EXPECT_EQ(detail->column_index(), 1);
}

TEST(IntakeRefusals, MeetNullPointers) {
  const auto expect_invalid = [](const Status& status) {
    EXPECT_EQ(status.code(), StatusCode::Invalid);
    EXPECT_THAT(status.message(), HasSubstr("found a null pointer"));
  };
  expect_invalid(take_in(std::shared_ptr<Array>()).status());
  expect_invalid(take_in(std::shared_ptr<::arrow::ChunkedArray>()).status());
  expect_invalid(take_in(std::shared_ptr<::arrow::Table>()).status());
  const auto childless = ArrowArray(list(int8()), "[[1]]");
  childless->data()->child_data[0] = nullptr;
  expect_invalid(take_in(childless).status());
}

TypePtr nested(int levels, TypePtr type) {
  for (int i = 0; i < levels; ++i) type = list(field("item", type));
  return type;
}

TEST(IntakeRefusals, BeginWhereNestingExceedsItsLimit) {
  EXPECT_EQ(refusal(nested(kMaxNestingLevels, int8()), false), Status::OK());
  const Status deeper = refusal(nested(kMaxNestingLevels + 1, int8()), false);
  EXPECT_EQ(deeper, Status::Invalid(
                        "Types: found more than 1024 levels of nesting, expected at most 1024."));
  EXPECT_EQ(refusal(nested(20'000, int8()), true).code(), StatusCode::Invalid);
  TypePtr dictionaries = utf8();
  for (int i = 0; i < 20'000; ++i) dictionaries = ::arrow::dictionary(int8(), dictionaries);
  EXPECT_EQ(refusal(dictionaries, true).code(), StatusCode::Invalid);
}

TEST(IntakeRefusals, NameTheTypeThatNestsDeeplyWithoutPrintingAllOfIt) {
  TypePtr type = int8();
  for (int i = 0; i < 10'000; ++i) type = list(type);
  EXPECT_EQ(refusal(::arrow::fixed_size_list(type, 1), false),
            Status::TypeError("found type fixed_size_list, expected one that has a host form; "
                              "casts were not asked for."));
}

TEST(IntakeRefusals, SpareValuesNestedAsDeepAsTheLimit) {
  const auto array =
      ::arrow::MakeArrayOfNull(nested(kMaxNestingLevels, int8()), 3).ValueOrDie()->Slice(1);
  const auto taken = take_in(array);
  ASSERT_TRUE(taken.ok()) << taken.status();
  EXPECT_EQ(taken->value->offset(), 0);
  EXPECT_EQ(taken->value->null_count(), 2);
}

}  // namespace
}  // namespace numera::testing
