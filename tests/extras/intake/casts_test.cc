#include <arrow/array.h>
#include <arrow/type.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "numera/extras/intake/intake.h"
#include "tests/extras/intake/casts.h"
#include "tests/support/arrow_values.h"

namespace numera::testing {
namespace {

using ::arrow::dictionary;
using ::arrow::field;
using ::arrow::int32;
using ::arrow::int8;
using ::arrow::list;
using ::arrow::utf8;
using ArrayPtr = std::shared_ptr<::arrow::Array>;
using TypePtr = std::shared_ptr<::arrow::DataType>;

std::vector<JsonCase> json_cases() {
  const std::string texts = R"(["a", null, "", "longer than twelve bytes", "é"])";
  const std::string lists = "[[1, 2], null, [], [null], [3, 4, 5]]";
  const std::string pairs = "[[1, 2], [null, 4], [5, 6]]";
  return {
      {::arrow::decimal32(5, 2), R"(["1.25", null, "-999.99"])", ::arrow::float64(),
       "[1.25, null, -999.99]"},
      {::arrow::decimal64(15, 3), R"(["1.250", null, "-123456789012.345"])", ::arrow::float64(),
       "[1.25, null, -123456789012.345]"},
      {::arrow::decimal128(30, 10), R"(["0.1000000000", null, "-12345678901234567890.0123456789"])",
       ::arrow::float64(), "[0.1, null, -12345678901234567890.0123456789]"},
      {::arrow::decimal256(70, 0),
       R"(["123456789012345678901234567890123456789012345678901234567890", null, "-7"])",
       ::arrow::float64(), "[1.2345678901234568e59, null, -7]"},
      {::arrow::float16(), "[1.5, null, -65504, 0.000030517578125]", ::arrow::float64(),
       "[1.5, null, -65504, 0.000030517578125]"},
      {::arrow::month_interval(), "[14, null, 0, -1]", utf8(), R"(["P14M", null, "P0D", "P-1M"])"},
      {::arrow::day_time_interval(), "[[1, 1500], null, [0, 0], [-3, -5], [0, 60000]]", utf8(),
       R"(["P1DT1.5S", null, "P0D", "P-3DT-0.005S", "PT60S"])"},
      {::arrow::month_day_nano_interval(),
       "[[1, 2, -3], null, [0, 0, 0], [0, 0, -9223372036854775808], [12, 0, 1000000000]]", utf8(),
       R"(["P1M2DT-0.000000003S", null, "P0D", "PT-9223372036.854775808S", "P12MT1S"])"},
      {::arrow::utf8_view(), texts, utf8(), texts},
      {::arrow::binary_view(), texts, ::arrow::binary(), texts},
      {::arrow::list_view(int32()), lists, list(int32()), lists},
      {::arrow::large_list_view(int32()), lists, ::arrow::large_list(int32()), lists},
      {::arrow::fixed_size_list(int32(), 2), pairs, list(int32()), pairs},
      {::arrow::fixed_size_list(int8(), 0), "[[], null, []]", list(int8()), "[[], null, []]"},
      {::arrow::list_view(::arrow::utf8_view()), R"([["a"], null, ["b", null]])", list(utf8()),
       R"([["a"], null, ["b", null]])"},
      {list(::arrow::decimal128(5, 1)), R"([["1.5"], null, ["2.5", null]])",
       list(::arrow::float64()), "[[1.5], null, [2.5, null]]"},
      {::arrow::large_list(::arrow::fixed_size_list(::arrow::float16(), 1)), "[[[1]], null, [[2]]]",
       ::arrow::large_list(list(::arrow::float64())), "[[[1]], null, [[2]]]"},
      {::arrow::struct_({field("v", ::arrow::utf8_view()), field("n", int8())}),
       R"([{"v": "x", "n": 1}, null, {"v": null, "n": 2}])",
       ::arrow::struct_({field("v", utf8()), field("n", int8())}),
       R"([{"v": "x", "n": 1}, null, {"v": null, "n": 2}])"},
      {::arrow::map(::arrow::utf8_view(), ::arrow::float16()), R"([[["k", 1]], null, [["l", 2]]])",
       ::arrow::map(utf8(), ::arrow::float64()), R"([[["k", 1]], null, [["l", 2]]])"},
      {dictionary(int8(), ::arrow::utf8_view()), R"(["a", null, "b", "a"])",
       dictionary(int8(), utf8()), R"(["a", null, "b", "a"])"},
  };
}

TEST(IntakeCasts, KeepTheValuesOfEveryType) {
  for (const JsonCase& one : json_cases()) {
    expect_cast(ArrowArray(one.from, one.json), ArrowArray(one.to, one.expected));
  }
}

TEST(IntakeCasts, RoundDecimalsToTheNearestDouble) {
  struct Row {
    TypePtr type;
    const char* text;
    double expected;
  };
  const Row rows[] = {
      {::arrow::decimal128(38, 20), "0.30000000000000004441", 0.30000000000000004441},
      {::arrow::decimal128(38, 0), "9007199254740993", 9007199254740992.0},
      {::arrow::decimal128(38, 0), "9007199254740995", 9007199254740996.0},
      {::arrow::decimal128(38, 37), "1.0000000000000001110223024625156540424", 1.0000000000000002},
      {::arrow::decimal128(38, 37), "1.0000000000000001110223024625156540423", 1.0},
      {::arrow::decimal64(18, 18), "0.123456789012345678", 0.123456789012345678},
      {::arrow::decimal256(76, 38), "-0.00000000000000000000000000000000000001", -1e-38},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text);
    const auto taken = cast(ArrowArray(row.type, std::string("[\"") + row.text + "\"]"));
    EXPECT_EQ(static_cast<const ::arrow::DoubleArray&>(*taken.array).Value(0), row.expected);
  }
}

TEST(IntakeCasts, ReachBeyondTheRangeOfDoubles) {
  const auto doubles = [](std::int32_t scale) {
    const auto type = ::arrow::decimal128(38, scale);
    auto data = ArrowArray(::arrow::decimal128(38, 0), R"(["7", "-7", "0"])")->data()->Copy();
    data->type = type;
    return cast(::arrow::MakeArray(data)).array;
  };
  EXPECT_TRUE(SameArray(*doubles(400), *ArrowArray(::arrow::float64(), "[0, -0.0, 0]")));
  EXPECT_TRUE(SameArray(*doubles(-400), *ArrowArray(::arrow::float64(), "[Inf, -Inf, 0]")));
  EXPECT_TRUE(SameArray(*doubles(-3), *ArrowArray(::arrow::float64(), "[7000, -7000, 0]")));
}

TEST(IntakeCasts, AreReportedWithPathAndTypes) {
  const auto views = ::arrow::utf8_view();
  const TypePtr type = ::arrow::struct_(
      {field("a", list(::arrow::struct_({field("price", ::arrow::decimal128(9, 2))}))),
       field("m", ::arrow::map(views, ::arrow::float16())), field("d", dictionary(int8(), views)),
       field("kept", utf8()), field("v", ::arrow::list_view(views))});
  const Taken taken = cast(ArrowArray(type, "[]"));
  EXPECT_EQ(taken.casts, (std::vector<std::string>{
                             ".a[].price: decimal128(9, 2) to double",
                             ".m{key}: string_view to string", ".m{item}: halffloat to double",
                             ".d<dictionary>: string_view to string", ".v[]: string_view to string",
                             ".v: list_view<item: string_view> to list<item: string>"}));
}

TEST(IntakeCasts, OfWholeValuesHaveAnEmptyPath) {
  EXPECT_EQ(cast(ArrowArray(::arrow::float16(), "[1]")).casts,
            std::vector<std::string>{"halffloat to double"});
  const auto runs = ::arrow::RunEndEncodedArray::Make(1, ArrowArray(int32(), "[1]"),
                                                      ArrowArray(::arrow::float16(), "[1]"))
                        .ValueOrDie();
  EXPECT_EQ(
      cast(runs).casts,
      (std::vector<std::string>{"<values>: halffloat to double",
                                "run_end_encoded<run_ends: int32, values: halffloat> to double"}));
}

TEST(IntakeCasts, AreReportedForEachFieldThatSharesADictionary) {
  const auto type = ::arrow::dictionary(::arrow::int8(), ::arrow::utf8_view());
  const ArrayPtr codes = std::make_shared<::arrow::DictionaryArray>(
      type, ArrowArray(::arrow::int8(), "[0]"), ArrowArray(::arrow::utf8_view(), R"(["a"])"));
  const ArrayPtr fields =
      ::arrow::StructArray::Make({codes, codes}, std::vector<std::string>{"a", "b"}).ValueOrDie();
  EXPECT_EQ(cast(fields).casts,
            (std::vector<std::string>{".a<dictionary>: string_view to string",
                                      ".b<dictionary>: string_view to string"}));
}

}  // namespace
}  // namespace numera::testing
