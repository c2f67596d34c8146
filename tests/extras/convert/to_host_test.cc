#include <arrow/array/builder_binary.h>
#include <arrow/record_batch.h>
#include <arrow/table.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "numera/core/to_numera.h"
#include "numera/core/util/table_error.h"
#include "numera/extras/convert.h"
#include "tests/support/arrow_values.h"
#include "tests/support/host_builder.h"
#include "tests/support/host_matchers.h"

namespace numera::testing {
namespace {

using extras::convert_to_host;
using io::arrow::core::to_numera;
using io::arrow::core::util::TableErrorStatusDetail;

std::shared_ptr<::arrow::RecordBatch> batch() {
  const auto numbers = ArrowArray(::arrow::int8(), "[1, null, 3]");
  const auto texts = ArrowArray(::arrow::utf8(), R"(["a", "b", null])");
  const auto schema =
      ::arrow::schema({::arrow::field("n", ::arrow::int8()), ::arrow::field("t", ::arrow::utf8())});
  return ::arrow::RecordBatch::Make(schema, 3, {numbers, texts});
}

TEST(ConvertToHost, GivesAnArrayAsTheCoreDoes) {
  const auto array = ArrowArray(::arrow::utf8(), R"(["a", null])");
  EXPECT_TRUE(SameHostValue(convert_to_host(array).ValueOrDie().get(),
                            to_numera(array).ValueOrDie().get()));
}

TEST(ConvertToHost, GivesAColumnAsTheCoreDoes) {
  const auto column = ArrowChunks(::arrow::int16(), {"[1, null]", "[3]"});
  EXPECT_TRUE(SameHostValue(convert_to_host(column).ValueOrDie().get(),
                            to_numera(column).ValueOrDie().get()));
}

TEST(ConvertToHost, GivesABatchAndATableAsTheCoreDoes) {
  const auto table = ::arrow::Table::FromRecordBatches({batch()}).ValueOrDie();
  const hxArrayPtr expected = to_numera(table).ValueOrDie();
  EXPECT_TRUE(SameHostValue(convert_to_host(batch()).ValueOrDie().get(), expected.get()));
  for (const size_t threads : {0U, 1U, 2U}) {
    EXPECT_TRUE(SameHostValue(convert_to_host(table, {.threads = threads}).ValueOrDie().get(),
                              expected.get()));
  }
}

TEST(ConvertToHost, TakesTheNullsOfASliceFromItsPlace) {
  const auto sliced = ArrowArray(::arrow::int8(), "[null, 1, null, 3]")->Slice(1);
  const auto same = ArrowArray(::arrow::int8(), "[1, null, 3]");
  EXPECT_TRUE(SameHostValue(convert_to_host(sliced).ValueOrDie().get(),
                            to_numera(same).ValueOrDie().get()));
}

TEST(ConvertToHost, AppendsTheCastsThatWereAskedFor) {
  const auto array = ArrowArray(::arrow::decimal128(3, 1), R"(["1.5"])");
  std::vector<extras::IntakeCast> casts = {{"before", ::arrow::int8(), ::arrow::int8()}};
  const auto value = convert_to_host(array, {.intake = {.cast = true}, .casts = &casts});
  EXPECT_TRUE(SameHostValue(value.ValueOrDie().get(),
                            to_numera(ArrowArray(::arrow::float64(), "[1.5]")).ValueOrDie().get()));
  ASSERT_EQ(casts.size(), 2U);
  EXPECT_EQ(extras::to_string(casts[1]), "decimal128(3, 1) to double");
}

TEST(ConvertToHost, RefusesAnArrayThatLostItsType) {
  const auto array = ArrowArray(::arrow::int8(), "[1]");
  array->data()->type = nullptr;
  EXPECT_EQ(convert_to_host(array).status().ToString(),
            "Invalid: Type: found a null pointer, expected a type.");
}

TEST(ConvertToHost, RefusesWhatIsNoData) {
  const auto refusal = [](const auto& value) { return convert_to_host(value).status().ToString(); };
  EXPECT_EQ(refusal(std::shared_ptr<::arrow::Array>()),
            "Invalid: Array: found a null pointer, expected a value.");
  EXPECT_EQ(refusal(std::shared_ptr<::arrow::ChunkedArray>()),
            "Invalid: Column: found a null pointer, expected a value.");
  EXPECT_EQ(refusal(std::shared_ptr<::arrow::RecordBatch>()),
            "Invalid: Table: found a null pointer, expected a value.");
  EXPECT_EQ(refusal(std::shared_ptr<::arrow::Table>()),
            "Invalid: Table: found a null pointer, expected a value.");
}

TEST(ConvertToHost, RefusesBatchesThatAreNotWhatTheirSchemaSays) {
  const auto refusal = [](std::shared_ptr<::arrow::Schema> schema,
                          ::arrow::ArrayDataVector columns) {
    return convert_to_host(::arrow::RecordBatch::Make(std::move(schema), 1, std::move(columns)))
        .status()
        .ToString();
  };
  const auto schema = ::arrow::schema({::arrow::field("n", ::arrow::int8())});
  const auto one = ArrowArray(::arrow::int8(), "[1]")->data();
  EXPECT_EQ(refusal(schema, {nullptr}),
            "Invalid: Column 'n' (index 0): Array: found a null pointer, expected an array with a "
            "type.. Detail: "
            "Internal");
  EXPECT_EQ(refusal(schema, {one, one}),
            "Invalid: Table: found 2 columns, expected 1, one for each field of the schema.");
  EXPECT_EQ(refusal(schema, {::arrow::ArrayData::Make(::arrow::int8(), 1, {nullptr})}),
            "Invalid: Column 'n' (index 0): Expected 2 buffers in array of type int8, got 1. "
            "Detail: Internal");
  EXPECT_EQ(
      refusal(schema, {ArrowArray(::arrow::utf8(), R"(["a"])")->data()}),
      "Invalid: Column 'n' (index 0): Chunk: found type string, expected int8.. Detail: Internal");
  EXPECT_EQ(refusal(schema, {ArrowArray(::arrow::int8(), "[1, 2]")->data()}),
            "Invalid: Column 'n' (index 0): found 2 elements, expected 1, the number of rows of "
            "the table.. Detail: "
            "Internal");
}

TEST(ConvertToHost, NamesTheColumnThatHasNoHostForm) {
  const auto decimals = ArrowArray(::arrow::decimal128(3, 1), R"(["1.5"])");
  const auto table = ::arrow::Table::Make(
      ::arrow::schema({::arrow::field("price", decimals->type())}), {decimals});
  const ::arrow::Status status = convert_to_host(table).status();
  EXPECT_EQ(
      status.ToString(),
      "Type error: Column 'price' (index 0): found type decimal128(3, 1), expected one that has "
      "a host form; casts were not asked for.. Detail: TypeError");
  const auto* detail = dynamic_cast<const TableErrorStatusDetail*>(status.detail().get());
  ASSERT_NE(detail, nullptr);
  EXPECT_EQ(detail->column_name(), "price");
}

TEST(ConvertToHost, NamesTheColumnWhoseTextIsNotUtf8) {
  ::arrow::StringBuilder builder;
  ASSERT_TRUE(builder.Append("\xFF").ok());
  const std::shared_ptr<::arrow::Array> texts = builder.Finish().ValueOrDie();
  const auto schema = ::arrow::schema(
      {::arrow::field("n", ::arrow::int8()), ::arrow::field("text", ::arrow::utf8())});
  const ::arrow::ArrayVector columns = {ArrowArray(::arrow::int8(), "[1]"), texts};
  const std::string expected =
      "Invalid: Column 'text' (index 1): Invalid UTF8 sequence at string index 0. Detail: Internal";
  EXPECT_EQ(convert_to_host(::arrow::Table::Make(schema, columns)).status().ToString(), expected);
  EXPECT_EQ(convert_to_host(::arrow::RecordBatch::Make(schema, 1, columns)).status().ToString(),
            expected);
}

}  // namespace
}  // namespace numera::testing
