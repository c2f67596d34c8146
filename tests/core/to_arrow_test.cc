#include "numera/core/to_arrow.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "numera/host/memory.h"
#include "numera/host/text_codec.h"
#include "tests/support/arrow_values.h"
#include "tests/support/envelopes.h"
#include "tests/support/host_builder.h"
#include "tests/support/thrown.h"

namespace numera::io::arrow::core {
namespace {

using namespace numera::testing;
using ::arrow::Array;
using ::arrow::Status;

Status converted(const hxArrayPtr& encoded) { return to_arrow<Array>(encoded.get()).status(); }

/// An envelope with the four given fields.
hxArrayPtr envelope_of(hxArrayPtr kind, hxArrayPtr type, hxArrayPtr valid, hxArrayPtr data) {
  return Struct({{"ArrowType", std::move(kind)},
                 {"Type", std::move(type)},
                 {"Valid", std::move(valid)},
                 {"Data", std::move(data)}});
}

TEST(ToArrow, ConvertsAColumnOverTheHostsMemory) {
  const hxArrayPtr encoded = Envelope("double", Column<double>({1, 2, 3}), {0x05});
  const auto array = to_arrow<Array>(encoded.get()).ValueOrDie();
  EXPECT_TRUE(SameArray(*array, *ArrowArray(::arrow::float64(), "[1, null, 3]")));
  const hxArray* valid = hxGetField(encoded.get(), 0, "Valid");
  EXPECT_EQ(array->data()->buffers[0]->data(), hxGetData(hxGetField(valid, 0, "Values")));
  EXPECT_EQ(array->data()->buffers[0]->size(), 1);
  EXPECT_EQ(array->data()->buffers[1]->data(), hxGetData(hxGetField(encoded.get(), 0, "Data")));
}

TEST(ToArrow, LeavesTheNullCountUnknownAndTheOffsetZero) {
  const hxArrayPtr encoded = Envelope("double", Column<double>({1, 2, 3}), {0x05});
  const auto array = to_arrow<Array>(encoded.get()).ValueOrDie();
  EXPECT_EQ(array->data()->null_count.load(), -1);
  EXPECT_EQ(array->offset(), 0);
  EXPECT_EQ(array->null_count(), 1);
}

TEST(ToArrow, MakesNoBitmapOfAValidWithoutBytes) {
  const hxArrayPtr encoded = Envelope("double", Column<double>({1, 2, 3}));
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
      ObjectArray("column", {1, 1}, {"ArrowType", "Type", "Valid", "Data"},
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
  const hxArrayPtr encoded = StructArray(
      {2, 1}, {"ArrowType", "Type", "Valid", "Data"},
      {{Char("array"), Char("double"), BufferEnvelope({}), Column<double>({1})},
       {Char("array"), Char("logical"), BufferEnvelope({0x02}), WrittenBitmap(2, {0x03})}});
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
      {envelope_of(bad(), bad(), bad(), Empty()), "Missing field 'Data' in input struct array"},
      {envelope_of(bad(), bad(), bad(), bad()),
       "Incorrect type 'double' for struct array field 'ArrowType'"},
      {envelope_of(Empty(), bad(), bad(), bad()),
       "Missing field 'ArrowType' in input struct array"},
      {envelope_of(Char("array"), bad(), bad(), bad()),
       "Incorrect type 'double' for struct array field 'Type'"},
      {envelope_of(Char("array"), Empty(), bad(), bad()),
       "Missing field 'Type' in input struct array"},
      {envelope_of(Char("array"), Strings({u"double"}), bad(), bad()),
       "Incorrect type 'string' for struct array field 'Type'"},
      {envelope_of(Char("array"), Char("double"), bad(), bad()),
       "Incorrect type 'double' for struct array field 'Valid'"},
      {envelope_of(Char("array"), Char("double"), Empty(), bad()),
       "Missing field 'Valid' in input struct array"},
      {envelope_of(Char("array"), Char("double"),
                   ObjectArray("bitmap", {1, 1}, {"ArrowType", "Values"},
                               {{Char("buffer"), Column<std::uint8_t>({})}}),
                   bad()),
       "Incorrect type 'bitmap' for struct array field 'Valid'"},
  };
  for (const Case& one : cases) {
    SCOPED_TRACE(one.message);
    EXPECT_EQ(converted(one.encoded), Status::TypeError(one.message));
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
  const std::vector<const char*> names = {"ArrowType", "Type", "Valid", "Data"};
  for (const char* missing : names) {
    SCOPED_TRACE(missing);
    std::vector<const char*> others;
    for (const char* name : names) others.push_back(name == missing ? "other" : name);
    const hxArrayPtr encoded = StructArray(
        {1, 1}, others, {{Char("array"), Char("double"), BufferEnvelope({}), Scalar(1.0)}});
    EXPECT_EQ(MessageThrown<std::invalid_argument>(
                  [&encoded] { static_cast<void>(to_arrow<Array>(encoded.get())); }),
              "Wrong field name.");
  }
}

TEST(ToArrow, ThrowsForAStructWithoutElements) {
  const hxArrayPtr encoded = StructArray({0, 0}, {"ArrowType", "Type", "Valid", "Data"}, {});
  EXPECT_EQ(MessageThrown<std::out_of_range>(
                [&encoded] { static_cast<void>(to_arrow<Array>(encoded.get())); }),
            "Struct index is out of range.");
}

TEST(ToArrow, ThrowsForAnElementThatIsNotThere) {
  const hxArrayPtr encoded = Envelope("double", Scalar(1.0));
  EXPECT_EQ(MessageThrown<std::out_of_range>(
                [&encoded] { static_cast<void>(to_arrow(encoded.get(), 1)); }),
            "Struct index is out of range.");
}

TEST(ToArrow, RefusesWhatIsNoStruct) {
  const hxArrayPtr others[] = {Scalar(1.0), Char("array"), Cell({}), nullptr};
  for (const hxArrayPtr& other : others) {
    EXPECT_EQ(converted(other), Status::TypeError("Struct array required for input"));
  }
}

TEST(ToArrow, RefusesOtherKindsAndQuotesThem) {
  for (const char* kind : {"Array", "map", "table", "buffer", "array ", "LIST_ARRAY", ""}) {
    SCOPED_TRACE(kind);
    const hxArrayPtr encoded = KindEnvelope(kind, "double", Scalar(1.0));
    EXPECT_EQ(converted(encoded),
              Status::TypeError("Expected 'array' input type, received '", kind, "' instead."));
  }
}

TEST(ToArrow, LetsTheCodecRefuseAKindThatIsNoText) {
  const char16_t unpaired[] = {0xDC00};
  const hxArrayPtr encoded = envelope_of(Char(std::u16string_view(unpaired, 1)), Char("double"),
                                         BufferEnvelope({}), Scalar(1.0));
  EXPECT_THROW(static_cast<void>(converted(encoded)), hxCodecError);
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
    EXPECT_EQ(converted(encoded), expected);
  }
}

TEST(ToArrow, TakesAnObjectAsStructData) {
  const hxArrayPtr encoded =
      Envelope("logical", ObjectArray("bits", {1, 1}, {"Values", "Length", "ArrowType"},
                                      {{Column<std::uint8_t>({2}), Scalar(2.0), Char("buffer")}}));
  EXPECT_TRUE(SameArray(*to_arrow<Array>(encoded.get()).ValueOrDie(),
                        *ArrowArray(::arrow::boolean(), "[false, true]")));
}

TEST(ToArrow, NamesDataThatIsComplexOrSparse) {
  EXPECT_EQ(converted(Envelope("double", Complex<double>({1, 1}, {{1, 2}}))),
            Status::TypeError("Field 'Data': found a complex 1-by-1 double array, expected a real "
                              "array that is not sparse."));
  EXPECT_EQ(
      converted(Envelope("double", host::memory::CreateSparseArray(Dims{2, 2}, hxClassID::Double))),
      Status::TypeError("Field 'Data': found a sparse 2-by-2 double array, expected a real "
                        "array that is not sparse."));
}

TEST(ToArrow, PassesOnWhatIsWrongWithValid) {
  const hxArrayPtr encoded = envelope_of(Char("array"), Char("double"),
                                         KindEnvelope("array", "double", Scalar(1.0)), Scalar(1.0));
  EXPECT_EQ(MessageThrown<std::invalid_argument>(
                [&encoded] { static_cast<void>(to_arrow<Array>(encoded.get())); }),
            "Wrong field name.");
  const hxArrayPtr of_another_kind = envelope_of(
      Char("array"), Char("double"),
      Struct({{"ArrowType", Char("array")}, {"Values", Column<std::uint8_t>({})}}), Char("text"));
  EXPECT_EQ(converted(of_another_kind),
            Status::TypeError("Expected 'buffer' input type, received 'array' instead."));
}

TEST(ToArrow, AnswersEmptySlotsOfLaterElementsWithAStatus) {
  const std::vector<const char*> names = {"ArrowType", "Type", "Valid", "Data"};
  const auto first = [](int field) -> hxArrayPtr {
    if (field == 0) return Char("array");
    if (field == 1) return Char("double");
    if (field == 2) return BufferEnvelope({});
    return Scalar(1.0);
  };
  const std::pair<int, Status> cases[] = {
      {0, Status::TypeError("Expected 'array' input type, received '' instead.")},
      {1, Status::OK()},
      {2, Status::TypeError("Struct array required for input")},
      {3, Status::Invalid("Invalid type for NUMERA to Arrow conversion.")},
  };
  for (const auto& [empty, expected] : cases) {
    SCOPED_TRACE(names[static_cast<size_t>(empty)]);
    const hxArrayPtr encoded = hxCreateStructArray(Dims{2, 1}, names);
    for (int field = 0; field < 4; ++field) {
      hxSetField(encoded.get(), 0, names[static_cast<size_t>(field)], first(field));
      if (field == empty) continue;
      hxSetField(encoded.get(), 1, names[static_cast<size_t>(field)], first(field));
    }
    EXPECT_EQ(to_arrow(encoded.get(), 1).status(), expected);
  }
}

}  // namespace
}  // namespace numera::io::arrow::core
