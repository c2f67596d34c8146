// The comparison that decides whether a column came back unchanged. It must find the first row that
// differs.

#include "tools/compare.h"

#include <arrow/api.h>
#include <gtest/gtest.h>

#include "tests/support/arrow_values.h"
#include "tests/support/offset_arrays.h"
#include "tests/tools/written_files.h"

namespace numera::testing {
namespace {

using tools::first_differing_row;
using Row = std::optional<std::int64_t>;

struct Difference {
  std::shared_ptr<::arrow::DataType> from;
  std::shared_ptr<::arrow::DataType> to;
  std::string went;
  std::string same;
  std::string other;  ///< first differs in row 1
};

std::vector<Difference> differences() {
  using namespace ::arrow;  // NOLINT: names of types
  const auto text = [](const auto& type) { return struct_({field("t", type)}); };
  const auto entry = struct_({field("key", large_utf8()), field("value", int8())});
  return {
      {int8(), int8(), "[1, 2, null]", "[1, 2, null]", "[1, 3, null]"},
      {int8(), int8(), "[1, 2, null]", "[1, 2, null]", "[1, null, 3]"},
      {float64(), float64(), "[1, NaN, 0]", "[1, NaN, 0]", "[1, 2, 0]"},
      {float64(), float64(), "[1, -0.0]", "[1, -0.0]", "[1, 0.0]"},
      {utf8(), large_utf8(), R"(["a", "b", null])", R"(["a", "b", null])", R"(["a", "c", null])"},
      {binary(), large_binary(), R"(["a", ""])", R"(["a", ""])", R"(["a", null])"},
      {fixed_size_binary(2), large_binary(), R"(["ab", null])", R"(["ab", null])",
       R"(["ab", "cd"])"},
      {date32(), timestamp(TimeUnit::SECOND), "[1, 2]", "[86400, 172800]", "[86400, 172801]"},
      {date64(), timestamp(TimeUnit::MILLI), "[86400000, 0]", "[86400000, 0]", "[86400000, 1]"},
      {duration(TimeUnit::NANO), int64(), "[1, 2]", "[1, 2]", "[1, 3]"},
      {list(utf8()), large_list(large_utf8()), R"([["a"], ["b"]])", R"([["a"], ["b"]])",
       R"([["a"], ["b", "b"]])"},
      {list(utf8()), large_list(large_utf8()), R"([["a"], ["b"]])", R"([["a"], ["b"]])",
       R"([["a"], ["c"]])"},
      {large_list(int8()), large_list(int8()), "[[1], []]", "[[1], []]", "[[1], null]"},
      {map(utf8(), int8()), large_list(entry), R"([[["a", 1]], [["b", 2]]])",
       R"([[{"key": "a", "value": 1}], [{"key": "b", "value": 2}]])",
       R"([[{"key": "a", "value": 1}], [{"key": "b", "value": 3}]])"},
      {text(utf8()), text(large_utf8()), R"([{"t": "a"}, {"t": "b"}])",
       R"([{"t": "a"}, {"t": "b"}])", R"([{"t": "a"}, {"t": "c"}])"},
      {boolean(), boolean(), "[true, false, null]", "[true, false, null]", "[true, true, null]"},
      {float32(), float32(), "[NaN, 0]", "[NaN, 0]", "[NaN, -0.0]"},
      {time64(TimeUnit::MICRO), time64(TimeUnit::MICRO), "[1, 2]", "[1, 2]", "[1, 3]"},
      {dictionary(int8(), utf8()), dictionary(int8(), large_utf8()), R"(["a", "b", null])",
       R"(["a", "b", null])", R"(["a", "a", null])"},
      {dictionary(int8(), utf8()), dictionary(int32(), large_utf8()),
       R"(["a", "a", "a", "a", "b"])", R"(["a", "a", "a", "a", "b"])",
       R"(["a", "b", "a", "a", "b"])"},
      {list(text(utf8())), large_list(text(large_utf8())), R"([[{"t": "a"}, null], [{"t": "b"}]])",
       R"([[{"t": "a"}, null], [{"t": "b"}]])", R"([[{"t": "a"}, null], [{"t": "c"}]])"},
      {list(text(utf8())), large_list(text(large_utf8())), R"([[{"t": "a"}, null], [{"t": "b"}]])",
       R"([[{"t": "a"}, null], [{"t": "b"}]])", R"([[{"t": "a"}, null], [{"t": null}]])"},
      {list(null()), large_list(float64()), "[[null], [null, null]]", "[[null], [null, null]]",
       "[[null], [null, 0]]"},
      {text(text(list(int8()))), text(text(large_list(int8()))),
       R"([{"t": {"t": [1]}}, {"t": {"t": [2]}}, {"t": null}, null])",
       R"([{"t": {"t": [1]}}, {"t": {"t": [2]}}, {"t": null}, null])",
       R"([{"t": {"t": [1]}}, {"t": {"t": []}}, {"t": null}, null])"},
      {list(float64()), list(float64()), "[[1], [NaN, 0]]", "[[1], [NaN, 0]]",
       "[[1], [NaN, -0.0]]"},
      {decimal128(9, 2), decimal128(9, 2), R"(["1.25", null])", R"(["1.25", null])",
       R"(["1.25", "0.00"])"},
  };
}

TEST(Compare, FindsNoRowWhereAllIsEqual) {
  for (const Difference& test : differences()) {
    SCOPED_TRACE(test.from->ToString() + " " + test.same);
    EXPECT_EQ(
        first_differing_row(*ArrowArray(test.from, test.went), *ArrowArray(test.to, test.same)),
        std::nullopt);
  }
}

TEST(Compare, FindsTheFirstRowThatDiffers) {
  for (const Difference& test : differences()) {
    SCOPED_TRACE(test.from->ToString() + " " + test.other);
    EXPECT_EQ(
        first_differing_row(*ArrowArray(test.from, test.went), *ArrowArray(test.to, test.other)),
        Row(1));
  }
}

/// The array as a slice of a longer one, of which other rows stand on both sides.
std::shared_ptr<::arrow::Array> sliced(const std::shared_ptr<::arrow::Array>& array,
                                       const std::shared_ptr<::arrow::Array>& others) {
  return ::arrow::Concatenate({others, others, array, others})
      .ValueOrDie()
      ->Slice(2 * others->length(), array->length());
}

TEST(Compare, FindsTheSameInSlices) {
  for (const Difference& test : differences()) {
    SCOPED_TRACE(test.from->ToString() + " " + test.other);
    const auto went = ArrowArray(test.from, test.went);
    const auto same = ArrowArray(test.to, test.same);
    const auto other = ArrowArray(test.to, test.other);
    EXPECT_EQ(first_differing_row(*sliced(went, went), *same), std::nullopt);
    EXPECT_EQ(first_differing_row(*went, *sliced(same, other)), std::nullopt);
    EXPECT_EQ(first_differing_row(*sliced(went, went), *other), Row(1));
    EXPECT_EQ(first_differing_row(*went, *sliced(other, same)), Row(1));
  }
}

TEST(Compare, FindsTheRowAmongMany) {
  constexpr std::int64_t kTimes = 99;
  for (const Difference& test : differences()) {
    const auto went = ArrowArray(test.from, test.went);
    const auto same = ArrowArray(test.to, test.same);
    const auto many = ::arrow::Concatenate(::arrow::ArrayVector(kTimes, went)).ValueOrDie();
    ::arrow::ArrayVector parts(kTimes, same);
    EXPECT_EQ(first_differing_row(*many, *::arrow::Concatenate(parts).ValueOrDie()), std::nullopt);
    for (const std::int64_t part : {kTimes - 1, kTimes / 2, std::int64_t{0}}) {
      SCOPED_TRACE(test.from->ToString() + " " + test.other + " " + std::to_string(part));
      parts[static_cast<size_t>(part)] = ArrowArray(test.to, test.other);
      EXPECT_EQ(first_differing_row(*many, *::arrow::Concatenate(parts).ValueOrDie()),
                Row(part * went->length() + 1));
    }
  }
}

/// The array with every buffer but the first moved by one byte.
std::shared_ptr<::arrow::Array> unaligned(const std::shared_ptr<::arrow::Array>& array) {
  const auto data = array->data()->Copy();
  for (size_t i = 1; i < data->buffers.size(); ++i) {
    data->buffers[i] =
        ::arrow::SliceBuffer(::arrow::Buffer::FromString(" " + data->buffers[i]->ToString()), 1);
  }
  return ::arrow::MakeArray(data);
}

TEST(Compare, ReadsUnalignedBuffers) {
  for (const Difference& test : differences()) {
    SCOPED_TRACE(test.from->ToString() + " " + test.other);
    const auto went = unaligned(ArrowArray(test.from, test.went));
    EXPECT_EQ(first_differing_row(*went, *unaligned(ArrowArray(test.to, test.same))), std::nullopt);
    EXPECT_EQ(first_differing_row(*went, *unaligned(ArrowArray(test.to, test.other))), Row(1));
  }
}

TEST(Compare, FindsTheEndOfTheShorter) {
  EXPECT_EQ(first_differing_row(*ArrowArray(::arrow::int8(), "[1, 2, 3]"),
                                *ArrowArray(::arrow::int8(), "[1, 2]")),
            Row(2));
}

std::shared_ptr<::arrow::Array> structs(const std::string& field, const std::string& valid) {
  const auto bits = ArrowArray(::arrow::boolean(), valid)->data()->buffers[1];
  return ::arrow::StructArray::Make({ArrowArray(::arrow::int8(), field)},
                                    {::arrow::field("x", ::arrow::int8())}, bits)
      .ValueOrDie();
}

TEST(Compare, LeavesFieldsOfNullStructsAside) {
  const auto went = structs("[1, 2, 3]", "[true, false, true]");
  EXPECT_EQ(first_differing_row(*went, *structs("[1, 9, 3]", "[true, false, true]")), std::nullopt);
  EXPECT_EQ(first_differing_row(*went, *structs("[1, 9, 4]", "[true, false, true]")), Row(2));
  EXPECT_EQ(first_differing_row(*went, *structs("[1, 2, 3]", "[true, true, true]")), Row(1));
}

std::shared_ptr<::arrow::Array> categories(const std::string& codes, const std::string& texts,
                                           const std::shared_ptr<::arrow::DataType>& type) {
  return ::arrow::DictionaryArray::FromArrays(ArrowArray(::arrow::int8(), codes),
                                              ArrowArray(type, texts))
      .ValueOrDie();
}

TEST(Compare, ReadsCategoriesAsTheirTexts) {
  struct Categories {
    const char* codes;
    const char* texts;
    const char* came_codes;
    const char* came_texts;
    Row row;
  };
  const Categories cases[] = {
      {"[0, 1, null]", R"(["a", "b"])", "[1, 0, null]", R"(["b", "a"])", std::nullopt},
      {"[0, 1, null]", R"(["a", "b"])", "[1, 1, null]", R"(["b", "a"])", 1},
      {"[0, 1, null]", R"(["a", "b"])", "[0, 1, null]", R"(["a", "b", "c"])", std::nullopt},
      {"[0, 1, null]", R"(["a", "b"])", "[0, 1, null]", R"(["a", "c"])", 1},
      {"[0, 1, 0]", R"(["a", "a"])", "[1, 1, 0]", R"(["a", "a"])", std::nullopt},
      {"[0, 1, 0]", R"(["a", "a"])", "[1, 1, 0]", R"(["b", "a"])", 2},
      {"[2, 0]", R"(["a", "b", "c"])", "[2, 0]", R"(["a", "b", "c"])", std::nullopt},
      {"[2, 0]", R"(["a", "b", "c"])", "[2, 1]", R"(["a", "b", "c"])", 1},
      {"[0, 1, null, 2]", R"(["a", null, "b"])", "[0, null, null, 1]", R"(["a", "b"])",
       std::nullopt},
      {"[0, 1, null, 2]", R"(["a", null, "b"])", "[0, 0, null, 1]", R"(["a", "b"])", 1},
      {"[0, 1, null, 2]", R"(["a", null, "b"])", "[0, null, null, 0]", R"(["a", "b"])", 3},
  };
  for (const auto& [codes, texts, came_codes, came_texts, row] : cases) {
    SCOPED_TRACE(std::string(codes) + texts + " " + came_codes + came_texts);
    EXPECT_EQ(first_differing_row(*categories(codes, texts, ::arrow::utf8()),
                                  *categories(came_codes, came_texts, ::arrow::large_utf8())),
              row);
  }
}

TEST(Compare, ReadsNoTextBehindTheShorterDictionary) {
  const auto went = categories("[0, 1, 0]", R"(["a", "b", "c"])", ::arrow::utf8());
  const auto shorter =
      ::arrow::DictionaryArray::FromArrays(ArrowArray(::arrow::int8(), "[0, 1, 0]"),
                                           LargeArray(::arrow::large_utf8(), "ab", {0, 1, 2}))
          .ValueOrDie();
  EXPECT_EQ(first_differing_row(*went, *shorter), std::nullopt);
}

TEST(Compare, TakesAllNaNsForEqual) {
  const auto went = ArrowArray(::arrow::uint64(), "[9221120237041090560, 9221120237041090560]");
  const auto same = ArrowArray(::arrow::uint64(), "[9221120237041090560, 18444492273895866369]");
  const auto other = ArrowArray(::arrow::uint64(), "[18444492273895866369, 0]");
  const auto doubles = [](const auto& bits) { return bits->View(::arrow::float64()).ValueOrDie(); };
  EXPECT_EQ(first_differing_row(*doubles(went), *doubles(same)), std::nullopt);
  EXPECT_EQ(first_differing_row(*doubles(went), *doubles(other)), Row(1));
}

TEST(Compare, ExpectsNullsForNulls) {
  const auto went = ArrowArray(::arrow::null(), "[null, null]");
  EXPECT_EQ(first_differing_row(*went, *ArrowArray(::arrow::float64(), "[null, null]")),
            std::nullopt);
  EXPECT_EQ(first_differing_row(*went, *ArrowArray(::arrow::float64(), "[null, 0]")), Row(1));
}

}  // namespace
}  // namespace numera::testing
