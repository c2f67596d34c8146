#include <arrow/array/array_binary.h>
#include <arrow/array/builder_binary.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "numera/core/to_numera.h"
#include "tests/core/data_of.h"
#include "tests/core/fail_conversions.h"
#include "tests/core/types/string_columns.h"
#include "tests/support/arrow_values.h"
#include "tests/support/envelopes.h"
#include "tests/support/host_builder.h"
#include "tests/support/host_matchers.h"
#include "tests/support/offset_arrays.h"
#include "tests/support/results.h"

namespace numera::io::arrow::core {
namespace {

using namespace numera::testing;
using namespace std::string_literals;

TEST(TextToHost, BecomesAStringColumn) {
  for (const auto& type : kTextTypes) {
    SCOPED_TRACE(type->ToString());
    const auto array = ArrowArray(type, R"(["plain", "", "née", null, "漢字", "a\u0000b"])");

    const hxArrayPtr envelope = ValueOf(to_numera(array));

    const hxArrayPtr expected = WrittenArray(
        "string", 6, Strings({u"plain", u"", u"née", u"", u"漢字", u"a\0b"s}), {0b11110111});
    EXPECT_TRUE(SameHostValue(envelope.get(), expected.get()));
  }
}

TEST(TextToHost, KeepsTheFirstAndLastCodePointsOfEveryPlane) {
  std::string json = "[";
  std::vector<std::optional<std::u16string>> expected;
  for (char32_t plane = 0; plane <= 16; ++plane) {
    for (const char32_t low : {U'\x41', U'\uFFFF'}) {
      const char32_t code_point = plane * 0x10000 + low;
      std::u16string units;
      if (plane == 0) {
        units = {static_cast<char16_t>(code_point)};
      } else {
        units = {static_cast<char16_t>(0xD7C0 + (code_point >> 10)),
                 static_cast<char16_t>(0xDC00 + (code_point & 0x3FF))};
      }
      json += json.size() > 1 ? ", \"" : "\"";
      for (const char16_t unit : units) {
        char escape[7];
        std::snprintf(escape, sizeof(escape), "\\u%04X", static_cast<unsigned>(unit));
        json += escape;
      }
      json += "\"";
      expected.emplace_back(units);
    }
  }
  json += "]";
  for (const auto& type : kTextTypes) {
    SCOPED_TRACE(type->ToString());
    EXPECT_TRUE(SameHostValue(DataOf(ArrowArray(type, json)).get(), Strings(expected).get()));
  }
}

TEST(TextToHost, LeavesCombiningMarksUncombined) {
  const auto array = ArrowArray(::arrow::utf8(), R"(["e\u0301", "\u00E9", "\u0301"])");

  EXPECT_TRUE(
      SameHostValue(DataOf(array).get(), Strings({u"e\u0301", u"\u00E9", u"\u0301"}).get()));
}

TEST(TextToHost, GivesWhatTheOffsetsOfANullSlotSpan) {
  auto data = Texts(::arrow::utf8(), "abcd", {0, 1, 3, 3, 4})->data()->Copy();
  data->buffers[0] = ArrowBuffer({0b1001});
  data->null_count = 2;

  const hxArrayPtr strings = DataOf(::arrow::MakeArray(data));

  EXPECT_TRUE(SameHostValue(strings.get(), Strings({u"a", u"bc", u"", u"d"}).get()));
}

TEST(TextToHost, JoinsChunksInOrder) {
  for (const auto& type : kTextTypes) {
    SCOPED_TRACE(type->ToString());
    const auto column = ArrowChunks(type, {R"(["a", "é"])", "[]", R"(["c"])", R"([null, "漢"])"});

    const hxArrayPtr expected = Strings({u"a", u"é", u"c", u"", u"漢"});
    EXPECT_TRUE(SameHostValue(DataOf(column).get(), expected.get()));
  }
}

TEST(TextToHost, MakesNoElementsOfNoChunks) {
  for (const auto& type : kTextTypes) {
    SCOPED_TRACE(type->ToString());
    EXPECT_TRUE(SameHostValue(DataOf(ArrowChunks(type, {})).get(), Strings({0, 1}, {}).get()));
  }
}

TEST(TextToHost, ReadsNothingOfAnEmptyChunk) {
  for (const auto& type : kTextTypes) {
    SCOPED_TRACE(type->ToString());
    const auto empty = ArrayOfOffsets(type, 0, nullptr, nullptr);
    EXPECT_TRUE(SameHostValue(DataOf(empty).get(), Strings({0, 1}, {}).get()));
  }
}

/// Text i of the columns below. ASCII and other texts take turns.
std::u16string LongColumnText(int i) {
  return (i % 3 == 0   ? u"é"
          : i % 3 == 1 ? u"abcdefghijklmnopqrstuvwxyz"
                       : u"") +
         std::u16string(1, static_cast<char16_t>(u'0' + i % 10));
}

TEST(TextToHost, TakesSlicesOfAnyPlaceAndLength) {
  ::arrow::StringBuilder builder;
  for (int i = 0; i < 80; ++i) {
    const std::string digit(1, static_cast<char>('0' + i % 10));
    const char* const start = i % 3 == 0 ? "é" : i % 3 == 1 ? "abcdefghijklmnopqrstuvwxyz" : "";
    ASSERT_TRUE(builder.Append(start + digit).ok());
  }
  const auto array = ValueOf(builder.Finish());
  for (const int begin : {0, 1, 7, 8, 9}) {
    for (const int length : {0, 1, 7, 8, 9, 63, 64, 65}) {
      SCOPED_TRACE(std::to_string(begin) + ", " + std::to_string(length));
      std::vector<std::optional<std::u16string>> expected;
      for (int i = begin; i < begin + length; ++i) expected.emplace_back(LongColumnText(i));
      const auto sliced = array->Slice(begin, length);
      const auto sliced_twice = array->Slice(begin / 2)->Slice(begin - begin / 2, length);
      EXPECT_TRUE(SameHostValue(DataOf(sliced).get(), Strings(expected).get()));
      EXPECT_TRUE(SameHostValue(DataOf(sliced_twice).get(), Strings(expected).get()));
    }
  }
}

TEST(TextToHost, ReadsOffsetsAtOddAddresses) {
  const auto odd = [](const std::shared_ptr<::arrow::Buffer>& buffer) {
    std::vector<std::uint8_t> moved(static_cast<size_t>(buffer->size()) + 1);
    std::memcpy(moved.data() + 1, buffer->data(), static_cast<size_t>(buffer->size()));
    return ::arrow::SliceBuffer(ExactBuffer(moved), 1);
  };
  for (const auto& type : kTextTypes) {
    SCOPED_TRACE(type->ToString());
    auto data = ArrowArray(type, R"(["a", "é", "漢"])")->data()->Copy();
    data->buffers[1] = odd(data->buffers[1]);
    const auto array = ::arrow::MakeArray(data)->Slice(1);

    EXPECT_TRUE(SameHostValue(DataOf(array).get(), Strings({u"é", u"漢"}).get()));
  }
}

TEST(TextToHost, NeitherFailsNorLeaksHalfWay) {
  const auto column = ArrowChunks(::arrow::utf8(), {R"(["a", "é"])", R"([null, "c"])"});
  FailWriting(column);
}

}  // namespace
}  // namespace numera::io::arrow::core
