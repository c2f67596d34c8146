// What the comparison makes of nulls, and of the values behind them.

#include <arrow/api.h>
#include <gtest/gtest.h>

#include "tests/support/arrow_values.h"
#include "tests/tools/written_files.h"
#include "tools/compare.h"

namespace numera::testing {
namespace {

using tools::first_differing_row;
using Row = std::optional<std::int64_t>;

struct HiddenValue {
  std::shared_ptr<::arrow::DataType> from;
  std::shared_ptr<::arrow::DataType> to;
  std::string went;
  std::string same;   ///< differs in row 1 only
  std::string other;  ///< differs in rows 1 and 2
};

/// Values of which the second one is null.
std::shared_ptr<::arrow::Array> hiding(const std::shared_ptr<::arrow::DataType>& type,
                                       const std::string& json) {
  const auto data = ArrowArray(type, json)->data()->Copy();
  data->buffers[0] = ArrowArray(::arrow::boolean(), "[true, false, true]")->data()->buffers[1];
  data->null_count = 1;
  return ::arrow::MakeArray(data);
}

std::vector<HiddenValue> hidden_values() {
  using namespace ::arrow;  // NOLINT: names of types
  const auto f = [](const auto& type) { return struct_({field("f", type)}); };
  const auto entry = struct_({field("key", int8()), field("value", int8())});
  return {
      {int8(), int8(), "[1, 2, 3]", "[1, 9, 3]", "[1, 9, 4]"},
      {boolean(), boolean(), "[true, true, true]", "[true, false, true]", "[true, false, false]"},
      {float64(), float64(), "[NaN, NaN, -0.0]", "[NaN, 2, -0.0]", "[NaN, 2, 0.0]"},
      {utf8(), large_utf8(), R"(["a", "bb", "c"])", R"(["a", "", "c"])", R"(["a", "", "d"])"},
      {large_utf8(), large_utf8(), R"(["a", "b", ""])", R"(["a", "x", ""])", R"(["a", "x", "c"])"},
      {fixed_size_binary(1), large_binary(), R"(["a", "b", "c"])", R"(["a", "", "c"])",
       R"(["a", "", "d"])"},
      {date32(), timestamp(TimeUnit::SECOND), "[0, 1, 2]", "[0, 1, 172800]", "[0, 1, 172801]"},
      {date64(), timestamp(TimeUnit::MILLI), "[0, 86400000, 0]", "[0, 1, 0]", "[0, 1, 1]"},
      {duration(TimeUnit::NANO), int64(), "[1, 2, 3]", "[1, 9, 3]", "[1, 9, 4]"},
      {dictionary(int8(), utf8()), dictionary(int8(), large_utf8()), R"(["a", "b", "a"])",
       R"(["a", "a", "a"])", R"(["a", "a", "c"])"},
      {list(int8()), large_list(int8()), "[[1], [2], [3]]", "[[1], [8, 9], [3]]",
       "[[1], [8, 9], [4]]"},
      {list(int8()), large_list(int8()), "[[1], [], [3]]", "[[1], [8], [3]]", "[[1], [8], [4]]"},
      {large_list(utf8()), large_list(large_utf8()), R"([["a"], ["b"], []])", R"([["a"], [], []])",
       R"([["a"], [], [null]])"},
      {map(int8(), int8()), large_list(entry), "[[[1, 1]], [[2, 2]], [[3, 3]]]",
       R"([[{"key": 1, "value": 1}], [], [{"key": 3, "value": 3}]])",
       R"([[{"key": 1, "value": 1}], [], [{"key": 3, "value": 4}]])"},
      {f(utf8()), f(large_utf8()), R"([{"f": "a"}, {"f": "b"}, {"f": null}])",
       R"([{"f": "a"}, {"f": null}, {"f": null}])", R"([{"f": "a"}, {"f": null}, {"f": "c"}])"},
      {f(list(int8())), f(large_list(int8())), R"([{"f": [1]}, {"f": [2, 2]}, {"f": [3]}])",
       R"([{"f": [1]}, {"f": [9]}, {"f": [3]}])", R"([{"f": [1]}, {"f": [9]}, {"f": [4]}])"},
      {f(f(decimal32(5, 0))), f(f(decimal32(5, 0))),
       R"([{"f": null}, {"f": {"f": "2"}}, {"f": {"f": "3"}}])",
       R"([{"f": null}, {"f": {"f": "9"}}, {"f": {"f": "3"}}])",
       R"([{"f": null}, {"f": {"f": "9"}}, {"f": {"f": "4"}}])"},
  };
}

TEST(CompareNulls, LeavesValuesBehindNullsAside) {
  for (const HiddenValue& test : hidden_values()) {
    SCOPED_TRACE(test.from->ToString() + " " + test.other);
    const auto went = hiding(test.from, test.went);
    EXPECT_EQ(first_differing_row(*went, *hiding(test.to, test.same)), std::nullopt);
    EXPECT_EQ(first_differing_row(*went, *hiding(test.to, test.other)), Row(2));
  }
}

std::shared_ptr<::arrow::Array> reversed(const std::shared_ptr<::arrow::Array>& array) {
  ::arrow::ArrayVector rows;
  for (std::int64_t i = array->length(); i > 0; --i) rows.push_back(array->Slice(i - 1, 1));
  return ::arrow::Concatenate(rows).ValueOrDie();
}

TEST(CompareNulls, FindsRowsBeforeHiddenValues) {
  for (const HiddenValue& test : hidden_values()) {
    SCOPED_TRACE(test.from->ToString() + " " + test.other);
    const auto went = reversed(hiding(test.from, test.went));
    EXPECT_EQ(first_differing_row(*went, *reversed(hiding(test.to, test.same))), std::nullopt);
    EXPECT_EQ(first_differing_row(*went, *reversed(hiding(test.to, test.other))), Row(0));
  }
}

TEST(CompareNulls, FindsNullsOfOneSideOnly) {
  for (const HiddenValue& test : hidden_values()) {
    SCOPED_TRACE(test.from->ToString() + " " + test.went);
    EXPECT_EQ(first_differing_row(*hiding(test.from, test.went), *ArrowArray(test.to, test.same)),
              Row(1));
    EXPECT_EQ(first_differing_row(*ArrowArray(test.from, test.went), *hiding(test.to, test.same)),
              Row(1));
  }
}

TEST(CompareNulls, ReadsNoCodesBehindNulls) {
  const auto coded = [](const std::string& codes, const auto& type) {
    const auto data = hiding(::arrow::int8(), codes)->data()->Copy();
    data->type = ::arrow::dictionary(::arrow::int8(), type);
    data->dictionary = ArrowArray(type, R"(["a", "b"])")->data();
    return ::arrow::MakeArray(data);
  };
  const auto went = coded("[0, 100, 1]", ::arrow::utf8());
  EXPECT_EQ(first_differing_row(*went, *coded("[0, -1, 1]", ::arrow::large_utf8())), std::nullopt);
  EXPECT_EQ(first_differing_row(*went, *coded("[0, -1, 0]", ::arrow::large_utf8())), Row(2));
}

}  // namespace
}  // namespace numera::testing
