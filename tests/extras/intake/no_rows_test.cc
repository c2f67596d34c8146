/// \file
/// Columns without chunks, as a filter that keeps nothing or a query without rows returns them.
/// They go to the host and come back with their types.

#include <arrow/api.h>
#include <arrow/extension/bool8.h>
#include <gtest/gtest.h>

#include <memory>
#include <utility>
#include <vector>

#include "numera/core/to_arrow.h"
#include "numera/core/to_arrow_table.h"
#include "numera/core/to_numera.h"
#include "numera/extras/encode/encode.h"
#include "numera/extras/intake/intake.h"
#include "tests/extras/encode/columns.h"
#include "tests/extras/intake/intake_checks.h"
#include "tests/support/arrow_values.h"

namespace numera::testing {
namespace {

using namespace ::arrow;  // NOLINT(google-build-using-namespace)
using extras::take_in;
using io::arrow::core::to_arrow;
using io::arrow::core::to_arrow_table;
using io::arrow::core::to_numera;
using TypePtr = std::shared_ptr<DataType>;

/// Takes in a column without chunks. Expects that it comes back with the `returned_type` of
/// `taken_type`.
void expect_to_return(const TypePtr& type, const TypePtr& taken_type) {
  SCOPED_TRACE(type->ToString());
  const auto taken = take_in(ArrowChunks(type, {}), {.cast = true}).ValueOrDie();
  EXPECT_TRUE(taken.value->type()->Equals(*taken_type)) << *taken.value->type();
  EXPECT_TRUE(taken.value->ValidateFull().ok());
  for (const auto& chunk : taken.value->chunks()) EXPECT_EQ(Unfit(*chunk->data()), "");
  const hxArrayPtr written = to_numera(taken.value).ValueOrDie();
  const auto readable = extras::make_readable(written.get());
  ASSERT_TRUE(readable.ok()) << readable.status();
  const auto back = to_arrow<Array>(readable->get()).ValueOrDie();
  EXPECT_EQ(back->length(), 0);
  EXPECT_EQ(back->type()->ToString(), (*extras::returned_type(*taken_type))->ToString());
}

TEST(IntakeOfNoRows, KeepsTheTypeOfEveryColumn) {
  for (const ColumnType& row : column_types()) expect_to_return(row.type, row.type);
}

TEST(IntakeOfNoRows, KeepsTheTypeOfEveryColumnWithinEveryNestedType) {
  for (const ColumnType& row : column_types()) {
    for (const auto& nest : nestings()) {
      const TypePtr type = nest(nest(ArrowArray(row.type, "[]")))->type();
      expect_to_return(type, type);
    }
  }
}

TEST(IntakeOfNoRows, KeepsTheTypeThatAColumnIsCastTo) {
  const TypePtr truth = extension::bool8();
  const std::pair<TypePtr, TypePtr> rows[] = {
      {fixed_size_list(decimal128(5, 2), 2), list(float64())},
      {list_view(utf8_view()), list(utf8())},
      {large_list_view(truth), large_list(int8())},
      {struct_({field("a", float16()), field("b", list(truth))}),
       struct_({field("a", float64()), field("b", list(int8()))})},
      {map(utf8(), binary_view()), map(utf8(), binary())},
      {dictionary(int8(), list(int16())), list(int16())},
      {dictionary(int8(), struct_({field("a", dictionary(int16(), utf8_view()))})),
       struct_({field("a", dictionary(int16(), utf8()))})},
      {list(dictionary(int8(), dictionary(uint16(), utf8()))), list(dictionary(uint16(), utf8()))},
      {run_end_encoded(int32(), list(month_interval())), list(utf8())},
  };
  for (const auto& [type, taken_type] : rows) expect_to_return(type, taken_type);
}

TEST(IntakeOfNoRows, GivesOneEmptyChunkToNestedColumnsAlone) {
  const std::pair<TypePtr, int> rows[] = {
      {int8(), 0},
      {utf8(), 0},
      {dictionary(int8(), utf8()), 0},
      {list(int8()), 1},
      {large_list(int8()), 1},
      {struct_({field("a", int8())}), 1},
      {map(utf8(), int8()), 1},
  };
  for (const auto& [type, chunks] : rows) {
    EXPECT_EQ(take_in(ArrowChunks(type, {})).ValueOrDie().value->num_chunks(), chunks) << *type;
  }
}

TEST(IntakeOfNoRows, LetsATableReturn) {
  const auto schema = ::arrow::schema(
      {field("n", int32()), field("l", list(utf8())), field("s", struct_({field("d", date32())}))});
  ChunkedArrayVector columns;
  for (const auto& field : schema->fields()) columns.push_back(ArrowChunks(field->type(), {}));
  const auto taken = take_in(Table::Make(schema, columns)).ValueOrDie();
  EXPECT_TRUE(taken.value->ValidateFull().ok());
  const hxArrayPtr written = to_numera(taken.value).ValueOrDie();
  const auto readable = extras::make_readable(written.get());
  ASSERT_TRUE(readable.ok()) << readable.status();
  const auto back = to_arrow_table(readable->get()).ValueOrDie();
  EXPECT_EQ(back->num_rows(), 0);
  EXPECT_TRUE(back->schema()->Equals(
      ::arrow::schema({field("n", int32()), field("l", large_list(large_utf8())),
                       field("s", struct_({field("d", timestamp(TimeUnit::SECOND))}))})))
      << *back->schema();
}

}  // namespace
}  // namespace numera::testing
