#include <arrow/api.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "numera/core/to_arrow.h"
#include "numera/core/to_arrow_table.h"
#include "numera/core/to_numera.h"
#include "numera/extras/encode/encode.h"
#include "tests/extras/encode/columns.h"
#include "tests/extras/encode/same_values.h"
#include "tests/support/arrow_values.h"
#include "tests/support/host_matchers.h"

namespace numera::testing {
namespace {

using ::arrow::DataType;
using ::arrow::Type;
using extras::make_readable;
using io::arrow::core::to_arrow;
using io::arrow::core::to_arrow_table;
using io::arrow::core::to_numera;
using TypePtr = std::shared_ptr<DataType>;

hxArrayPtr encoded(const std::shared_ptr<::arrow::ChunkedArray>& column) {
  const hxArrayPtr written = to_numera(column).ValueOrDie();
  auto readable = make_readable(written.get());
  EXPECT_TRUE(readable.ok()) << readable.status();
  return readable.ok() ? std::move(readable).ValueUnsafe() : nullptr;
}

void expect_round_trip(const std::shared_ptr<::arrow::ChunkedArray>& column) {
  const hxArrayPtr readable = encoded(column);
  ASSERT_NE(readable, nullptr);
  const auto back = to_arrow<::arrow::Array>(readable.get());
  ASSERT_TRUE(back.ok()) << back.status();
  const ::arrow::Status valid = (*back)->ValidateFull();
  ASSERT_TRUE(valid.ok()) << valid;
  EXPECT_TRUE(SameValues(*column, **back));
  EXPECT_TRUE(extras::returns_as(*column->type(), *(*back)->type()))
      << *column->type() << " returned as " << *(*back)->type();
  const bool merged = column->type()->id() == Type::DICTIONARY && column->num_chunks() > 1;
  if (merged) return;
  const auto stated = extras::returned_type(*column->type());
  ASSERT_TRUE(stated.has_value()) << *column->type();
  EXPECT_TRUE((*stated)->Equals(*(*back)->type()))
      << "stated " << **stated << "\nreturned " << *(*back)->type();
}

TEST(EncodeRoundTrip, EveryTypeReturnsFromOneChunk) {
  for (const ColumnType& row : column_types()) {
    SCOPED_TRACE(row.type->ToString());
    expect_round_trip(ArrowChunks(row.type, {row.json}));
    expect_round_trip(ArrowChunks(row.type, {"[]"}));
  }
}

TEST(EncodeRoundTrip, EveryTypeReturnsFromSeveralChunks) {
  for (const ColumnType& row : column_types()) {
    SCOPED_TRACE(row.type->ToString());
    expect_round_trip(ArrowChunks(row.type, {row.json, row.more_json}));
    expect_round_trip(ArrowChunks(row.type, {row.more_json, "[]", row.json, row.json}));
    expect_round_trip(ArrowChunks(row.type, {"[]", "[]"}));
  }
}

TEST(EncodeRoundTrip, PlainTypesReturnFromNoChunk) {
  for (const ColumnType& row : column_types()) {
    const Type::type id = row.type->id();
    if (id == Type::LIST || id == Type::LARGE_LIST || id == Type::STRUCT || id == Type::MAP) {
      continue;
    }
    SCOPED_TRACE(row.type->ToString());
    expect_round_trip(ArrowChunks(row.type, {}));
  }
}

TEST(EncodeRoundTrip, EveryTypeReturnsWithinEveryNestedType) {
  for (const ColumnType& row : column_types()) {
    SCOPED_TRACE(row.type->ToString());
    const auto first = ArrowArray(row.type, row.json);
    const auto second = ArrowArray(row.type, row.more_json);
    for (const auto& nest : nestings()) {
      expect_round_trip(std::make_shared<::arrow::ChunkedArray>(nest(first)));
      expect_round_trip(std::make_shared<::arrow::ChunkedArray>(
          ::arrow::ArrayVector{nest(first), nest(second), nest(first)}));
    }
  }
}

TEST(EncodeRoundTrip, DictionariesThatChunksShareReturnWithinEveryNestedType) {
  const auto type = ::arrow::dictionary(::arrow::int16(), ::arrow::utf8());
  const auto first = ArrowArray(type, R"(["b", null, "a"])");
  const auto second = ArrowArray(type, R"(["b", "a", null])");
  for (const auto& nest : nestings()) {
    expect_round_trip(std::make_shared<::arrow::ChunkedArray>(
        ::arrow::ArrayVector{nest(first), nest(second), nest(first)}));
  }
}

TEST(EncodeRoundTrip, NestedTypesReturnFromNestedTypes) {
  for (const auto& outer : nestings()) {
    for (const auto& middle : nestings()) {
      for (const auto& inner : nestings()) {
        const auto array = outer(middle(inner(ArrowArray(::arrow::utf8(), R"(["a", null, "é"])"))));
        SCOPED_TRACE(array->type()->ToString());
        expect_round_trip(std::make_shared<::arrow::ChunkedArray>(array));
        expect_round_trip(
            std::make_shared<::arrow::ChunkedArray>(::arrow::ArrayVector{array, array}));
      }
    }
  }
}

TEST(EncodeRoundTrip, WholeTablesReturnWithTheirNames) {
  ::arrow::FieldVector fields;
  ::arrow::ChunkedArrayVector columns;
  for (const ColumnType& row : column_types()) {
    const std::string name = "ß" + std::to_string(fields.size());
    fields.push_back(::arrow::field(name, row.type));
    columns.push_back(ArrowChunks(row.type, {row.json, row.more_json})->Slice(0, 4));
  }
  const auto table = ::arrow::Table::Make(::arrow::schema(fields), columns);
  const hxArrayPtr written = to_numera(table).ValueOrDie();
  const hxArrayPtr readable = make_readable(written.get()).ValueOrDie();
  const auto back = to_arrow_table(readable.get()).ValueOrDie();
  ASSERT_EQ(back->num_columns(), table->num_columns());
  ASSERT_TRUE(back->ValidateFull().ok());
  EXPECT_EQ(back->ColumnNames(), table->ColumnNames());
  for (int i = 0; i < table->num_columns(); ++i) {
    SCOPED_TRACE(fields[static_cast<size_t>(i)]->ToString());
    EXPECT_TRUE(SameValues(*table->column(i), *back->column(i)->chunk(0)));
  }
}

TEST(EncodeRoundTrip, TablesWithoutColumnsReturn) {
  const auto table = ::arrow::Table::Make(::arrow::schema({}), ::arrow::ChunkedArrayVector{});
  const hxArrayPtr written = to_numera(table).ValueOrDie();
  const hxArrayPtr readable = make_readable(written.get()).ValueOrDie();
  EXPECT_EQ(to_arrow_table(readable.get()).ValueOrDie()->num_columns(), 0);
}

TEST(EncodeRoundTrip, ReadableValuesStayAsTheyAre) {
  for (const ColumnType& row : column_types()) {
    SCOPED_TRACE(row.type->ToString());
    const hxArrayPtr readable = encoded(ArrowChunks(row.type, {row.json, row.more_json}));
    ASSERT_NE(readable, nullptr);
    const hxArrayPtr again = make_readable(readable.get()).ValueOrDie();
    EXPECT_TRUE(SameHostValue(again.get(), readable.get()));
  }
}

TEST(EncodeRoundTrip, TheResultOutlivesItsInput) {
  hxArrayPtr written =
      to_numera(ArrowChunks(::arrow::list(::arrow::utf8()), {R"([["a"], null])", R"([["b"]])"}))
          .ValueOrDie();
  const hxArrayPtr readable = make_readable(written.get()).ValueOrDie();
  written.reset();
  const auto back = to_arrow<::arrow::Array>(readable.get()).ValueOrDie();
  EXPECT_TRUE(SameArray(
      *back, *ArrowArray(::arrow::large_list(::arrow::large_utf8()), R"([["a"], null, ["b"]])")));
}

}  // namespace
}  // namespace numera::testing
