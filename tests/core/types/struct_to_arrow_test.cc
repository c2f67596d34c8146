#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

#include "numera/core/to_arrow.h"
#include "numera/core/to_numera.h"
#include "tests/core/fail_conversions.h"
#include "tests/core/reading.h"
#include "tests/support/arrow_values.h"
#include "tests/support/envelopes.h"
#include "tests/support/host_builder.h"
#include "tests/support/recording_host.h"
#include "tests/support/results.h"

namespace numera::io::arrow::core {
namespace {

using namespace numera::testing;
using ::arrow::field;
using ::arrow::Status;

const std::shared_ptr<::arrow::DataType> kPoint =
    ::arrow::struct_({field("a", ::arrow::int32()), field("b", ::arrow::float64())});

TEST(StructToArrow, NamesItsChildrenInOrder) {
  const hxArrayPtr encoded =
      StructEnvelope({"a", "b"}, {Numbers<std::int32_t>({1, 2, 3}), Numbers<double>({4, 5, 6})});
  EXPECT_TRUE(SameArray(*ValueOf(to_arrow<::arrow::Array>(encoded.get())),
                        *ArrowArray(kPoint, "[[1, 4], [2, 5], [3, 6]]")));
}

TEST(StructToArrow, TakesCellsOfAnyShape) {
  const hxArrayPtr encoded =
      KindEnvelope("struct", "struct",
                   StructData(Cell({2, 1}, {Char("a"), Char("b")}),
                              Cell({1, 2}, {Numbers<std::int32_t>({1}), Numbers<double>({2})})));
  EXPECT_TRUE(SameArray(*ValueOf(to_arrow<::arrow::Array>(encoded.get())),
                        *ArrowArray(kPoint, "[[1, 2]]")));
}

TEST(StructToArrow, TakesItsOwnNullsFromValid) {
  const hxArrayPtr encoded = StructEnvelope(
      {"a", "b"}, {Numbers<std::int32_t>({1, 2}), Numbers<double>({3, 4}, {0b01})}, {0b10});
  const auto structs = ValueOf(to_arrow<::arrow::Array>(encoded.get()));
  EXPECT_TRUE(SameArray(*structs, *ArrowArray(kPoint, "[null, [2, null]]")));
  const hxArray* valid = hxGetField(encoded.get(), 0, "Valid");
  EXPECT_EQ(structs->data()->buffers[0]->data(), hxGetData(hxGetField(valid, 0, "Values")));
}

TEST(StructToArrow, HasNoBitmapWhereValidHasNoBytes) {
  const hxArrayPtr encoded = StructEnvelope({"a"}, {Numbers<std::int32_t>({1})});
  EXPECT_EQ(ValueOf(to_arrow<::arrow::Array>(encoded.get()))->data()->buffers[0], nullptr);
}

TEST(StructToArrow, PassesNamesThrough) {
  const hxArrayPtr encoded = KindEnvelope(
      "struct", "struct",
      StructData(Cell({Char(u"\u00DF\u4E2D\U0001F600"), Char(""), Char("x"), Char("x"), Empty(),
                       Strings({u"text"})}),
                 Cell({Numbers<double>({1}), Numbers<double>({2}), Numbers<double>({3}),
                       Numbers<double>({4}), Numbers<double>({5}), Numbers<double>({6})})));
  const auto structs = ValueOf(to_arrow<::arrow::Array>(encoded.get()));
  std::vector<std::string> names;
  for (const auto& child : structs->type()->fields()) names.push_back(child->name());
  EXPECT_THAT(names,
              ::testing::ElementsAre("\xC3\x9F\xE4\xB8\xAD\xF0\x9F\x98\x80", "", "x", "x", "", ""));
}

TEST(StructToArrow, ReadsTheFirstChunkOnly) {
  const hxArrayPtr encoded =
      KindEnvelope("struct", "struct",
                   StructColumn(kStructFields, {StructData({"a"}, {Numbers<std::int32_t>({1})}),
                                                StructData(Empty(), Empty())}));
  EXPECT_TRUE(SameArray(*ValueOf(to_arrow<::arrow::Array>(encoded.get())),
                        *ArrowArray(::arrow::struct_({field("a", ::arrow::int32())}), "[[1]]")));
}

TEST(StructToArrow, ComparesTheNumbersOfCellsBeforeAnyChildIsConverted) {
  const auto mismatch =
      Status::Invalid("Expect FieldData and FieldName to have the same number of elements");
  const hxArrayPtr cases[] = {
      StructEnvelope({"a", "b"}, {Scalar(1.0), Scalar(2.0), Scalar(3.0)}),
      StructEnvelope({"a", "b"}, {Scalar(1.0)}),
      KindEnvelope("struct", "struct", StructData(Cell({}), Cell({Scalar(1.0)}))),
      KindEnvelope("struct", "struct", StructData(Empty(), Cell({Scalar(1.0)}))),
      KindEnvelope("struct", "struct", StructData(Cell({Char("a")}), Empty()))};
  for (const hxArrayPtr& encoded : cases) EXPECT_EQ(StatusOfReading(encoded), mismatch);
}

TEST(StructToArrow, ReturnsTheFirstFailureAndReadsNoFurtherChild) {
  const hxArrayPtr encoded = StructEnvelope(
      {"a", "b", "c"}, {Numbers<double>({1}), Envelope("double", Struct({})), Scalar(3.0)});
  Reset();
  EXPECT_EQ(StatusOfReading(encoded),
            Status::Invalid("Invalid type for NUMERA to Arrow conversion."));
  EXPECT_EQ(Calls("hxGetCellChecked"), 3U) << "two children and the name of the first";
  const hxArrayPtr empty_slot = StructEnvelope({"a"}, {Empty()});
  EXPECT_EQ(StatusOfReading(empty_slot), Status::TypeError("Struct array required for input"));
}

TEST(StructToArrow, ReturnsTheFailureOfItsValidity) {
  const hxArrayPtr encoded =
      WrittenEnvelope("struct", "struct", Numbers<std::uint8_t>({1}), Scalar(1.0));
  EXPECT_THAT([&] { return StatusOfReading(encoded); },
              ::testing::ThrowsMessage<std::invalid_argument>("Wrong field name."));
}

TEST(StructToArrow, ReturnsTheStatusOfArrowUnchanged) {
  const hxArrayPtr unequal =
      StructEnvelope({"a", "b"}, {Numbers<double>({1}), Numbers<double>({1, 2})});
  EXPECT_EQ(StatusOfReading(unequal), Status::Invalid("Mismatching child array lengths"));
  const auto no_children = Status::Invalid("Can't infer struct array length with 0 child arrays");
  EXPECT_EQ(StatusOfReading(KindEnvelope("struct", "struct", StructData(Cell({}), Cell({})))),
            no_children);
  EXPECT_EQ(StatusOfReading(KindEnvelope("struct", "struct", StructData(Empty(), Empty()))),
            no_children);
}

TEST(StructToArrow, ReturnsTheStatusOfArrowForANegativeLength) {
  const auto logical = [] { return Envelope("logical", WrittenBitmap(-3)); };
  const hxArrayPtr encoded = StructEnvelope({"a", "b"}, {logical(), logical()});
  EXPECT_EQ(StatusOfReading(encoded),
            Status::IndexError("Offset greater than length of child arrays"));
}

TEST(StructToArrow, LeavesTheNullsOfItsChildrenUncounted) {
  const hxArrayPtr encoded =
      StructEnvelope({"a"}, {Numbers<double>(std::vector<double>(100), {1})}, {1});
  const auto structs = ValueOf(to_arrow<::arrow::Array>(encoded.get()));
  EXPECT_EQ(structs->data()->null_count.load(), ::arrow::kUnknownNullCount);
  EXPECT_EQ(structs->data()->child_data[0]->null_count.load(), ::arrow::kUnknownNullCount);
}

TEST(StructToArrow, LetsTheHostReportWhatIsNoCellOrNoStruct) {
  const std::pair<hxArrayPtr, const char*> cases[] = {
      {KindEnvelope("struct", "struct", StructData(Cell({Char("a")}), Scalar(1.0))),
       "Array is not cell array."},
      {KindEnvelope("struct", "struct", StructData(Scalar(1.0), Cell({Numbers<double>({1})}))),
       "Array is not cell array."},
      {KindEnvelope("struct", "struct", Scalar(1.0)), "Array is not struct array."},
      {KindEnvelope("struct", "struct", Struct({{"FieldName", Cell({})}})), "Wrong field name."},
      {KindEnvelope("struct", "struct", Struct({{"FieldData", Cell({})}})), "Wrong field name."}};
  for (const auto& [encoded, message] : cases) {
    EXPECT_THAT([&] { return StatusOfReading(encoded); },
                ::testing::ThrowsMessage<std::invalid_argument>(message));
  }
  const hxArrayPtr no_element =
      KindEnvelope("struct", "struct", StructArray({0, 0}, kStructFields, {}));
  EXPECT_THAT([&] { return StatusOfReading(no_element); },
              ::testing::ThrowsMessage<std::out_of_range>("Struct index is out of range."));
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
      {"a", "b"}, {Numbers<double>({1}), StructEnvelope({"c"}, {Numbers<double>({2})})}, {1});
  FailReading(encoded);
  const auto structs = ArrowArray(kPoint, "[null, [1, null]]");
  FailWriting(structs);
}

}  // namespace
}  // namespace numera::io::arrow::core
