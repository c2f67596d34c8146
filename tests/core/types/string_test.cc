#include "numera/core/types/string.h"

#include <arrow/array/array_binary.h>
#include <arrow/array/builder_binary.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <new>
#include <stdexcept>

#include "numera/core/to_arrow.h"
#include "numera/core/to_numera.h"
#include "tests/support/arrow_values.h"
#include "tests/support/encoded_texts.h"
#include "tests/support/envelopes.h"
#include "tests/support/faults.h"
#include "tests/support/host_builder.h"
#include "tests/support/host_matchers.h"
#include "tests/support/other_device.h"
#include "tests/support/recording_host.h"
#include "tests/support/results.h"

namespace numera::io::arrow::core {
namespace {

using namespace numera::testing;
using namespace std::string_literals;
using ::arrow::Status;

const std::shared_ptr<::arrow::DataType> kTextTypes[] = {::arrow::utf8(), ::arrow::large_utf8()};

Status RowFailure(int row) {
  return Status::Invalid("Could not convert string in row ", row, " to UTF-16 string.\n");
}

/// Texts of either type from bytes and offsets.
std::shared_ptr<::arrow::Array> Texts(const std::shared_ptr<::arrow::DataType>& type,
                                      std::string_view bytes,
                                      const std::vector<std::int32_t>& offsets) {
  return type->id() == ::arrow::Type::STRING
             ? NarrowArray(type, bytes, offsets)
             : LargeArray(type, bytes, {offsets.begin(), offsets.end()});
}

hxArrayPtr DataOf(const std::shared_ptr<::arrow::Array>& array) {
  return hxSharedCopy(hxGetField(ValueOf(to_numera(array)).get(), 0, "Data"));
}

hxArrayPtr DataOf(const std::shared_ptr<::arrow::ChunkedArray>& column) {
  return hxSharedCopy(hxGetField(ValueOf(to_numera(column)).get(), 0, "Data"));
}

TEST(TextToArrow, BecomesLargeTextUnderBothNames) {
  for (const char* name : {"string", "char"}) {
    SCOPED_TRACE(name);
    const hxArrayPtr encoded = Envelope(name, EncodedTexts("aé€", {0, 1, 1, 3, 6}), {0b1101});

    const auto texts = ValueOf(to_arrow<::arrow::Array>(encoded.get()));

    EXPECT_TRUE(SameArray(*texts, *ArrowArray(::arrow::large_utf8(), R"(["a", null, "é", "€"])")));
  }
}

TEST(TextToArrow, BorrowsBytesOffsetsAndValidity) {
  const hxArrayPtr texts = EncodedTexts("abc", {0, 1, 3});
  const auto validity = ArrowBuffer({0b01});

  const auto array = ValueOf(MakeLargeStringArray(texts.get(), validity));

  const ::arrow::ArrayData& data = *array->data();
  EXPECT_EQ(data.buffers[0], validity);
  EXPECT_EQ(data.buffers[1]->data(), hxGetData(hxGetField(texts.get(), 0, "StartOffsets")));
  EXPECT_EQ(data.buffers[1]->size(), 24);
  EXPECT_EQ(data.buffers[2]->data(), hxGetData(hxGetField(texts.get(), 0, "Values")));
  EXPECT_EQ(data.buffers[2]->size(), 3);
  EXPECT_EQ(data.null_count, ::arrow::kUnknownNullCount);
  EXPECT_EQ(data.offset, 0);
}

TEST(TextToArrow, ReadsFieldsOfAnyShape) {
  const hxArrayPtr texts = Struct({{"Values", Row<std::uint8_t>({'a', 'b', 'c'})},
                                   {"StartOffsets", Matrix<std::uint64_t>({2, 2}, {0, 1, 1, 3})}});

  const auto array = ValueOf(MakeLargeStringArray(texts.get(), nullptr));

  EXPECT_TRUE(SameArray(*array, *ArrowArray(::arrow::large_utf8(), R"(["a", "", "bc"])")));
}

TEST(TextToArrow, IgnoresTheZeroByteBehindTheLastText) {
  const hxArrayPtr texts = EncodedTexts("ab\0"s, {0, 2});

  const auto array = ValueOf(MakeLargeStringArray(texts.get(), nullptr));

  EXPECT_TRUE(SameArray(*array, *ArrowArray(::arrow::large_utf8(), R"(["ab"])")));
}

TEST(TextToArrow, KeepsNulWithinAText) {
  const hxArrayPtr texts = EncodedTexts("a\0b\0"s, {0, 3, 4});

  const auto array = ValueOf(MakeLargeStringArray(texts.get(), nullptr));

  EXPECT_TRUE(SameArray(*array, *ArrowArray(::arrow::large_utf8(), R"(["a\u0000b", "\u0000"])")));
}

TEST(TextToArrow, IsNarrowWithOffsetsOfItsOwnWhereThatIsAsked) {
  const hxArrayPtr texts = EncodedTexts("aé€", {0, 1, 3, 6});

  const auto array = ValueOf(MakeStringArray(texts.get(), ArrowBuffer({0b101})));

  EXPECT_TRUE(SameArray(*array, *ArrowArray(::arrow::utf8(), R"(["a", null, "€"])")));
  EXPECT_EQ(array->data()->buffers[2]->data(), hxGetData(hxGetField(texts.get(), 0, "Values")));
}

TEST(TextToArrow, NeitherFailsNorLeaksHalfWay) {
  const hxArrayPtr encoded = Envelope("string", EncodedTexts("abc", {0, 1, 3}));
  const FaultSites sites =
      FailEverywhere([&] { return to_arrow<::arrow::Array>(encoded.get()).status(); });
  EXPECT_GE(sites.calls, 10U);
}

TEST(TextToHost, BecomesAStringColumn) {
  for (const auto& type : kTextTypes) {
    SCOPED_TRACE(type->ToString());
    const auto array = ArrowArray(type, R"(["plain", "", "née", null, "漢字", "a\u0000b"])");

    const hxArrayPtr envelope = ValueOf(to_numera(array));

    const hxArrayPtr expected =
        WrittenEnvelope("array", "string", WrittenValidity(6, {0b11110111}),
                        Strings({u"plain", u"", u"née", u"", u"漢字", u"a\0b"s}));
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

/// Text i of the columns below: ASCII and other texts in turn.
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

TEST(TextToHost, RefusesInvalidUtf8ByRow) {
  struct Case {
    const char* trace;
    std::string bytes;
    std::vector<std::int32_t> offsets;
    int row;
  };
  const Case cases[] = {{"invalid byte", "ab\xFF", {0, 1, 2, 3}, 2},
                        {"lone continuation", "\x80z", {0, 1, 2}, 0},
                        {"overlong", "a\xC0\xAF", {0, 1, 3}, 1},
                        {"surrogate", "a\xED\xA0\x80z", {0, 1, 4, 5}, 1},
                        {"above U+10FFFF", "\xF4\x90\x80\x80", {0, 4}, 0},
                        {"truncated", "a\xE6\xBC", {0, 1, 3}, 1},
                        {"invalid within a row", "é漢a\xFFz", {0, 5, 8}, 1},
                        {"the first of two", "a\xFF\xFE", {0, 1, 2, 3}, 1},
                        {"valid only across a border", "a\xC3\xA9", {0, 1, 2, 3}, 1},
                        {"sequence cut by the next text", "\xE6\xBC\xA2", {0, 2, 3}, 0}};
  for (const auto& type : kTextTypes) {
    for (const Case& c : cases) {
      SCOPED_TRACE(type->ToString() + ": " + c.trace);
      EXPECT_EQ(to_numera(Texts(type, c.bytes, c.offsets)).status(), RowFailure(c.row));
    }
  }
}

TEST(TextToHost, CountsTheRowWithinItsChunk) {
  for (const auto& type : kTextTypes) {
    SCOPED_TRACE(type->ToString());
    const auto column = std::make_shared<::arrow::ChunkedArray>(
        ::arrow::ArrayVector{Texts(type, "abc", {0, 1, 2, 3}), Texts(type, "\xFFz", {0, 1, 2})});
    EXPECT_EQ(to_numera(column).status(), RowFailure(0));
  }
}

TEST(TextToHost, CountsTheRowWithinASlice) {
  for (const auto& type : kTextTypes) {
    SCOPED_TRACE(type->ToString());
    EXPECT_EQ(to_numera(Texts(type, "abc\xFF", {0, 1, 2, 3, 4})->Slice(2)).status(), RowFailure(1));
  }
}

TEST(TextToHost, RefusesInvalidUtf8UnderANull) {
  auto data = Texts(::arrow::utf8(), "a\xFF", {0, 1, 2})->data()->Copy();
  data->buffers[0] = ArrowBuffer({0b01});
  data->null_count = 1;

  EXPECT_EQ(to_numera(::arrow::MakeArray(data)).status(), RowFailure(1));
}

TEST(TextToHost, RefusesOffsetsThatLeaveTheirBuffers) {
  struct Case {
    const char* trace;
    std::shared_ptr<::arrow::Array> array;
    std::string message;
  };
  const auto type = ::arrow::utf8();
  const auto offsets = [](std::vector<std::int32_t> values) { return ExactBuffer(values); };
  const auto bytes = ExactBuffer(BytesOf("abcd"));
  const Case cases[] = {
      {"falling", Texts(type, "abcd", {0, 3, 1, 4}),
       "Element 1: found offsets 3 and 1, expected a range that rises within 4 bytes."},
      {"negative", Texts(type, "abcd", {-1, 3}),
       "Element 0: found offsets -1 and 3, expected a range that rises within 4 bytes."},
      {"behind the bytes", Texts(type, "abcd", {0, 3, 5}),
       "Element 1: found offsets 3 and 5, expected a range that rises within 4 bytes."},
      {"out and back", Texts(type, "abcd", {0, 900, 4}),
       "Element 0: found offsets 0 and 900, expected a range that rises within 4 bytes."},
      {"no bytes", ArrayOfOffsets(type, 1, offsets({0, 1}), nullptr),
       "Element 0: found offsets 0 and 1, expected a range that rises within 0 bytes."},
      {"bytes of another device", ArrayOfOffsets(type, 1, offsets({0, 1}), BufferOfOtherDevice(4)),
       "Element 0: found offsets 0 and 1, expected a range that rises within 0 bytes."},
      {"one offset short", ArrayOfOffsets(type, 2, offsets({0, 1}), bytes),
       "Offsets buffer: found 8 bytes, expected enough for 2 elements."},
      {"short behind an offset", ArrayOfOffsets(type, 1, offsets({0, 1, 2}), bytes, 2),
       "Offsets buffer: found 12 bytes, expected enough for 3 elements."},
      {"no offsets", ArrayOfOffsets(type, 1, nullptr, bytes),
       "Offsets buffer: found 0 bytes, expected enough for 1 elements."},
      {"offsets of another device", ArrayOfOffsets(type, 1, BufferOfOtherDevice(8), bytes),
       "Offsets buffer: found 0 bytes, expected enough for 1 elements."},
      {"longer than memory", ArrayOfOffsets(type, std::int64_t{1} << 62, offsets({0, 1}), bytes),
       "Offsets buffer: found 8 bytes, expected enough for 4611686018427387904 elements."}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.trace);
    EXPECT_EQ(to_numera(c.array).status(), Status::Invalid(c.message));
  }
}

TEST(TextToHost, RefusesLargeOffsetsThatLeaveTheirBuffers) {
  const std::pair<std::vector<std::int64_t>, std::string> cases[] = {
      {{0, 3, 1, 4},
       "Element 1: found offsets 3 and 1, expected a range that rises within 4 bytes."},
      {{-1, 3}, "Element 0: found offsets -1 and 3, expected a range that rises within 4 bytes."},
      {{0, std::int64_t{1} << 62},
       "Element 0: found offsets 0 and 4611686018427387904, expected a range that rises within 4 "
       "bytes."}};
  for (const auto& [offsets, message] : cases) {
    EXPECT_EQ(to_numera(LargeArray(::arrow::large_utf8(), "abcd", offsets)).status(),
              Status::Invalid(message));
  }
}

TEST(TextToHost, HandsEachChunkToTheHostInOneCall) {
  const auto column = ArrowChunks(::arrow::utf8(), {R"(["a", "é"])", "[]", R"(["c"])"});
  Reset();

  ValueOf(to_numera(column));

  EXPECT_EQ(Calls("hxStringArray::assign_utf8"), 2U);
  EXPECT_EQ(Calls("hxStringArray::set"), 0U);
  EXPECT_EQ(Calls("hxUTF8ToUTF16::convert"), 0U);
}

TEST(TextToHost, TurnsWhateverAnElementThrowsIntoItsRow) {
  const auto texts = ArrowArray(::arrow::utf8(), R"(["a", "b"])");
  const auto strings = hxMakeStringArray(Dims{2, 1});
  Reset();
  FailCall(0, std::make_exception_ptr(std::bad_alloc()));

  const Status status =
      FillHostStrings(static_cast<const ::arrow::StringArray&>(*texts), *strings, 0);

  EXPECT_EQ(status, RowFailure(0));
}

TEST(TextToHost, LeavesWhatIsThrownOutsideOfTheElementsToTheCaller) {
  const auto texts = ArrowArray(::arrow::utf8(), R"(["a", "b"])");
  Reset();
  FailCall(0);
  EXPECT_THROW(StringArrayToHost(static_cast<const ::arrow::StringArray&>(*texts)).ok(),
               std::bad_alloc);
  Reset();
  FailCall(2);
  EXPECT_THROW(StringArrayToHost(static_cast<const ::arrow::StringArray&>(*texts)).ok(),
               std::bad_alloc);
}

/// A host's string array that sets one element after another, and refuses one text.
class PlainStrings : public hxStringArray {
 public:
  explicit PlainStrings(size_t size) : dims_{size, 1}, texts_(size) {}

  std::span<const size_t> dimensions() const override { return dims_; }
  size_t size() const override { return texts_.size(); }
  std::optional<std::u16string_view> element(size_t i) const override { return texts_[i]; }
  void set(size_t i, std::u16string_view text) override {
    if (text == u"refused") throw std::runtime_error("refused");
    texts_.at(i) = text;
  }
  void set_missing(size_t i) override { texts_.at(i).clear(); }

  const std::vector<std::u16string>& texts() const { return texts_; }

 private:
  std::vector<size_t> dims_;
  std::vector<std::u16string> texts_;
};

TEST(FillHostStrings, FillsAHostWithoutABulkOperationFromTheStartGiven) {
  for (const auto& type : kTextTypes) {
    SCOPED_TRACE(type->ToString());
    const auto array = ArrowArray(type, R"(["é", "", "漢"])");
    PlainStrings strings(5);

    const Status status =
        type->id() == ::arrow::Type::STRING
            ? FillHostStrings(static_cast<const ::arrow::StringArray&>(*array), strings, 1)
            : FillHostStrings(static_cast<const ::arrow::LargeStringArray&>(*array), strings, 1);

    EXPECT_EQ(status, Status::OK());
    EXPECT_THAT(strings.texts(), ::testing::ElementsAre(u"", u"é", u"", u"漢", u""));
  }
}

TEST(FillHostStrings, CountsTheRowOfAHostWithoutABulkOperationFromTheStartGiven) {
  const auto array = Texts(::arrow::utf8(), "ab\xFF", {0, 1, 2, 3});
  PlainStrings strings(10);

  EXPECT_EQ(FillHostStrings(static_cast<const ::arrow::StringArray&>(*array), strings, 4),
            RowFailure(2));
}

TEST(FillHostStrings, NamesTheRowOfATextThatTheHostDoesNotTake) {
  const auto array = ArrowArray(::arrow::utf8(), R"(["a", "refused"])");
  PlainStrings strings(2);

  EXPECT_EQ(FillHostStrings(static_cast<const ::arrow::StringArray&>(*array), strings, 0),
            RowFailure(1));
}

TEST(FillHostStrings, NamesTheFirstRowWhereABulkOperationTellsNone) {
  class ThrowingStrings final : public PlainStrings {
   public:
    using PlainStrings::assign_utf8;
    using PlainStrings::PlainStrings;
    std::optional<size_t> assign_utf8(size_t, std::span<const std::int32_t>,
                                      const std::uint8_t*) override {
      throw std::bad_alloc();
    }
  };
  const auto array = ArrowArray(::arrow::utf8(), R"(["a", "b"])");
  ThrowingStrings strings(2);

  EXPECT_EQ(FillHostStrings(static_cast<const ::arrow::StringArray&>(*array), strings, 0),
            RowFailure(0));
}

TEST(TextToHost, NeitherFailsNorLeaksHalfWay) {
  const auto column = ArrowChunks(::arrow::utf8(), {R"(["a", "é"])", R"([null, "c"])"});
  const FaultSites sites = FailEverywhere([&] { return to_numera(column).status(); });
  EXPECT_GE(sites.allocations, 8U);
  EXPECT_GE(sites.calls, 12U);
}

}  // namespace
}  // namespace numera::io::arrow::core
