// Texts and values as JSON.

#include "tools/json_value.h"

#include <arrow/api.h>
#include <arrow/extension/uuid.h>
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/arrow_values.h"
#include "tools/json.h"

namespace numera::testing {
namespace {

using tools::json_text;

/// All elements, separated by blanks.
std::string json_of(const ::arrow::Array& array) {
  std::string json;
  for (std::int64_t i = 0; i < array.length(); ++i) {
    json += (i == 0 ? "" : " ") + tools::json_value(array, i);
  }
  return json;
}

struct ElementJson {
  std::shared_ptr<::arrow::DataType> type;
  std::string values;
  std::string json;
};

void expect_json(const std::vector<ElementJson>& cases) {
  for (const ElementJson& one : cases) {
    EXPECT_EQ(json_of(*ArrowArray(one.type, one.values)), one.json) << one.type->ToString();
  }
}

TEST(JsonText, HasQuotationMarksAndEscapes) {
  EXPECT_EQ(json_text("a \"b\" \\ c\n\t\x01𝜆"), R"("a \"b\" \\ c\n\t\u0001𝜆")");
}

TEST(JsonText, IsUtf8WhateverBytesItIsMadeOf) {
  EXPECT_EQ(json_text("a\xFF\xC3\xF0\x9D"), R"("a\ufffd\ufffd\ufffd\ufffd")");
  EXPECT_EQ(json_text(std::string_view("\0", 1)), R"("\u0000")");
}

TEST(JsonText, CommandsNoTerminal) {
  EXPECT_EQ(json_text("\x1b[31m\x7F\xC2\x9B"), R"("\u001b[31m\u007f\u009b")");
}

TEST(JsonValue, OfNumbers) {
  expect_json({{::arrow::null(), "[null]", "null"},
               {::arrow::boolean(), "[true, false, null]", "true false null"},
               {::arrow::int8(), "[-128, null]", "-128 null"},
               {::arrow::uint64(), "[18446744073709551615]", "18446744073709551615"},
               {::arrow::float16(), "[0.1]", "0.1"},
               {::arrow::float32(), "[0.1, -2.5]", "0.1 -2.5"},
               {::arrow::float64(), "[0.1, 3, 1e300, -0.0]", "0.1 3 1e+300 -0"},
               {::arrow::duration(::arrow::TimeUnit::MILLI), "[90]", "90"}});
}

TEST(JsonValue, OfNaNAndInfinitiesIsNull) {
  ::arrow::DoubleBuilder builder;
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  ASSERT_TRUE(builder.AppendValues({std::nan(""), kInfinity, -kInfinity}).ok());
  EXPECT_EQ(json_of(**builder.Finish()), "null null null");
}

TEST(JsonValue, OfTextsIsTheText) {
  expect_json(
      {{::arrow::utf8(), R"(["a\"b", "null", null])", R"("a\"b" "null" null)"},
       {::arrow::large_utf8(), R"(["𝜆"])", R"("𝜆")"},
       {::arrow::utf8_view(), R"(["a text of more than twelve bytes"])",
        R"("a text of more than twelve bytes")"},
       {::arrow::dictionary(::arrow::int8(), ::arrow::utf8()), R"(["a", null])", R"("a" null)"}});
}

TEST(JsonValue, OfWhatJsonHasNoFormForIsTheTextThatPeopleRead) {
  expect_json(
      {{::arrow::binary(), R"(["AB\u0001"])", R"("0x414201")"},
       {::arrow::fixed_size_binary(2), R"(["AB"])", R"("0x4142")"},
       {::arrow::date32(), "[0]", R"("1970-01-01")"},
       {::arrow::time32(::arrow::TimeUnit::SECOND), "[86399]", R"("23:59:59")"},
       {::arrow::timestamp(::arrow::TimeUnit::SECOND, "UTC"), "[0]", R"("1970-01-01 00:00:00Z")"},
       {::arrow::decimal128(9, 2), R"(["1.50"])", R"("1.50")"},
       {::arrow::month_interval(), "[3]", R"("3M")"}});
}

TEST(JsonValue, OfNestedValuesIsNested) {
  const auto inner = ::arrow::struct_(
      {::arrow::field("x", ::arrow::int8()), ::arrow::field("y\n", ::arrow::binary())});
  expect_json({{::arrow::list(::arrow::int8()), "[[1, null], [], null]", "[1,null] [] null"},
               {::arrow::large_list(::arrow::utf8()), R"([["a", "b"]])", R"(["a","b"])"},
               {::arrow::list_view(::arrow::int8()), "[[1], [2, 3]]", "[1] [2,3]"},
               {::arrow::large_list_view(::arrow::int8()), "[[1], [2, 3]]", "[1] [2,3]"},
               {::arrow::fixed_size_list(::arrow::int8(), 2), "[[1, 2], [3, 4]]", "[1,2] [3,4]"},
               {inner, R"([{"x": 1, "y\n": "A"}, null])", R"({"x":1,"y\n":"0x41"} null)"},
               {::arrow::struct_({}), "[{}]", "{}"},
               {::arrow::map(::arrow::utf8(), ::arrow::int8()), R"([[["a", 1], ["b", null]], []])",
                R"([{"key":"a","value":1},{"key":"b","value":null}] [])"}});
}

TEST(JsonValue, OfSlicesIsThatOfTheirElements) {
  const auto lists = ArrowArray(::arrow::list(::arrow::int8()), "[[1], [2, 3], [4]]");
  EXPECT_EQ(json_of(*lists->Slice(1, 1)), "[2,3]");
}

TEST(JsonValue, OfRunsAndExtensionTypesIsWhatTheyStandFor) {
  const auto runs = ::arrow::RunEndEncodedArray::Make(3, ArrowArray(::arrow::int32(), "[2, 3]"),
                                                      ArrowArray(::arrow::utf8(), R"(["a", null])"))
                        .ValueOrDie();
  EXPECT_EQ(json_of(*runs), R"("a" "a" null)");
  const auto identifiers = ::arrow::ExtensionType::WrapArray(
      ::arrow::extension::uuid(),
      ArrowArray(::arrow::fixed_size_binary(16), R"(["0123456789abcdef"])"));
  EXPECT_EQ(json_of(*identifiers), R"("0x30313233343536373839616263646566")");
}

TEST(JsonValue, OfAUnionIsArrowsText) {
  const auto type = ::arrow::dense_union({::arrow::field("n", ::arrow::int8())});
  EXPECT_EQ(json_of(*ArrowArray(type, "[[0, 7]]")), R"("union{n: int8 = 7}")");
}

}  // namespace
}  // namespace numera::testing
