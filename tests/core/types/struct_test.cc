#include "numera/core/types/struct.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

#include "numera/core/to_arrow.h"
#include "numera/core/to_numera.h"
#include "tests/core/only_read.h"
#include "tests/support/arrow_values.h"
#include "tests/support/envelopes.h"
#include "tests/support/faults.h"
#include "tests/support/host_builder.h"
#include "tests/support/host_matchers.h"
#include "tests/support/recording_host.h"
#include "tests/support/results.h"

namespace numera::io::arrow::core {
namespace {

using namespace numera::testing;
using ::arrow::field;
using ::arrow::Status;

hxArrayPtr StructData(hxArrayPtr names, hxArrayPtr children) {
  return Struct({{"FieldName", std::move(names)}, {"FieldData", std::move(children)}});
}

hxArrayPtr StructEnvelope(hxArrayPtr names, hxArrayPtr children,
                          const std::vector<std::uint8_t>& valid = {}) {
  return KindEnvelope("struct", "struct", StructData(std::move(names), std::move(children)), valid);
}

template <class T>
hxArrayPtr Numbers(std::string_view type, const std::vector<T>& values) {
  return Envelope(type, Column<T>(values));
}

template <class T>
hxArrayPtr WrittenNumbers(std::string_view type, const std::vector<T>& values) {
  return WrittenEnvelope("array", type, WrittenValidity(static_cast<double>(values.size())),
                         Column<T>(values));
}

Status StatusOfReading(const hxArrayPtr& encoded) {
  return to_arrow<::arrow::Array>(encoded.get()).status();
}

std::shared_ptr<::arrow::DataType> struct_of(const char* name) {
  return ::arrow::struct_({field(name, ::arrow::int32())});
}

const std::shared_ptr<::arrow::DataType> kPoint =
    ::arrow::struct_({field("a", ::arrow::int32()), field("b", ::arrow::float64())});

TEST(StructToHost, TakesTheNamesOfEachChunkFromItsOwnType) {
  const auto column = std::make_shared<::arrow::ChunkedArray>(::arrow::ArrayVector{
      ArrowArray(struct_of("a"), "[[1]]"), ArrowArray(struct_of("b"), "[[2]]")});

  const hxArrayPtr encoded = ValueOf(to_numera(column));

  const hxArrayPtr expected = StructArray(
      {2, 1}, {"FieldName", "FieldData"},
      {{Cell({1, 1}, {Char("a")}), Cell({1, 1}, {WrittenNumbers<std::int32_t>("int32", {1})})},
       {Cell({1, 1}, {Char("b")}), Cell({1, 1}, {WrittenNumbers<std::int32_t>("int32", {2})})}});
  EXPECT_TRUE(SameHostValue(hxGetField(encoded.get(), 0, "Data"), expected.get()));
}

TEST(StructToArrow, NamesItsChildrenInOrder) {
  const hxArrayPtr encoded = StructEnvelope(
      Cell({Char("a"), Char("b")}),
      Cell({Numbers<std::int32_t>("int32", {1, 2, 3}), Numbers<double>("double", {4, 5, 6})}));
  EXPECT_TRUE(SameArray(*ValueOf(to_arrow<::arrow::Array>(encoded.get())),
                        *ArrowArray(kPoint, "[[1, 4], [2, 5], [3, 6]]")));
}

TEST(StructToArrow, TakesCellsOfAnyShape) {
  const hxArrayPtr encoded = StructEnvelope(
      Cell({2, 1}, {Char("a"), Char("b")}),
      Cell({1, 2}, {Numbers<std::int32_t>("int32", {1}), Numbers<double>("double", {2})}));
  EXPECT_TRUE(SameArray(*ValueOf(to_arrow<::arrow::Array>(encoded.get())),
                        *ArrowArray(kPoint, "[[1, 2]]")));
}

TEST(StructToArrow, TakesItsOwnNullsFromValid) {
  const hxArrayPtr encoded =
      StructEnvelope(Cell({Char("a"), Char("b")}),
                     Cell({Numbers<std::int32_t>("int32", {1, 2}),
                           Envelope("double", Column<double>({3, 4}), {0b01})}),
                     {0b10});
  const auto structs = ValueOf(to_arrow<::arrow::Array>(encoded.get()));
  EXPECT_TRUE(SameArray(*structs, *ArrowArray(kPoint, "[null, [2, null]]")));
  const hxArray* valid = hxGetField(encoded.get(), 0, "Valid");
  EXPECT_EQ(structs->data()->buffers[0]->data(), hxGetData(hxGetField(valid, 0, "Values")));
}

TEST(StructToArrow, HasNoBitmapWhereValidHasNoBytes) {
  const hxArrayPtr encoded =
      StructEnvelope(Cell({Char("a")}), Cell({Numbers<std::int32_t>("int32", {1})}));
  EXPECT_EQ(ValueOf(to_arrow<::arrow::Array>(encoded.get()))->data()->buffers[0], nullptr);
}

TEST(StructToArrow, PassesNamesThrough) {
  const hxArrayPtr encoded =
      StructEnvelope(Cell({Char(u"\u00DF\u4E2D\U0001F600"), Char(""), Char("x"), Char("x"), Empty(),
                           Strings({u"text"})}),
                     Cell({Numbers<double>("double", {1}), Numbers<double>("double", {2}),
                           Numbers<double>("double", {3}), Numbers<double>("double", {4}),
                           Numbers<double>("double", {5}), Numbers<double>("double", {6})}));
  const auto structs = ValueOf(to_arrow<::arrow::Array>(encoded.get()));
  std::vector<std::string> names;
  for (const auto& child : structs->type()->fields()) names.push_back(child->name());
  EXPECT_THAT(names,
              ::testing::ElementsAre("\xC3\x9F\xE4\xB8\xAD\xF0\x9F\x98\x80", "", "x", "x", "", ""));
}

TEST(StructToArrow, ReadsTheFirstChunkOnly) {
  const hxArrayPtr encoded = KindEnvelope(
      "struct", "struct",
      StructArray(
          {2, 1}, {"FieldName", "FieldData"},
          {{Cell({Char("a")}), Cell({Numbers<std::int32_t>("int32", {1})})}, {Empty(), Empty()}}));
  EXPECT_TRUE(SameArray(*ValueOf(to_arrow<::arrow::Array>(encoded.get())),
                        *ArrowArray(::arrow::struct_({field("a", ::arrow::int32())}), "[[1]]")));
}

TEST(StructToArrow, ComparesTheNumbersOfCellsBeforeAnyChildIsConverted) {
  const auto mismatch =
      Status::Invalid("Expect FieldData and FieldName to have the same number of elements");
  const hxArrayPtr cases[] = {
      StructEnvelope(Cell({Char("a"), Char("b")}), Cell({Scalar(1.0), Scalar(2.0), Scalar(3.0)})),
      StructEnvelope(Cell({Char("a"), Char("b")}), Cell({Scalar(1.0)})),
      StructEnvelope(Cell({}), Cell({Scalar(1.0)})), StructEnvelope(Empty(), Cell({Scalar(1.0)})),
      StructEnvelope(Cell({Char("a")}), Empty())};
  for (const hxArrayPtr& encoded : cases) EXPECT_EQ(StatusOfReading(encoded), mismatch);
}

TEST(StructToArrow, ReturnsTheFirstFailureAndReadsNoFurtherChild) {
  const hxArrayPtr encoded = StructEnvelope(
      Cell({Char("a"), Char("b"), Char("c")}),
      Cell({Numbers<double>("double", {1}), Envelope("double", Struct({})), Scalar(3.0)}));
  Reset();
  EXPECT_EQ(StatusOfReading(encoded),
            Status::Invalid("Invalid type for NUMERA to Arrow conversion."));
  EXPECT_EQ(Calls("hxGetCellChecked"), 3U) << "two children and the name of the first";
  const hxArrayPtr empty_slot = StructEnvelope(Cell({Char("a")}), Cell({Empty()}));
  EXPECT_EQ(StatusOfReading(empty_slot), Status::TypeError("Struct array required for input"));
}

TEST(StructToArrow, ReturnsTheFailureOfItsValidity) {
  const hxArrayPtr encoded = Struct({{"ArrowType", Char("struct")},
                                     {"Type", Char("struct")},
                                     {"Valid", Envelope("uint8", Scalar<std::uint8_t>(1))},
                                     {"Data", Scalar(1.0)}});
  EXPECT_THAT([&] { return StatusOfReading(encoded); },
              ::testing::ThrowsMessage<std::invalid_argument>("Wrong field name."));
}

TEST(StructToArrow, ReturnsTheStatusOfArrowUnchanged) {
  const hxArrayPtr unequal =
      StructEnvelope(Cell({Char("a"), Char("b")}),
                     Cell({Numbers<double>("double", {1}), Numbers<double>("double", {1, 2})}));
  EXPECT_EQ(StatusOfReading(unequal), Status::Invalid("Mismatching child array lengths"));
  const auto no_children = Status::Invalid("Can't infer struct array length with 0 child arrays");
  EXPECT_EQ(StatusOfReading(StructEnvelope(Cell({}), Cell({}))), no_children);
  EXPECT_EQ(StatusOfReading(StructEnvelope(Empty(), Empty())), no_children);
}

TEST(StructToArrow, ReturnsTheStatusOfArrowForANegativeLength) {
  const auto logical = [] {
    return Envelope("logical", Struct({{"Values", Column<std::uint8_t>({})},
                                       {"Length", Scalar(-3.0)},
                                       {"ArrowType", Char("buffer")}}));
  };
  const hxArrayPtr encoded =
      StructEnvelope(Cell({Char("a"), Char("b")}), Cell({logical(), logical()}));
  EXPECT_EQ(StatusOfReading(encoded),
            Status::IndexError("Offset greater than length of child arrays"));
}

TEST(StructToArrow, LeavesTheNullsOfItsChildrenUncounted) {
  const hxArrayPtr encoded = StructEnvelope(
      Cell({Char("a")}), Cell({Envelope("double", Column<double>(std::vector<double>(100)), {1})}),
      {1});
  const auto structs = ValueOf(to_arrow<::arrow::Array>(encoded.get()));
  EXPECT_EQ(structs->data()->null_count.load(), ::arrow::kUnknownNullCount);
  EXPECT_EQ(structs->data()->child_data[0]->null_count.load(), ::arrow::kUnknownNullCount);
}

TEST(StructToArrow, LetsTheHostReportWhatIsNoCellOrNoStruct) {
  const std::pair<hxArrayPtr, const char*> cases[] = {
      {StructEnvelope(Cell({Char("a")}), Scalar(1.0)), "Array is not cell array."},
      {StructEnvelope(Scalar(1.0), Cell({Numbers<double>("double", {1})})),
       "Array is not cell array."},
      {KindEnvelope("struct", "struct", Scalar(1.0)), "Array is not struct array."},
      {KindEnvelope("struct", "struct", Struct({{"FieldName", Cell({})}})), "Wrong field name."},
      {KindEnvelope("struct", "struct", Struct({{"FieldData", Cell({})}})), "Wrong field name."}};
  for (const auto& [encoded, message] : cases) {
    EXPECT_THAT([&] { return StatusOfReading(encoded); },
                ::testing::ThrowsMessage<std::invalid_argument>(message));
  }
  const hxArrayPtr no_element =
      KindEnvelope("struct", "struct", StructArray({0, 0}, {"FieldName", "FieldData"}, {}));
  EXPECT_THAT([&] { return StatusOfReading(no_element); },
              ::testing::ThrowsMessage<std::out_of_range>("Struct index is out of range."));
}

TEST(StructToHost, WritesNamesAndEnvelopesAsRows) {
  const auto structs = ArrowArray(kPoint, "[[1, 2.5], [3, 4.5]]");
  EXPECT_TRUE(SameHostValue(
      ValueOf(to_numera(structs)).get(),
      WrittenEnvelope("struct", "struct", WrittenBitmap(2),
                      StructData(Cell({1, 2}, {Char("a"), Char("b")}),
                                 Cell({1, 2}, {WrittenNumbers<std::int32_t>("int32", {1, 3}),
                                               WrittenNumbers<double>("double", {2.5, 4.5})})))
          .get()));
}

TEST(StructToHost, CutsChildrenToTheSlice) {
  const auto structs =
      ArrowArray(::arrow::struct_({field("a", ::arrow::int32())}), "[[1], [2], [3], [4], [5]]");
  const ::arrow::ChunkedArray slice(structs->Slice(1, 3)->Slice(1));
  EXPECT_TRUE(
      SameHostValue(ValueOf(StructToHost(slice)).get(),
                    StructData(Cell({1, 1}, {Char("a")}),
                               Cell({1, 1}, {WrittenNumbers<std::int32_t>("int32", {3, 4})}))
                        .get()));
}

TEST(StructToHost, ReadsTheValidityOfASliceFromTheStartOfItsBitmap) {
  const auto structs =
      ArrowArray(::arrow::struct_({field("a", ::arrow::int32())}), "[[1], null, [3], [4]]");
  EXPECT_TRUE(SameHostValue(
      ValueOf(to_numera(structs->Slice(1, 3))).get(),
      WrittenEnvelope("struct", "struct", WrittenBitmap(3, {0b11111101}),
                      StructData(Cell({1, 1}, {Char("a")}),
                                 Cell({1, 1}, {WrittenNumbers<std::int32_t>("int32", {0, 3, 4})})))
          .get()));
}

TEST(StructToHost, CutsAChildThatIsLongerThanTheStruct) {
  const auto child = ArrowArray(::arrow::int32(), "[1, 2, 3]");
  const auto structs = ::arrow::MakeArray(::arrow::ArrayData::Make(
      ::arrow::struct_({field("a", ::arrow::int32())}), 2, {nullptr}, {child->data()}, 0));
  EXPECT_TRUE(
      SameHostValue(ValueOf(StructToHost(::arrow::ChunkedArray(structs))).get(),
                    StructData(Cell({1, 1}, {Char("a")}),
                               Cell({1, 1}, {WrittenNumbers<std::int32_t>("int32", {1, 2})}))
                        .get()));
}

TEST(StructToHost, WritesOneElementAChunkWithItsOwnCellsAndValidity) {
  const auto type = ::arrow::struct_({field("a", ::arrow::int32())});
  const auto chunks = ArrowChunks(type, {"[[1]]", "[null, [3]]"});
  EXPECT_TRUE(SameHostValue(
      ValueOf(to_numera(chunks)).get(),
      WrittenEnvelope(
          "struct", "struct",
          StructArray({2, 1}, {"Values", "Length", "ArrowType"},
                      {{Column<std::uint8_t>({}), Scalar(1.0), Char("buffer")},
                       {Column<std::uint8_t>({0b11111110}), Scalar(2.0), Char("buffer")}}),
          StructArray({2, 1}, {"FieldName", "FieldData"},
                      {{Cell({1, 1}, {Char("a")}),
                        Cell({1, 1}, {WrittenNumbers<std::int32_t>("int32", {1})})},
                       {Cell({1, 1}, {Char("a")}),
                        Cell({1, 1}, {WrittenNumbers<std::int32_t>("int32", {0, 3})})}}))
          .get()));
}

TEST(StructToHost, WritesNoElementsForNoChunks) {
  EXPECT_TRUE(SameHostValue(ValueOf(StructToHost(*ArrowChunks(kPoint, {}))).get(),
                            StructArray({0, 1}, {"FieldName", "FieldData"}, {}).get()));
}

TEST(StructToHost, WritesAStructWithoutFields) {
  const auto structs = ArrowArray(::arrow::struct_({}), "[[], [], []]");
  EXPECT_TRUE(SameHostValue(ValueOf(to_numera(structs)).get(),
                            WrittenEnvelope("struct", "struct", WrittenBitmap(3),
                                            StructData(Cell({1, 0}, {}), Cell({1, 0}, {})))
                                .get()));
}

TEST(StructToHost, KeepsTheTextOfNames) {
  const auto type = ::arrow::struct_({field("\xC3\x9F\xE4\xB8\xAD\xF0\x9F\x98\x80", kPoint),
                                      field("", ::arrow::null()), field("", ::arrow::null())});
  const hxArrayPtr data = ValueOf(StructToHost(::arrow::ChunkedArray(ArrowArray(type, "[]"))));
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
      WrittenEnvelope(
          "struct", "struct", WrittenBitmap(9, {0b11111011, 0xFF}),
          StructData(Cell({1, 1}, {Char("a")}),
                     Cell({1, 1},
                          {WrittenEnvelope("array", "uint8", WrittenValidity(9, {0b11111110, 0xFF}),
                                           Column<std::uint8_t>({1, 2, 3, 4, 5, 6, 7, 8, 9}))})))
          .get()));
}

TEST(Struct, ReturnsToTheSameStructs) {
  const auto type = ::arrow::struct_(
      {field("when", ::arrow::timestamp(::arrow::TimeUnit::MICRO, "UTC")),
       field("where",
             ::arrow::struct_({field("x", ::arrow::float64()), field("on", ::arrow::boolean())}))});
  const auto structs = ArrowArray(type, "[[1, [2.5, true]], null, [null, [null, false]]]");
  const hxArrayPtr written = ValueOf(to_numera(structs));
  EXPECT_TRUE(SameArray(*ValueOf(to_arrow<::arrow::Array>(written.get())), *structs));
}

TEST(Struct, LeavesNothingBehindWhereverItFails) {
  const hxArrayPtr encoded = StructEnvelope(
      Cell({Char("a"), Char("b")}),
      Cell({Numbers<double>("double", {1}),
            StructEnvelope(Cell({Char("c")}), Cell({Numbers<double>("double", {2})}))}),
      {1});
  const FaultSites read =
      FailEverywhere([&] { return to_arrow<::arrow::Array>(encoded.get()).status(); });
  EXPECT_GE(read.calls, 40U);
  const auto structs = ArrowArray(kPoint, "[null, [1, null]]");
  EXPECT_GE(FailEverywhere([&] { return to_numera(structs).status(); }).allocations, 25U);
}

}  // namespace
}  // namespace numera::io::arrow::core
