#include <arrow/array/array_dict.h>
#include <arrow/table.h>
#include <arrow/util/key_value_metadata.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "numera/core/util/table_error.h"
#include "numera/extras/convert.h"
#include "numera/host/memory.h"
#include "tests/support/arrow_values.h"
#include "tests/support/envelopes.h"
#include "tests/support/host_builder.h"

namespace numera::testing {
namespace {

using ::arrow::field;
using extras::convert_to_arrow;
using extras::convert_to_arrow_table;
using extras::convert_to_host;
using io::arrow::core::util::TableErrorStatusDetail;
using TypePtr = std::shared_ptr<::arrow::DataType>;

TEST(ConvertToArrow, TakesOrdinaryValues) {
  const auto array = convert_to_arrow(Strings({u"a", std::nullopt})).ValueOrDie();
  EXPECT_TRUE(SameArray(*array, *ArrowArray(::arrow::large_utf8(), R"(["a", null])")));
}

TEST(ConvertToArrow, KeepsTheHostValueAliveAsLongAsTheResult) {
  const size_t before = host::memory::LiveArrays();
  auto array = convert_to_arrow(Column<double>({1, 2})).ValueOrDie();
  EXPECT_TRUE(SameArray(*array, *ArrowArray(::arrow::float64(), "[1, 2]")));
  EXPECT_GT(host::memory::LiveArrays(), before);
  array.reset();
  EXPECT_EQ(host::memory::LiveArrays(), before);
}

TEST(ConvertToArrow, DestroysTheValueThatItRefuses) {
  const size_t before = host::memory::LiveArrays();
  EXPECT_EQ(
      convert_to_arrow(Complex<double>({1, 1}, {{1, 2}})).status().ToString(),
      "Type error: Value: found a complex 1-by-1 double array, expected real numbers that are "
      "not sparse.");
  EXPECT_EQ(host::memory::LiveArrays(), before);
}

/// A type whose values return as another one, and values of it.
struct Case {
  TypePtr type;
  const char* json;
};

const Case kReturning[] = {
    {::arrow::utf8(), R"(["a", null, "\u00e4"])"},
    {::arrow::utf8(), "[]"},
    {::arrow::large_utf8(), R"(["a", null])"},
    {::arrow::binary(), R"(["a", null])"},
    {::arrow::fixed_size_binary(2), R"(["ab", null])"},
    {::arrow::date32(), "[1, null, -2]"},
    {::arrow::date64(), "[86400000, null]"},
    {::arrow::duration(::arrow::TimeUnit::MICRO), "[5, null]"},
    {::arrow::null(), "[null, null]"},
    {::arrow::timestamp(::arrow::TimeUnit::NANO, "UTC"), "[1, null]"},
    {::arrow::list(field("element", ::arrow::utf8(), false)), R"([["a"], null, []])"},
    {::arrow::large_list(::arrow::date32()), "[[1, null], null]"},
    {::arrow::map(::arrow::utf8(), ::arrow::int8()), R"([[["a", 1], ["b", null]], null, []])"},
    {::arrow::map(::arrow::int8(), ::arrow::list(::arrow::date32()), true), "[[[1, [2]]]]"},
    {::arrow::struct_({field("d", ::arrow::date32(), false), field("t", ::arrow::utf8())}),
     R"([{"d": 1, "t": "a"}, {"d": 2, "t": null}])"},
    {::arrow::struct_(
         {field("n", ::arrow::int8(), true, ::arrow::KeyValueMetadata::Make({"unit"}, {"m"}))}),
     R"([{"n": 1}, null])"},
    {::arrow::dictionary(::arrow::int8(), ::arrow::utf8(), true), R"(["a", null, "b", "a"])"},
    {::arrow::dictionary(::arrow::uint16(), ::arrow::large_utf8()), R"(["a"])"},
};

TEST(ConvertToArrow, GivesExactlyTheTypeThatIsAskedFor) {
  for (const Case& row : kReturning) {
    SCOPED_TRACE(row.type->ToString(true));
    const auto array = ArrowArray(row.type, row.json);
    hxArrayPtr host = convert_to_host(array).ValueOrDie();
    const auto back = convert_to_arrow(std::move(host), row.type);
    ASSERT_TRUE(back.ok()) << back.status();
    EXPECT_TRUE(SameArray(**back, *array));
    EXPECT_TRUE((*back)->ValidateFull().ok()) << (*back)->ValidateFull();
  }
}

TEST(ConvertToArrow, GivesTextAndBytesAsViews) {
  const auto texts = convert_to_arrow(Strings({u"a", std::nullopt}), ::arrow::utf8_view());
  EXPECT_TRUE(SameArray(*texts.ValueOrDie(), *ArrowArray(::arrow::utf8_view(), R"(["a", null])")));
  const auto bytes = convert_to_arrow(Cell({Column<std::uint8_t>({'a'})}), ::arrow::binary_view());
  EXPECT_TRUE(SameArray(*bytes.ValueOrDie(), *ArrowArray(::arrow::binary_view(), R"(["a"])")));
}

TEST(ConvertToArrow, GivesDictionariesOfSeveralChunksTheirIndexType) {
  const TypePtr type = ::arrow::dictionary(::arrow::int32(), ::arrow::utf8(), true);
  const auto column = ArrowChunks(type, {R"(["a", "b"])", R"(["c", "a"])"});
  const auto back = convert_to_arrow(convert_to_host(column).ValueOrDie(), type).ValueOrDie();
  EXPECT_TRUE(back->type()->Equals(*type)) << back->type()->ToString();
  const auto& codes = static_cast<const ::arrow::DictionaryArray&>(*back);
  EXPECT_TRUE(SameArray(*codes.indices(), *ArrowArray(::arrow::int32(), "[0, 1, 2, 0]")));
  EXPECT_TRUE(SameArray(*codes.dictionary(), *ArrowArray(::arrow::utf8(), R"(["a", "b", "c"])")));
}

struct Refused {
  const char* name;
  TypePtr from;
  const char* json;
  TypePtr to;
  std::string text;
};

std::string no_cast(const std::string& path, const std::string& from, const std::string& to) {
  return "Type error: " + path + ": found type " + from + ", expected " + to +
         " or a type that can be cast to it without loss.";
}

const Refused kRefused[] = {
    {"another number", ::arrow::int8(), "[1]", ::arrow::int16(),
     no_cast("Column", "int8", "int16")},
    {"text as bytes", ::arrow::utf8(), R"(["a"])", ::arrow::binary(),
     no_cast("Column", "large_string", "binary")},
    {"times of day as dates", ::arrow::timestamp(::arrow::TimeUnit::SECOND), "[86401]",
     ::arrow::date32(),
     "Invalid: Column: found times of day, expected whole days for date32[day]."},
    {"timestamps with a time zone as dates", ::arrow::timestamp(::arrow::TimeUnit::SECOND, "UTC"),
     "[86400]", ::arrow::date32(), no_cast("Column", "timestamp[s, tz=UTC]", "date32[day]")},
    {"null entries of a map",
     ::arrow::list(::arrow::struct_({field("a", ::arrow::int8()), field("b", ::arrow::int8())})),
     "[[null]]", ::arrow::map(::arrow::int8(), ::arrow::int8()),
     "Invalid: Column[]: found 1 nulls, expected none in a field that is not nullable."},
    {"null keys of a map",
     ::arrow::list(::arrow::struct_({field("a", ::arrow::int8()), field("b", ::arrow::int8())})),
     R"([[{"a": null, "b": 1}]])", ::arrow::map(::arrow::int8(), ::arrow::int8()),
     "Invalid: Column[].key: found 1 nulls, expected none in a field that is not nullable."},
    {"a dictionary of text as one of bytes", ::arrow::dictionary(::arrow::int16(), ::arrow::utf8()),
     R"(["a"])", ::arrow::dictionary(::arrow::int8(), ::arrow::binary()),
     no_cast("Column<dictionary>", "large_string", "binary")},
    {"numbers as nulls", ::arrow::float64(), "[1, null]", ::arrow::null(),
     "Invalid: Column: found values that are not null, expected only nulls for the null type."},
    {"within lists", ::arrow::list(::arrow::int8()), "[[1]]", ::arrow::list(::arrow::int16()),
     no_cast("Column[]", "int8", "int16")},
    {"within structs", ::arrow::struct_({field("a", ::arrow::int8())}), R"([{"a": 1}])",
     ::arrow::struct_({field("a", ::arrow::utf8())}), no_cast("Column.a", "int8", "string")},
    {"other names", ::arrow::struct_({field("a", ::arrow::int8())}), R"([{"a": 1}])",
     ::arrow::struct_({field("b", ::arrow::int8())}),
     no_cast("Column", "struct<a: int8>", "struct<b: int8>")},
    {"nulls within", ::arrow::list(::arrow::int8()), "[[null]]",
     ::arrow::list(field("item", ::arrow::int8(), false)),
     "Invalid: Column[]: found 1 nulls, expected none in a field that is not nullable."},
    {"numbers as lists", ::arrow::int8(), "[1]", ::arrow::list(::arrow::int8()),
     no_cast("Column", "int8", "list<item: int8>")},
    {"lists of numbers as maps", ::arrow::list(::arrow::int8()), "[[1]]",
     ::arrow::map(::arrow::int8(), ::arrow::int8()),
     no_cast("Column", "large_list<item: int8>", "map<int8, int8>")},
    {"structs of more fields as map entries",
     ::arrow::list(::arrow::struct_({field("a", ::arrow::int8())})), R"([[{"a": 1}]])",
     ::arrow::map(::arrow::int8(), ::arrow::int8()),
     no_cast("Column[]", "struct<a: int8>", "struct<key: int8 not null, value: int8>")},
    {"text as a dictionary", ::arrow::utf8(), R"(["a"])",
     ::arrow::dictionary(::arrow::int8(), ::arrow::utf8()),
     no_cast("Column", "large_string", "dictionary<values=string, indices=int8, ordered=0>")},
    {"a type without a type", ::arrow::list(::arrow::int8()), "[[1]]",
     ::arrow::list(std::shared_ptr<::arrow::DataType>()),
     "Invalid: Column: found a null pointer instead of a type or more than 2048 levels of types, "
     "expected a complete type of at most 2048 levels."},
};

TEST(ConvertToArrow, RefusesTypesThatNoCastLeadsToWithoutLoss) {
  for (const Refused& row : kRefused) {
    SCOPED_TRACE(row.name);
    hxArrayPtr host = convert_to_host(ArrowArray(row.from, row.json)).ValueOrDie();
    EXPECT_EQ(convert_to_arrow(std::move(host), row.to).status().ToString(), row.text);
  }
}

std::shared_ptr<::arrow::Table> table() {
  const auto schema =
      ::arrow::schema({field("day", ::arrow::date32(), false), field("text", ::arrow::utf8())},
                      ::arrow::KeyValueMetadata::Make({"origin"}, {"test"}));
  return ::arrow::Table::Make(schema, {ArrowArray(::arrow::date32(), "[1, 2]"),
                                       ArrowArray(::arrow::utf8(), R"(["a", null])")});
}

TEST(ConvertToArrowTable, GivesExactlyTheSchemaThatIsAskedFor) {
  for (const size_t threads : {0U, 1U, 2U}) {
    hxArrayPtr host = convert_to_host(table()).ValueOrDie();
    const auto back = convert_to_arrow_table(std::move(host), table()->schema(), threads);
    ASSERT_TRUE(back.ok()) << back.status();
    EXPECT_TRUE(SameTable(**back, *table()));
  }
}

TEST(ConvertToArrowTable, GivesTheTypesOfTheHostWithoutASchema) {
  hxArrayPtr host = convert_to_host(table()).ValueOrDie();
  const auto back = convert_to_arrow_table(std::move(host)).ValueOrDie();
  EXPECT_EQ(back->schema()->ToString(), "day: timestamp[s]\ntext: large_string");
}

TEST(ConvertToArrowTable, NamesTheColumnThatCannotBeCast) {
  hxArrayPtr host = convert_to_host(table()).ValueOrDie();
  const auto schema =
      ::arrow::schema({field("day", ::arrow::date32()), field("text", ::arrow::int8())});
  const ::arrow::Status status = convert_to_arrow_table(std::move(host), schema).status();
  EXPECT_EQ(status.message(),
            "Column 'text' (index 1): found type large_string, expected int8 or a type that can be "
            "cast to it without loss.");
  const auto* detail = dynamic_cast<const TableErrorStatusDetail*>(status.detail().get());
  ASSERT_NE(detail, nullptr);
  EXPECT_EQ(detail->column_name(), "text");
  EXPECT_EQ(detail->column_index(), 1);
}

TEST(ConvertToArrowTable, IsToldFromOtherValues) {
  const auto array = [](hxArrayPtr value) { return convert_to_arrow(std::move(value)).status(); };
  const auto as_table = [](hxArrayPtr value) {
    return convert_to_arrow_table(std::move(value)).status();
  };
  EXPECT_EQ(array(convert_to_host(table()).ValueOrDie()).ToString(),
            "Type error: Value: found an encoded value of the kind 'table', expected an array.");
  EXPECT_EQ(array(BufferEnvelope({1})).ToString(),
            "Type error: Value: found an encoded value of the kind 'buffer', expected an array.");
  EXPECT_EQ(as_table(Scalar(1.0)).ToString(),
            "Type error: Value: found an encoded value of the kind 'array', expected a table.");
  EXPECT_EQ(array(nullptr).ToString(), "Invalid: Value: found a null pointer, expected an array.");
}

TEST(ConvertToArrowTable, RefusesASchemaOfOtherColumns) {
  hxArrayPtr host = convert_to_host(table()).ValueOrDie();
  const auto schema = ::arrow::schema({field("day", ::arrow::date32())});
  EXPECT_EQ(convert_to_arrow_table(std::move(host), schema).status().ToString(),
            "Invalid: Table: found the columns day, text, expected day.");
}

}  // namespace
}  // namespace numera::testing
