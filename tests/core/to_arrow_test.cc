#include "numera/core/to_arrow.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "numera/host/memory.h"
#include "numera/host/text_codec.h"
#include "tests/core/reading.h"
#include "tests/support/arrow_values.h"
#include "tests/support/envelopes.h"
#include "tests/support/host_builder.h"
#include "tests/support/thrown.h"

namespace numera::io::arrow::core {
namespace {

using namespace numera::testing;
using ::arrow::Array;
using ::arrow::Status;

TEST(ToArrow, ConvertsAColumnOverTheHostsMemory) {
  const hxArrayPtr encoded = Numbers<double>({1, 2, 3}, {0x05});
  const auto array = to_arrow<Array>(encoded.get()).ValueOrDie();
  EXPECT_TRUE(SameArray(*array, *ArrowArray(::arrow::float64(), "[1, null, 3]")));
  const hxArray* valid = hxGetField(encoded.get(), 0, "Valid");
  EXPECT_EQ(array->data()->buffers[0]->data(), hxGetData(hxGetField(valid, 0, "Values")));
  EXPECT_EQ(array->data()->buffers[0]->size(), 1);
  EXPECT_EQ(array->data()->buffers[1]->data(), hxGetData(hxGetField(encoded.get(), 0, "Data")));
}

TEST(ToArrow, LeavesTheNullCountUnknownAndTheOffsetZero) {
  const hxArrayPtr encoded = Numbers<double>({1, 2, 3}, {0x05});
  const auto array = to_arrow<Array>(encoded.get()).ValueOrDie();
  EXPECT_EQ(array->data()->null_count.load(), -1);
  EXPECT_EQ(array->offset(), 0);
  EXPECT_EQ(array->null_count(), 1);
}

TEST(ToArrow, MakesNoBitmapOfAValidWithoutBytes) {
  const hxArrayPtr encoded = Numbers<double>({1, 2, 3});
  const auto array = to_arrow<Array>(encoded.get()).ValueOrDie();
  EXPECT_EQ(array->data()->buffers[0], nullptr);
  EXPECT_TRUE(SameArray(*array, *ArrowArray(::arrow::float64(), "[1, 2, 3]")));
}

TEST(ToArrow, TakesTheFieldsInAnyOrderAndOthersBesideThem) {
  const hxArrayPtr encoded = Struct({{"Data", Column<double>({1})},
                                     {"Note", Empty()},
                                     {"Valid", BufferEnvelope({})},
                                     {"Type", Char("double")},
                                     {"ArrowType", Char("array")}});
  EXPECT_TRUE(SameArray(*to_arrow<Array>(encoded.get()).ValueOrDie(),
                        *ArrowArray(::arrow::float64(), "[1]")));
}

TEST(ToArrow, TakesAnObjectAsTheEnvelope) {
  const hxArrayPtr encoded =
      ObjectArray("column", {1, 1}, kEnvelopeFields,
                  {{Char("array"), Char("double"), BufferEnvelope({}), Column<double>({1})}});
  EXPECT_TRUE(SameArray(*to_arrow<Array>(encoded.get()).ValueOrDie(),
                        *ArrowArray(::arrow::float64(), "[1]")));
}

TEST(ToArrow, LetsTheClassOfNumbersDecideTheType) {
  for (const char* type : {"string", "logical", "no such type", ""}) {
    SCOPED_TRACE(type);
    const hxArrayPtr encoded = Envelope(type, Column<std::int8_t>({1, 2}));
    EXPECT_TRUE(SameArray(*to_arrow<Array>(encoded.get()).ValueOrDie(),
                          *ArrowArray(::arrow::int8(), "[1, 2]")));
  }
}

TEST(ToArrow, ConvertsTheElementThatIsAskedFor) {
  const hxArrayPtr encoded =
      StructColumn(kEnvelopeFields,
                   {Numbers<double>({1}), Envelope("logical", WrittenBitmap(2, {0x03}), {0x02})});
  EXPECT_TRUE(
      SameArray(*to_arrow(encoded.get(), 0).ValueOrDie(), *ArrowArray(::arrow::float64(), "[1]")));
  EXPECT_TRUE(SameArray(*to_arrow(encoded.get(), 1).ValueOrDie(),
                        *ArrowArray(::arrow::boolean(), "[null, true]")));
}

TEST(ToArrow, ReportsTheFirstFailingFieldInTheOrderOfTheChecks) {
  struct Case {
    hxArrayPtr encoded;
    const char* message;
  };
  const auto bad = [] { return Scalar(1.0); };
  const Case cases[] = {
      {EnvelopeOf(bad(), bad(), bad(), Empty()), "Missing field 'Data' in input struct array"},
      {EnvelopeOf(bad(), bad(), bad(), bad()),
       "Incorrect type 'double' for struct array field 'ArrowType'"},
      {EnvelopeOf(Empty(), bad(), bad(), bad()), "Missing field 'ArrowType' in input struct array"},
      {EnvelopeOf(Char("array"), bad(), bad(), bad()),
       "Incorrect type 'double' for struct array field 'Type'"},
      {EnvelopeOf(Char("array"), Empty(), bad(), bad()),
       "Missing field 'Type' in input struct array"},
      {EnvelopeOf(Char("array"), Strings({u"double"}), bad(), bad()),
       "Incorrect type 'string' for struct array field 'Type'"},
      {EnvelopeOf(Char("array"), Char("double"), bad(), bad()),
       "Incorrect type 'double' for struct array field 'Valid'"},
      {EnvelopeOf(Char("array"), Char("double"), Empty(), bad()),
       "Missing field 'Valid' in input struct array"},
      {EnvelopeOf(Char("array"), Char("double"),
                  ObjectArray("bitmap", {1, 1}, {"ArrowType", "Values"},
                              {{Char("buffer"), Column<std::uint8_t>({})}}),
                  bad()),
       "Incorrect type 'bitmap' for struct array field 'Valid'"},
  };
  for (const Case& one : cases) {
    SCOPED_TRACE(one.message);
    EXPECT_EQ(StatusOfReading(one.encoded), Status::TypeError(one.message));
  }
}

TEST(ToArrow, RunsEveryCheckEvenAfterAFailure) {
  const hxArrayPtr encoded =
      Struct({{"Data", Empty()}, {"ArrowType", Char("array")}, {"Type", Char("double")}});
  EXPECT_EQ(MessageThrown<std::invalid_argument>(
                [&encoded] { static_cast<void>(to_arrow<Array>(encoded.get())); }),
            "Wrong field name.");
}

TEST(ToArrow, ThrowsForEachFieldThatTheStructLacks) {
  for (const char* missing : kEnvelopeFields) {
    SCOPED_TRACE(missing);
    std::vector<const char*> others;
    for (const char* name : kEnvelopeFields) others.push_back(name == missing ? "other" : name);
    const hxArrayPtr encoded = StructArray(
        {1, 1}, others, {{Char("array"), Char("double"), BufferEnvelope({}), Scalar(1.0)}});
    EXPECT_EQ(MessageThrown<std::invalid_argument>(
                  [&encoded] { static_cast<void>(to_arrow<Array>(encoded.get())); }),
              "Wrong field name.");
  }
}

TEST(ToArrow, ThrowsForAStructWithoutElements) {
  const hxArrayPtr encoded = StructArray({0, 0}, kEnvelopeFields, {});
  EXPECT_EQ(MessageThrown<std::out_of_range>(
                [&encoded] { static_cast<void>(to_arrow<Array>(encoded.get())); }),
            "Struct index is out of range.");
}

TEST(ToArrow, ThrowsForAnElementThatIsNotThere) {
  const hxArrayPtr encoded = Numbers<double>({1});
  EXPECT_EQ(MessageThrown<std::out_of_range>(
                [&encoded] { static_cast<void>(to_arrow(encoded.get(), 1)); }),
            "Struct index is out of range.");
}

TEST(ToArrow, RefusesWhatIsNoStruct) {
  const hxArrayPtr others[] = {Scalar(1.0), Char("array"), Cell({}), nullptr};
  for (const hxArrayPtr& other : others) {
    EXPECT_EQ(StatusOfReading(other), Status::TypeError("Struct array required for input"));
  }
}

TEST(ToArrow, RefusesOtherKindsAndQuotesThem) {
  for (const char* kind : {"Array", "map", "table", "buffer", "array ", "LIST_ARRAY", ""}) {
    SCOPED_TRACE(kind);
    const hxArrayPtr encoded = KindEnvelope(kind, "double", Scalar(1.0));
    EXPECT_EQ(StatusOfReading(encoded),
              Status::TypeError("Expected 'array' input type, received '", kind, "' instead."));
  }
}

TEST(ToArrow, LetsTheCodecRefuseAKindThatIsNoText) {
  const char16_t unpaired[] = {0xDC00};
  const hxArrayPtr encoded = EnvelopeOf(Char(std::u16string_view(unpaired, 1)), Char("double"),
                                        BufferEnvelope({}), Scalar(1.0));
  EXPECT_THROW(static_cast<void>(StatusOfReading(encoded)), hxCodecError);
}

TEST(ToArrow, RefusesDataWithoutAConverter) {
  const auto logical_struct = [] { return WrittenBitmap(1, {1}); };
  const hxArrayPtr cases[] = {
      Envelope("double", logical_struct()),
      Envelope("Logical", logical_struct()),
      Envelope("", logical_struct()),
      Envelope("fixed_binary_array", logical_struct()),
      Envelope("list_array", logical_struct()),
      Envelope("struct", logical_struct()),
      Envelope("map", logical_struct()),
      Envelope("null", logical_struct()),
      Envelope("logical", Logical({true})),
      Envelope("string", Cell({Char("a")})),
      Envelope("char", Char("a")),
  };
  const Status expected = Status::Invalid("Invalid type for NUMERA to Arrow conversion.");
  for (const hxArrayPtr& encoded : cases) {
    EXPECT_EQ(StatusOfReading(encoded), expected);
  }
}

TEST(ToArrow, TakesAnObjectAsStructData) {
  const hxArrayPtr encoded =
      Envelope("logical", ObjectArray("bits", {1, 1}, kBitmapFields,
                                      {{Column<std::uint8_t>({2}), Scalar(2.0), Char("buffer")}}));
  EXPECT_TRUE(SameArray(*to_arrow<Array>(encoded.get()).ValueOrDie(),
                        *ArrowArray(::arrow::boolean(), "[false, true]")));
}

TEST(ToArrow, NamesDataThatIsComplexOrSparse) {
  EXPECT_EQ(StatusOfReading(Envelope("double", Complex<double>({1, 1}, {{1, 2}}))),
            Status::TypeError("Field 'Data': found a complex 1-by-1 double array, expected a real "
                              "array that is not sparse."));
  EXPECT_EQ(StatusOfReading(
                Envelope("double", host::memory::CreateSparseArray(Dims{2, 2}, hxClassID::Double))),
            Status::TypeError("Field 'Data': found a sparse 2-by-2 double array, expected a real "
                              "array that is not sparse."));
}

TEST(ToArrow, PassesOnWhatIsWrongWithValid) {
  const hxArrayPtr encoded =
      EnvelopeOf(Char("array"), Char("double"), Numbers<double>({1}), Scalar(1.0));
  EXPECT_EQ(MessageThrown<std::invalid_argument>(
                [&encoded] { static_cast<void>(to_arrow<Array>(encoded.get())); }),
            "Wrong field name.");
  const hxArrayPtr of_another_kind =
      EnvelopeOf(Char("array"), Char("double"), BufferOf(Char("array"), Column<std::uint8_t>({})),
                 Char("text"));
  EXPECT_EQ(StatusOfReading(of_another_kind),
            Status::TypeError("Expected 'buffer' input type, received 'array' instead."));
}

TEST(ToArrow, AnswersEmptySlotsOfLaterElementsWithAStatus) {
  const std::pair<size_t, Status> cases[] = {
      {0, Status::TypeError("Expected 'array' input type, received '' instead.")},
      {1, Status::OK()},
      {2, Status::TypeError("Struct array required for input")},
      {3, Status::Invalid("Invalid type for NUMERA to Arrow conversion.")},
  };
  for (const auto& [empty, expected] : cases) {
    SCOPED_TRACE(kEnvelopeFields[empty]);
    hxArrayPtr second = Numbers<double>({1});
    hxSetField(second.get(), 0, kEnvelopeFields[empty], Empty());
    const hxArrayPtr encoded =
        StructColumn(kEnvelopeFields, {Numbers<double>({1}), std::move(second)});
    EXPECT_EQ(to_arrow(encoded.get(), 1).status(), expected);
  }
}

}  // namespace
}  // namespace numera::io::arrow::core
