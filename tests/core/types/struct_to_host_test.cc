#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

#include "numera/core/to_arrow.h"
#include "numera/core/to_numera.h"
#include "tests/core/data_of.h"
#include "tests/core/only_read.h"
#include "tests/support/arrow_values.h"
#include "tests/support/envelopes.h"
#include "tests/support/host_builder.h"
#include "tests/support/host_matchers.h"
#include "tests/support/recording_host.h"
#include "tests/support/results.h"

namespace numera::io::arrow::core {
namespace {

using namespace numera::testing;
using ::arrow::field;
using ::arrow::Status;

std::shared_ptr<::arrow::DataType> struct_of(const char* name) {
  return ::arrow::struct_({field(name, ::arrow::int32())});
}

const std::shared_ptr<::arrow::DataType> kPair =
    ::arrow::struct_({field("a", ::arrow::int32()), field("b", ::arrow::float64())});

TEST(StructToHost, TakesTheNamesOfEachChunkFromItsOwnType) {
  const auto column = std::make_shared<::arrow::ChunkedArray>(::arrow::ArrayVector{
      ArrowArray(struct_of("a"), "[[1]]"), ArrowArray(struct_of("b"), "[[2]]")});

  const hxArrayPtr encoded = ValueOf(to_numera(column));

  const hxArrayPtr expected =
      StructColumn(kStructFields, {StructData({"a"}, {WrittenNumbers<std::int32_t>({1})}),
                                   StructData({"b"}, {WrittenNumbers<std::int32_t>({2})})});
  EXPECT_TRUE(SameHostValue(hxGetField(encoded.get(), 0, "Data"), expected.get()));
}

TEST(StructToHost, WritesNamesAndEnvelopesAsRows) {
  const auto structs = ArrowArray(kPair, "[[1, 2.5], [3, 4.5]]");
  EXPECT_TRUE(
      SameHostValue(ValueOf(to_numera(structs)).get(),
                    WrittenNested("struct", "struct", 2,
                                  StructData({"a", "b"}, {WrittenNumbers<std::int32_t>({1, 3}),
                                                          WrittenNumbers<double>({2.5, 4.5})}))
                        .get()));
}

TEST(StructToHost, CutsChildrenToTheSlice) {
  const auto structs =
      ArrowArray(::arrow::struct_({field("a", ::arrow::int32())}), "[[1], [2], [3], [4], [5]]");
  EXPECT_TRUE(SameHostValue(DataOf(structs->Slice(1, 3)->Slice(1)).get(),
                            StructData({"a"}, {WrittenNumbers<std::int32_t>({3, 4})}).get()));
}

TEST(StructToHost, ReadsTheValidityOfASliceFromTheStartOfItsBitmap) {
  const auto structs =
      ArrowArray(::arrow::struct_({field("a", ::arrow::int32())}), "[[1], null, [3], [4]]");
  EXPECT_TRUE(SameHostValue(
      ValueOf(to_numera(structs->Slice(1, 3))).get(),
      WrittenNested("struct", "struct", 3,
                    StructData({"a"}, {WrittenNumbers<std::int32_t>({0, 3, 4})}), {0b11111101})
          .get()));
}

TEST(StructToHost, CutsAChildThatIsLongerThanTheStruct) {
  const auto child = ArrowArray(::arrow::int32(), "[1, 2, 3]");
  const auto structs = ::arrow::MakeArray(::arrow::ArrayData::Make(
      ::arrow::struct_({field("a", ::arrow::int32())}), 2, {nullptr}, {child->data()}, 0));
  EXPECT_TRUE(SameHostValue(DataOf(structs).get(),
                            StructData({"a"}, {WrittenNumbers<std::int32_t>({1, 2})}).get()));
}

TEST(StructToHost, WritesOneElementAChunkWithItsOwnCellsAndValidity) {
  const auto type = ::arrow::struct_({field("a", ::arrow::int32())});
  const auto chunks = ArrowChunks(type, {"[[1]]", "[null, [3]]"});
  EXPECT_TRUE(SameHostValue(
      ValueOf(to_numera(chunks)).get(),
      WrittenEnvelope(
          "struct", "struct",
          StructColumn(kBitmapFields, {WrittenBitmap(1), WrittenBitmap(2, {0b11111110})}),
          StructColumn(kStructFields, {StructData({"a"}, {WrittenNumbers<std::int32_t>({1})}),
                                       StructData({"a"}, {WrittenNumbers<std::int32_t>({0, 3})})}))
          .get()));
}

TEST(StructToHost, WritesNoElementsForNoChunks) {
  EXPECT_TRUE(SameHostValue(DataOf(ArrowChunks(kPair, {})).get(),
                            StructArray({0, 1}, kStructFields, {}).get()));
}

TEST(StructToHost, WritesAStructWithoutFields) {
  const auto structs = ArrowArray(::arrow::struct_({}), "[[], [], []]");
  EXPECT_TRUE(SameHostValue(
      ValueOf(to_numera(structs)).get(),
      WrittenNested("struct", "struct", 3, StructData(Cell({1, 0}, {}), Cell({1, 0}, {}))).get()));
}

TEST(StructToHost, KeepsTheTextOfNames) {
  const auto type = ::arrow::struct_({field("\xC3\x9F\xE4\xB8\xAD\xF0\x9F\x98\x80", kPair),
                                      field("", ::arrow::null()), field("", ::arrow::null())});
  const hxArrayPtr data = DataOf(ArrowArray(type, "[]"));
  EXPECT_TRUE(
      SameHostValue(hxGetField(data.get(), 0, "FieldName"),
                    Cell({1, 3}, {Char(u"\u00DF\u4E2D\U0001F600"), Char(""), Char("")}).get()));
}

TEST(StructToHost, LetsTheCodecReportANameThatIsNotUtf8) {
  const auto type = ::arrow::struct_({field("\xFF", ::arrow::null())});
  const auto structs = ArrowArray(type, "[]");
  EXPECT_THROW(static_cast<void>(to_numera(structs)), hxCodecError);
}

TEST(StructToHost, ReturnsTheFailureOfAChild) {
  const auto type =
      ::arrow::struct_({field("a", ::arrow::int32()), field("b", ::arrow::float16())});
  EXPECT_EQ(ToNumeraOnlyReads(ArrowArray(type, "[]")).status(),
            Status::TypeError("Unsupported type for Arrrow-NUMERA conversion: halffloat"));
}

TEST(StructToHost, RefusesAChildThatEndsBeforeItsStruct) {
  const auto child = ArrowArray(::arrow::int32(), "[1, 2, 3]");
  const auto type = ::arrow::struct_({field("a", ::arrow::int32())});
  const std::pair<std::int64_t, std::int64_t> extents[] = {{4, 0}, {3, 1}, {0, 4}};
  for (const auto& [length, offset] : extents) {
    const auto structs = ::arrow::MakeArray(
        ::arrow::ArrayData::Make(type, length, {nullptr}, {child->data()}, 0, offset));
    EXPECT_EQ(ToNumeraOnlyReads(structs).status(),
              Status::Invalid("Array of type struct: found child 0 of length 3, expected at least "
                              "4."));
  }
}

TEST(StructToHost, ReadsAValidityThatEndsEarlyAsFarAsItGoes) {
  const auto child = ::arrow::MakeArray(::arrow::ArrayData::Make(
      ::arrow::uint8(), 9, {ArrowBuffer({0b11111110}), ArrowBuffer({1, 2, 3, 4, 5, 6, 7, 8, 9})}));
  const auto structs =
      ::arrow::MakeArray(::arrow::ArrayData::Make(::arrow::struct_({field("a", ::arrow::uint8())}),
                                                  9, {ArrowBuffer({0b11111011})}, {child->data()}));
  EXPECT_TRUE(SameHostValue(
      ValueOf(to_numera(structs)).get(),
      WrittenNested("struct", "struct", 9,
                    StructData({"a"}, {WrittenNumbers<std::uint8_t>({1, 2, 3, 4, 5, 6, 7, 8, 9},
                                                                    {0b11111110, 0xFF})}),
                    {0b11111011, 0xFF})
          .get()));
}

}  // namespace
}  // namespace numera::io::arrow::core
