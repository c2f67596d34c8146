/// \file
/// Columns beyond 32 bits to the host: elements, bits, bytes and offsets. The Arrow values take
/// almost no memory, the host values up to nine gigabytes.

#include <arrow/api.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "numera/core/to_numera.h"
#include "numera/host/string_array.h"
#include "tests/large/mapped.h"
#include "tests/support/arrow_values.h"
#include "tests/support/results.h"

namespace numera::io::arrow::core {
namespace {

using namespace numera::testing;
using ::arrow::Buffer;
using ArrayPtr = std::shared_ptr<::arrow::Array>;

const hxArray* FieldOf(const hxArrayPtr& value, const char* name) {
  return hxGetFieldChecked(value.get(), 0, name);
}

const hxArray* FieldOf(const hxArray* value, const char* name) {
  return hxGetFieldChecked(value, 0, name);
}

template <class T>
T Element(const hxArray* array, std::int64_t i) {
  EXPECT_LT(static_cast<size_t>(i), hxGetNumberOfElements(array));
  return static_cast<const T*>(hxGetData(array))[i];
}

bool Bit(const hxArray* bits, std::int64_t i) {
  return Element<std::uint8_t>(bits, i / 8) >> (i % 8) & 1;
}

TEST(LargeToHost, TakesMoreThanTwoToThe31Numbers) {
  const std::int64_t length = kTwoTo31 + 9;
  const auto values = Zeros(length, {{0, 1}, {kTwoTo31 - 1, 2}, {kTwoTo31, 3}, {length - 1, 4}});

  const hxArrayPtr envelope = ValueOf(to_numera(Made(::arrow::uint8(), length, {nullptr, values})));

  const hxArray* data = FieldOf(envelope, "Data");
  ASSERT_EQ(hxGetNumberOfElements(data), static_cast<size_t>(length));
  EXPECT_EQ(Element<std::uint8_t>(data, 0), 1);
  EXPECT_EQ(Element<std::uint8_t>(data, 1), 0);
  EXPECT_EQ(Element<std::uint8_t>(data, kTwoTo31 - 1), 2);
  EXPECT_EQ(Element<std::uint8_t>(data, kTwoTo31), 3);
  EXPECT_EQ(Element<std::uint8_t>(data, length - 1), 4);
  EXPECT_EQ(Element<double>(FieldOf(FieldOf(envelope, "Valid"), "Length"), 0), 2147483657.0);
}

TEST(LargeToHost, CopiesChunksBehindTwoToThe32BitsAndTheirValidity) {
  const std::int64_t first = kTwoTo32 + 3;
  const auto bits = Zeros(first / 8 + 1, {{0, 0x81}});
  const auto tail = Zeros(2, {{0, 0xA5}, {1, 1}});
  const auto chunks = std::make_shared<::arrow::ChunkedArray>(
      ::arrow::ArrayVector{Made(::arrow::boolean(), first, {bits, bits}, first - 2),
                           Made(::arrow::boolean(), 9, {tail, tail}, 4)});

  const hxArrayPtr envelope = ValueOf(to_numera(chunks));

  for (const hxArray* packed : {FieldOf(envelope, "Data"), FieldOf(envelope, "Valid")}) {
    EXPECT_EQ(Element<double>(FieldOf(packed, "Length"), 0), 4294967308.0);
    const hxArray* copied = FieldOf(packed, "Values");
    ASSERT_EQ(hxGetNumberOfElements(copied), 536870914U);
    EXPECT_EQ(Element<std::uint8_t>(copied, 0), 0x81);
    std::string found;
    for (std::int64_t i = first - 2; i < first + 9; ++i) found += Bit(copied, i) ? '1' : '0';
    EXPECT_EQ(found, "00101001011");
  }
}

TEST(LargeToHost, TakesATextOfFourGigabytes) {
  const std::int64_t size = kTwoTo32 + 10;
  const std::vector<std::int64_t> offsets = {0, 2, size - 3, size};
  const auto bytes = Zeros(size, {{0, 'a'}, {1, 'b'}, {2, 'c'}, {kTwoTo32, 'd'}, {size - 1, 'z'}});

  const hxArrayPtr envelope =
      ValueOf(to_numera(Made(::arrow::large_utf8(), 3, {nullptr, Buffer::Wrap(offsets), bytes})));

  const hxStringArray& texts = hxGetStringArray(FieldOf(envelope, "Data"));
  EXPECT_EQ(texts.element(0), u"ab");
  EXPECT_EQ(texts.element(2), std::u16string_view(u"\0\0z", 3));
  const std::u16string_view large = *texts.element(1);
  ASSERT_EQ(large.size(), static_cast<size_t>(size - 5));
  EXPECT_EQ(large.front(), u'c');
  EXPECT_EQ(large[kTwoTo32 - 2], u'd');
  EXPECT_EQ(large.back(), u'\0');
}

TEST(LargeToHost, ReadsTextsAndBytesBehindOffsetsBeyond32Bits) {
  const std::vector<std::int64_t> offsets = {kTwoTo32 + 1, kTwoTo32 + 3, kTwoTo32 + 4};
  const auto bytes =
      Zeros(kTwoTo32 + 4, {{kTwoTo32 + 1, 'x'}, {kTwoTo32 + 2, 'y'}, {kTwoTo32 + 3, 'z'}});
  const auto of = [&](const auto& type) {
    return ValueOf(to_numera(Made(type, 2, {nullptr, Buffer::Wrap(offsets), bytes})));
  };

  const hxArrayPtr texts = of(::arrow::large_utf8());
  EXPECT_EQ(hxGetStringArray(FieldOf(texts, "Data")).element(0), u"xy");
  EXPECT_EQ(hxGetStringArray(FieldOf(texts, "Data")).element(1), u"z");
  const hxArrayPtr cells = of(::arrow::large_binary());
  const hxArray* second = hxGetCellChecked(FieldOf(cells, "Data"), 1);
  ASSERT_EQ(hxGetNumberOfElements(second), 1U);
  EXPECT_EQ(Element<std::uint8_t>(second, 0), 'z');
}

TEST(LargeToHost, KeepsTheOffsetsOfALargeListBeyond32Bits) {
  const std::vector<std::int64_t> offsets = {0, kTwoTo32 + 1, kTwoTo32 + 5};
  const auto child = Made(::arrow::boolean(), kTwoTo32 + 5,
                          {nullptr, Zeros(kTwoTo32 / 8 + 1, {{kTwoTo32 / 8, 0x13}})});
  const auto lists = std::make_shared<::arrow::LargeListArray>(
      ::arrow::large_list(::arrow::boolean()), 2, Buffer::Wrap(offsets), child);

  const hxArrayPtr envelope = ValueOf(to_numera(lists));

  const hxArray* data = FieldOf(envelope, "Data");
  EXPECT_EQ(Element<std::int64_t>(FieldOf(data, "StartOffsets"), 1), 4294967297);
  EXPECT_EQ(Element<std::int64_t>(FieldOf(data, "StartOffsets"), 2), 4294967301);
  const hxArray* bits = FieldOf(FieldOf(FieldOf(data, "Values"), "Data"), "Values");
  EXPECT_EQ(Element<std::uint8_t>(bits, kTwoTo32 / 8), 0x13);
}

TEST(LargeToHost, TakesANarrowListAtItsLimit) {
  const std::vector<std::int32_t> offsets = {0, 5, 2147483647};
  const auto child =
      Made(::arrow::int8(), kTwoTo31 - 1, {nullptr, Zeros(kTwoTo31 - 1, {{kTwoTo31 - 2, 7}})});
  const auto lists = std::make_shared<::arrow::ListArray>(::arrow::list(::arrow::int8()), 2,
                                                          Buffer::Wrap(offsets), child);

  const hxArrayPtr envelope = ValueOf(to_numera(lists));

  const hxArray* data = FieldOf(envelope, "Data");
  EXPECT_EQ(Element<std::int32_t>(FieldOf(data, "StartOffsets"), 2), 2147483647);
  const hxArray* values = FieldOf(FieldOf(data, "Values"), "Data");
  ASSERT_EQ(hxGetNumberOfElements(values), 2147483647U);
  EXPECT_EQ(Element<std::int8_t>(values, kTwoTo31 - 2), 7);
}

TEST(LargeToHost, TakesAMapAtItsLimit) {
  const std::vector<std::int32_t> offsets = {0, 2147483646, 2147483647};
  const auto keys =
      Made(::arrow::int8(), kTwoTo31 - 1, {nullptr, Zeros(kTwoTo31 - 1, {{kTwoTo31 - 2, 9}})});
  const auto items = Made(::arrow::boolean(), kTwoTo31 - 1,
                          {nullptr, Zeros(kTwoTo31 / 8, {{kTwoTo31 / 8 - 1, 0x40}})});
  const auto maps = std::make_shared<::arrow::MapArray>(
      ::arrow::map(::arrow::int8(), ::arrow::boolean()), 2, Buffer::Wrap(offsets), keys, items);

  const hxArrayPtr envelope = ValueOf(to_numera(maps));

  const hxArray* data = FieldOf(envelope, "Data");
  EXPECT_EQ(Element<std::int32_t>(FieldOf(data, "StartOffsets"), 1), 2147483646);
  EXPECT_EQ(Element<std::int32_t>(FieldOf(data, "StartOffsets"), 2), 2147483647);
  EXPECT_EQ(Element<std::int8_t>(FieldOf(FieldOf(data, "Keys"), "Data"), kTwoTo31 - 2), 9);
  const hxArray* bits = FieldOf(FieldOf(FieldOf(data, "Values"), "Data"), "Values");
  EXPECT_TRUE(Bit(bits, kTwoTo31 - 2));
  EXPECT_FALSE(Bit(bits, kTwoTo31 - 3));
}

TEST(LargeToHost, MergesDictionariesOfMoreThanTwoToThe31Codes) {
  const auto type = ::arrow::dictionary(::arrow::int8(), ::arrow::utf8());
  const auto chunk = [&](std::int64_t length, std::uint8_t last, const char* texts) {
    const auto codes =
        Made(::arrow::int8(), length, {nullptr, Zeros(length, {{length - 1, last}})});
    return std::make_shared<::arrow::DictionaryArray>(type, codes,
                                                      ArrowArray(::arrow::utf8(), texts));
  };
  const auto chunks = std::make_shared<::arrow::ChunkedArray>(
      ::arrow::ArrayVector{chunk(kTwoTo31, 1, R"(["a", "b"])"), chunk(3, 1, R"(["b", "c"])")});

  const hxArrayPtr envelope = ValueOf(to_numera(chunks));

  const hxArray* codes = FieldOf(FieldOf(envelope, "Data"), "Values");
  ASSERT_EQ(hxGetNumberOfElements(codes), 2147483651U);
  EXPECT_EQ(Element<std::int8_t>(codes, 0), 0);
  EXPECT_EQ(Element<std::int8_t>(codes, kTwoTo31 - 1), 1);
  EXPECT_EQ(Element<std::int8_t>(codes, kTwoTo31), 1);
  EXPECT_EQ(Element<std::int8_t>(codes, kTwoTo31 + 2), 2);
}

}  // namespace
}  // namespace numera::io::arrow::core
