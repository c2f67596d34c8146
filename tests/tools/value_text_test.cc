// Values as the commands head, tail and show print them.

#include "tools/value_text.h"

#include <arrow/api.h>
#include <arrow/extension/uuid.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <limits>

#include "tests/support/arrow_values.h"
#include "tests/tools/written_files.h"
#include "tools/characters.h"
#include "tools/short_type.h"

namespace numera::testing {
namespace {

using ::arrow::TimeUnit;
using tools::kUnlimited;

/// The texts of all elements, one a line; nulls as "(null)".
std::string texts_of(const ::arrow::Array& array, size_t width = kUnlimited) {
  std::string texts;
  for (std::int64_t i = 0; i < array.length(); ++i) {
    texts += (i == 0 ? "" : "\n") + tools::value_text(array, i, width).value_or("(null)");
  }
  return texts;
}

struct ElementText {
  std::shared_ptr<::arrow::DataType> type;
  std::string json;
  std::string texts;
};

void expect_texts(const std::vector<ElementText>& cases) {
  for (const ElementText& one : cases) {
    EXPECT_EQ(texts_of(*ArrowArray(one.type, one.json)), one.texts) << one.type->ToString();
  }
}

TEST(ValueText, OfNumbers) {
  expect_texts({
      {::arrow::null(), "[null]", "(null)"},
      {::arrow::boolean(), "[true, false, null]", "true\nfalse\n(null)"},
      {::arrow::int8(), "[-128, 127, null]", "-128\n127\n(null)"},
      {::arrow::int16(), "[-32768]", "-32768"},
      {::arrow::int32(), "[-2147483648]", "-2147483648"},
      {::arrow::int64(), "[-9223372036854775808]", "-9223372036854775808"},
      {::arrow::uint8(), "[255]", "255"},
      {::arrow::uint16(), "[65535]", "65535"},
      {::arrow::uint32(), "[4294967295]", "4294967295"},
      {::arrow::uint64(), "[18446744073709551615]", "18446744073709551615"},
      {::arrow::float16(), "[0.1, 1.5, 65504, 0.000061, 2048, 0.3333]",
       "0.1\n1.5\n65504\n0.000061\n2048\n0.3333"},
      {::arrow::float32(), "[0.1, 100000, 16777216, -0.0]", "0.1\n100000\n16777216\n-0"},
      {::arrow::float64(), "[0.1, 1e5, 1e14, 1e300, 0.00001, 1e-9, 2]",
       "0.1\n100000\n100000000000000\n1e+300\n0.00001\n1e-09\n2"},
      {::arrow::decimal32(5, 2), R"(["-1.50", null])", "-1.50\n(null)"},
      {::arrow::decimal64(12, 3), R"(["1234567.125"])", "1234567.125"},
      {::arrow::decimal128(38, 0), R"(["99999999999999999999999999999999999999"])",
       "99999999999999999999999999999999999999"},
      {::arrow::decimal256(60, 1), R"(["12345678901234567890123456789012345678901234567890.5"])",
       "12345678901234567890123456789012345678901234567890.5"},
  });
}

TEST(ValueText, OfWhatIsNoNumber) {
  ::arrow::DoubleBuilder doubles;
  ASSERT_TRUE(doubles.AppendValues({std::nan(""), HUGE_VAL, -HUGE_VAL}).ok());
  EXPECT_EQ(texts_of(*doubles.Finish().ValueOrDie()), "NaN\ninf\n-inf");
  ::arrow::FloatBuilder floats;
  ASSERT_TRUE(floats.AppendValues({std::nanf(""), HUGE_VALF, -HUGE_VALF}).ok());
  EXPECT_EQ(texts_of(*floats.Finish().ValueOrDie()), "NaN\ninf\n-inf");
  ::arrow::HalfFloatBuilder halves;
  ASSERT_TRUE(halves.AppendValues(std::vector<std::uint16_t>{0x7E00, 0x7C00, 0xFC00}).ok());
  EXPECT_EQ(texts_of(*halves.Finish().ValueOrDie()), "NaN\ninf\n-inf");
}

TEST(ValueText, OfTimes) {
  const std::int64_t day = 86400;
  const std::string second_before_1970 = "[-1, 0, null]";
  expect_texts({
      {::arrow::date32(), "[0, -1, 11016, -25509, 47540, -719529, -719528, 2932897]",
       "1970-01-01\n1969-12-31\n2000-02-29\n1900-02-28\n2100-02-28\n-0001-12-31\n0000-01-01\n"
       "10000-01-01"},
      {::arrow::date64(), "[0, -86400000]", "1970-01-01\n1969-12-31"},
      {::arrow::time32(TimeUnit::SECOND), "[0, 86399, null]", "00:00:00\n23:59:59\n(null)"},
      {::arrow::time32(TimeUnit::MILLI), "[1, 1000]", "00:00:00.001\n00:00:01"},
      {::arrow::time64(TimeUnit::MICRO), "[1, 1000, 1000000]",
       "00:00:00.000001\n00:00:00.001\n00:00:01"},
      {::arrow::time64(TimeUnit::NANO), "[1, 1000, 86399000000000]",
       "00:00:00.000000001\n00:00:00.000001\n23:59:59"},
      {::arrow::timestamp(TimeUnit::SECOND), second_before_1970,
       "1969-12-31 23:59:59\n1970-01-01 00:00:00\n(null)"},
      {::arrow::timestamp(TimeUnit::MILLI), "[-1]", "1969-12-31 23:59:59.999"},
      {::arrow::timestamp(TimeUnit::MICRO, "Asia/Tokyo"), "[-1, " + std::to_string(day) + "000000]",
       "1969-12-31 23:59:59.999999Z\n1970-01-02 00:00:00Z"},
      {::arrow::timestamp(TimeUnit::NANO), "[-9223372036854775808, 9223372036854775807]",
       "1677-09-21 00:12:43.145224192\n2262-04-11 23:47:16.854775807"},
      {::arrow::duration(TimeUnit::SECOND), "[-90, null]", "-90 s\n(null)"},
      {::arrow::duration(TimeUnit::MILLI), "[90]", "90 ms"},
      {::arrow::duration(TimeUnit::MICRO), "[90]", "90 us"},
      {::arrow::duration(TimeUnit::NANO), "[-9223372036854775808]", "-9223372036854775808 ns"},
      {::arrow::month_interval(), "[14, null]", "14M\n(null)"},
      {::arrow::day_time_interval(), "[[1, 2]]", "1d2ms"},
      {::arrow::month_day_nano_interval(), "[[1, 2, 3]]", "1M2d3ns"},
  });
}

TEST(ValueText, OfTimesThatArrowHasNoTextFor) {
  expect_texts({
      {::arrow::time32(TimeUnit::SECOND), "[86400]", "86400 s"},
      {::arrow::time64(TimeUnit::NANO), "[-1]", "-1 ns"},
      {::arrow::date32(), "[11248738]", "11248738 day"},
      {::arrow::date64(), "[971890963200000]", "971890963200000 ms"},
      {::arrow::timestamp(TimeUnit::SECOND, "UTC"), "[-9223372036854775808]",
       "-9223372036854775808 s"},
  });
}

TEST(ValueText, OfTexts) {
  const std::string json = R"(["tea", "", "null", "\"null\"", "say \"a\"", "a\nb\u001b", null])";
  for (const auto& type : {::arrow::utf8(), ::arrow::large_utf8(), ::arrow::utf8_view()}) {
    EXPECT_EQ(texts_of(*ArrowArray(type, json)),
              "tea\n\n\"null\"\n\"\\\"null\\\"\"\nsay \"a\"\na?b?\n(null)")
        << type->ToString();
  }
}

TEST(ValueText, OfBytes) {
  for (const auto& type : {::arrow::binary(), ::arrow::large_binary(), ::arrow::binary_view()}) {
    EXPECT_EQ(texts_of(*ArrowArray(type, R"(["", "az", null])")), "0x\n0x617a\n(null)");
  }
  expect_texts({{::arrow::fixed_size_binary(2), R"(["az", null])", "0x617a\n(null)"}});
}

TEST(ValueText, OfNestedValues) {
  const std::string lists = R"([["a", null, "null"], [], null])";
  const std::string texts = "[\"a\", null, \"null\"]\n[]\n(null)";
  const auto person = ::arrow::struct_(
      {::arrow::field("name", ::arrow::utf8()), ::arrow::field("known", ::arrow::boolean())});
  expect_texts({
      {::arrow::list(::arrow::utf8()), lists, texts},
      {::arrow::large_list(::arrow::utf8()), lists, texts},
      {::arrow::list_view(::arrow::utf8()), lists, texts},
      {::arrow::large_list_view(::arrow::utf8()), lists, texts},
      {::arrow::fixed_size_list(::arrow::int8(), 2), "[[1, null], null]", "[1, null]\n(null)"},
      {person, R"([{"name": "x", "known": true}, {"name": null, "known": false}, null])",
       "{name: \"x\", known: true}\n{name: null, known: false}\n(null)"},
      {::arrow::map(::arrow::utf8(), ::arrow::int8()), R"([[["a", 1], ["b", null]], [], null])",
       "{\"a\": 1, \"b\": null}\n{}\n(null)"},
      {::arrow::list(person), R"([[{"name": "q\"\\", "known": true}, null]])",
       R"([{name: "q\"\\", known: true}, null])"},
      {::arrow::struct_({}), "[{}]", "{}"},
      {::arrow::dense_union({::arrow::field("a", ::arrow::int8())}), "[[0, 5], [0, null]]",
       "union{a: int8 = 5}\n(null)"},
      {::arrow::sparse_union({::arrow::field("a", ::arrow::int8())}), "[[0, 5]]",
       "union{a: int8 = 5}"},
  });
}

TEST(ValueText, OfSlicesIsThatOfTheirElements) {
  const auto pairs = ::arrow::fixed_size_list(::arrow::int8(), 2);
  EXPECT_EQ(texts_of(*ArrowArray(pairs, "[[1, 2], [3, 4], [5, 6]]")->Slice(1, 1)), "[3, 4]");
  const auto map = ::arrow::map(::arrow::int8(), ::arrow::int8());
  EXPECT_EQ(texts_of(*ArrowArray(map, "[[[1, 2]], [[3, 4]]]")->Slice(1)), "{3: 4}");
  const auto point = ::arrow::struct_({::arrow::field("x", ::arrow::int8())});
  EXPECT_EQ(texts_of(*ArrowArray(point, R"([{"x": 1}, {"x": 2}])")->Slice(1)), "{x: 2}");
  EXPECT_EQ(texts_of(*ArrowArray(::arrow::list(::arrow::int8()), "[[1], [2]]")->Slice(1)), "[2]");
}

TEST(ValueText, OfCodesIsWhatTheyStandFor) {
  const auto codes = ArrowArray(::arrow::int8(), "[2, 0, 1, null]");
  const auto texts = ArrowArray(::arrow::utf8(), R"(["a", null, "null"])");
  const auto column = ::arrow::DictionaryArray::FromArrays(codes, texts).ValueOrDie();
  EXPECT_EQ(texts_of(*column), "\"null\"\na\n(null)\n(null)");
  EXPECT_EQ(texts_of(*column->Slice(1, 1)), "a");
}

TEST(ValueText, OfRunsIsTheirValue) {
  const auto ends = ArrowArray(::arrow::int32(), "[2, 3, 5]");
  const auto values = ArrowArray(::arrow::utf8(), R"(["a", null, "b"])");
  const auto runs = ::arrow::RunEndEncodedArray::Make(5, ends, values).ValueOrDie();
  EXPECT_EQ(texts_of(*runs), "a\na\n(null)\nb\nb");
  EXPECT_EQ(texts_of(*runs->Slice(1, 2)), "a\n(null)");
}

TEST(ValueText, OfExtensionTypesIsThatOfTheirStorage) {
  const auto storage = ArrowArray(::arrow::fixed_size_binary(16), R"(["0123456789abcdef", null])");
  EXPECT_EQ(texts_of(*::arrow::ExtensionType::WrapArray(::arrow::extension::uuid(), storage)),
            "0x30313233343536373839616263646566\n(null)");
}

TEST(ValueText, IsCutToAWidth) {
  struct Cut {
    std::shared_ptr<::arrow::DataType> type;
    std::string json;
    size_t width;
    std::string text;
  };
  const auto numbers = ::arrow::list(::arrow::int32());
  const auto texts = ::arrow::list(::arrow::utf8());
  const auto person = ::arrow::struct_(
      {::arrow::field("name", ::arrow::utf8()), ::arrow::field("known", ::arrow::boolean())});
  const Cut cases[] = {
      {::arrow::utf8(), R"(["abcdef"])", 6, "abcdef"},
      {::arrow::utf8(), R"(["abcdefg"])", 6, "abcde…"},
      {::arrow::int64(), "[1234567]", 6, "1234567"},
      {::arrow::binary(), R"(["abc"])", 8, "0x616263"},
      {::arrow::binary(), R"(["abcd"])", 8, "0x61626…"},
      {numbers, "[[1, 2, 3]]", 9, "[1, 2, 3]"},
      {numbers, "[[1, 2, 33]]", 9, "[1, 2, …]"},
      {numbers, "[[1, 2, 3, 4]]", 9, "[1, 2, …]"},
      {numbers, "[[1234, 5]]", 6, "[…]"},
      {texts, R"([["abcdef", "b"]])", 12, R"(["abcd…", …])"},
      {texts, R"([["a", "bcdef"]])", 12, R"(["a", …])"},
      {::arrow::list(numbers), "[[[1, 2, 3, 4], [5]]]", 12, "[[1, …], …]"},
      {person, R"([{"name": "a", "known": true}])", 12, R"({name: …, …})"},
      {person, R"([{"name": "a", "known": true}])", 14, R"({name: "a", …})"},
      {::arrow::map(::arrow::utf8(), ::arrow::int8()), R"([[["a", 1], ["b", 2]]])", 11,
       R"({"a": 1, …})"},
  };
  for (const Cut& one : cases) {
    EXPECT_EQ(texts_of(*ArrowArray(one.type, one.json), one.width), one.text) << one.json;
  }
}

TEST(ValueText, IsAlignedToTheRightWhereItIsANumberOrATime) {
  for (const auto& type :
       {::arrow::int8(), ::arrow::float16(), ::arrow::decimal32(5, 2), ::arrow::decimal256(50, 2),
        ::arrow::date32(), ::arrow::time64(TimeUnit::NANO), ::arrow::timestamp(TimeUnit::SECOND),
        ::arrow::duration(TimeUnit::SECOND), ::arrow::month_interval(),
        ::arrow::dictionary(::arrow::int8(), ::arrow::int64())}) {
    EXPECT_TRUE(tools::is_aligned_right(*type)) << type->ToString();
  }
  for (const auto& type : {::arrow::null(), ::arrow::boolean(), ::arrow::utf8(), ::arrow::binary(),
                           ::arrow::list(::arrow::int8()), ::arrow::struct_({}),
                           ::arrow::dictionary(::arrow::int8(), ::arrow::utf8())}) {
    EXPECT_FALSE(tools::is_aligned_right(*type)) << type->ToString();
  }
}

TEST(ShortType, NamesNoMoreThanIsNeeded) {
  const auto point = ::arrow::struct_({::arrow::field("x", ::arrow::int8()),
                                       ::arrow::field("y", ::arrow::list(::arrow::date32()))});
  const std::pair<std::shared_ptr<::arrow::DataType>, const char*> cases[] = {
      {::arrow::int64(), "int64"},
      {::arrow::date32(), "date32"},
      {::arrow::decimal128(9, 2), "decimal128(9, 2)"},
      {::arrow::timestamp(TimeUnit::SECOND), "timestamp[s]"},
      {::arrow::timestamp(TimeUnit::MICRO, "UTC"), "timestamp[us, UTC]"},
      {::arrow::list(::arrow::utf8()), "list<string>"},
      {::arrow::large_list_view(::arrow::utf8()), "large_list_view<string>"},
      {::arrow::fixed_size_list(::arrow::int8(), 3), "fixed_size_list<int8>[3]"},
      {point, "struct<x: int8, y: list<date32>>"},
      {::arrow::map(::arrow::utf8(), ::arrow::date64()), "map<string, date64>"},
      {::arrow::dictionary(::arrow::int32(), ::arrow::utf8()), "dictionary<string>"},
      {::arrow::run_end_encoded(::arrow::int32(), ::arrow::utf8()), "run_end_encoded<string>"},
      {::arrow::extension::uuid(), "arrow.uuid"},
  };
  for (const auto& [type, name] : cases) EXPECT_EQ(tools::short_type(*type), name);
}

}  // namespace
}  // namespace numera::testing
