#include "tests/extras/encode/refusals.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "numera/host/memory.h"
#include "tests/support/envelopes.h"

namespace numera::testing {
namespace {

const std::string kPlainValues =
    ", expected numbers, logical values, text, a cell of texts or of bytes, or an encoded value.";

TEST(EncodeRefusals, NoValue) {
  EXPECT_EQ(refusal(static_cast<const hxArray*>(nullptr)),
            "Invalid: Value: found a null pointer, expected an array.");
}

TEST(EncodeRefusals, ComplexAndSparseValues) {
  EXPECT_EQ(
      refusal(Complex<double>({1, 2}, {{1, 2}, {3, 4}})),
      "Type error: Value: found a complex 1-by-2 double array, expected real numbers that are "
      "not sparse.");
  EXPECT_EQ(refusal(host::memory::CreateSparseArray(Dims{2, 3}, hxClassID::Double)),
            "Type error: Value: found a sparse 2-by-3 double array, expected real numbers that are "
            "not sparse.");
  EXPECT_EQ(refusal(host::memory::CreateSparseArray(Dims{2, 3}, hxClassID::Logical)),
            "Type error: Value: found a sparse 2-by-3 logical array, expected logical values that "
            "are not sparse.");
  EXPECT_EQ(refusal(Cell({Complex<std::uint8_t>({1, 1}, {{1, 2}})})),
            "Type error: {0}: found a complex 1-by-1 uint8 array, expected real numbers that are "
            "not sparse.");
}

TEST(EncodeRefusals, ObjectsAndStructsThatAreNotEncoded) {
  EXPECT_EQ(refusal(ObjectArray("Point", {1, 1}, {"X"}, {{Scalar(1.0)}})),
            "Type error: Value: found a 1-by-1 Point array" + kPlainValues);
  EXPECT_EQ(refusal(Struct({{"X", Scalar(1.0)}})),
            "Type error: Value: found a 1-by-1 struct array" + kPlainValues);
  EXPECT_EQ(refusal(StructArray({2, 1}, {"X"}, {{Scalar(1.0)}, {Scalar(2.0)}})),
            "Type error: Value: found a 2-by-1 struct array" + kPlainValues);
}

TEST(EncodeRefusals, CellsOfMixedContent) {
  EXPECT_EQ(refusal(Cell({Char("a"), Scalar(1.0)})),
            "Type error: {1}: found a 1-by-1 double array, expected a char row.");
  EXPECT_EQ(refusal(Cell({Char("a"), Column<std::uint8_t>({1})})),
            "Type error: {1}: found a 1-by-1 uint8 array, expected a char row.");
  EXPECT_EQ(refusal(Cell({Column<std::uint8_t>({1}), Char("a")})),
            "Type error: {1}: found a 1-by-1 char array, expected a uint8 array.");
  EXPECT_EQ(refusal(Cell({Scalar(1.0)})),
            "Type error: {0}: found a 1-by-1 double array, expected a char row.");
  EXPECT_EQ(refusal(Cell({Strings({u"a"})})),
            "Type error: {0}: found a 1-by-1 string array, expected a char row.");
  EXPECT_EQ(refusal(Cell({Char("a"), Empty()})), "Type error: {1}: found no value, expected one.");
  EXPECT_EQ(refusal(Cell({Empty()})), "Type error: {0}: found no value, expected one.");
  EXPECT_EQ(refusal(Cell({Column<std::uint8_t>({1}), Empty()})),
            "Type error: {1}: found no value, expected one.");
}

TEST(EncodeRefusals, TextOfShapesThatHaveNoRows) {
  EXPECT_EQ(refusal(CharMatrix({1, 1, 2}, u"ab")),
            "Type error: Value: found a 1-by-1-by-2 char array, expected a char array of two "
            "dimensions.");
  EXPECT_EQ(refusal(Cell({CharMatrix({2, 1}, u"ab")})),
            "Type error: {0}: found a 2-by-1 char array, expected a char row.");
}

TEST(EncodeRefusals, TextThatIsNotUtf16) {
  const std::string lone = refusal(Strings({u"a", u"\xD800"}));
  EXPECT_TRUE(lone.starts_with("Invalid: Value: found text that is not UTF-16 in element 1 ("))
      << lone;
  EXPECT_TRUE(lone.ends_with("), expected paired surrogates.")) << lone;
  const std::string inner =
      refusal(WrittenArray("string", 1, Cell({1, 2}, {Char(u"a"), Char(u"\xDC00")})));
  EXPECT_TRUE(inner.starts_with("Invalid: .Data: found text that is not UTF-16 in element 1 ("))
      << inner;
}

TEST(EncodeRefusals, EnvelopesThatLackAFieldOrHaveOneOfAWrongClass) {
  const Refused rows[] = {
      {Struct({{"ArrowType", Char("array")}}),
       "Type error: Value: found a 1-by-1 struct array, expected the field 'Type' in it."},
      {WrittenEnvelope("array", "double", Empty(), Scalar(1.0)),
       "Type error: .Valid: found no value, expected one."},
      {Struct({{"ArrowType", Scalar(1.0)}}),
       "Type error: .ArrowType: found a 1-by-1 double array, expected a char array."},
      {Struct({{"ArrowType", Empty()}}), "Type error: .ArrowType: found no value, expected one."},
      {StructArray({0, 1}, {"ArrowType"}, {}), "Invalid: Value: found 0 elements, expected one."},
      {KindEnvelope("Array", "double", Scalar(1.0)),
       "Invalid: .ArrowType: found 'Array', expected 'array', 'list_array', 'struct' or 'map'."},
      {WrittenEnvelope("array", "double", Scalar(1.0), Scalar(1.0)),
       "Type error: .Valid: found a 1-by-1 double array, expected a struct array."},
      {WrittenArray("double", 1, WrittenBitmap(1, {1})),
       "Invalid: .Type: found 'double', expected the name of a type whose 'Data' is a struct."},
      {WrittenArray("double", 9, Column<double>({1, 2, 3, 4, 5, 6, 7, 8, 9}), {1}),
       "Invalid: .Valid.Values: found 1 bytes, expected at least 2, one bit for each of 9 "
       "elements."},
      {WrittenEnvelope("array", "double", BufferOf(Char("bits"), Column<std::uint8_t>({})),
                       Scalar(1.0)),
       "Invalid: .Valid.ArrowType: found 'bits', expected 'buffer'."},
      {WrittenEnvelope("array", "double", BufferOf(Char("buffer"), Column<double>({})),
                       Scalar(1.0)),
       "Type error: .Valid.Values: found a 0-by-1 double array, expected a uint8 array."},
      {BufferOf(Char("buffer"), Scalar(1.0)),
       "Type error: .Values: found a 1-by-1 double array, expected a uint8 array."},
  };
  for (const Refused& row : rows) EXPECT_EQ(refusal(row.value), row.text);
}

TEST(EncodeRefusals, DataThatDoesNotFitItsType) {
  const auto written = [](std::string_view type, hxArrayPtr data) {
    return WrittenArray(type, 1, std::move(data));
  };
  const auto categorical = [&](hxArrayPtr categories, hxArrayPtr codes, hxArrayPtr ordinal) {
    return written("categorical",
                   CategoricalData(std::move(categories), std::move(codes), std::move(ordinal)));
  };
  const Refused rows[] = {
      {written("null", Scalar(3.0)),
       "Type error: .Data: found a 1-by-1 double array, expected an int64 array that holds the "
       "number of elements."},
      {written("null", Scalar<std::int64_t>(-1)),
       "Invalid: .Data: found -1, expected the number of elements, 0 or more."},
      {written("null", Column<std::int64_t>({1, 2})),
       "Invalid: .Data: found 2 elements, expected one."},
      {written("logical", WrittenBitmap(9, {1})),
       "Invalid: .Data.Length: found 9.000000, expected a number from 0 to the number of bits in "
       "'Values'."},
      {written("logical", WrittenBitmap(std::numeric_limits<double>::quiet_NaN(), {1})),
       "Invalid: .Data.Length: found nan, expected a number from 0 to the number of bits in "
       "'Values'."},
      {written("logical", BitmapOf(Column<std::uint8_t>({1}), Scalar(1.0), Char("bits"))),
       "Type error: Value: Expected 'buffer' input type, received 'bits' instead."},
      {written("string", TextData("a", {})),
       "Invalid: .Data.StartOffsets: found no elements, expected one more than there are texts."},
      {written("string", ListData(Column<std::uint8_t>({'a'}), Column<std::int64_t>({0, 1}))),
       "Type error: .Data.StartOffsets: found a 2-by-1 int64 array, expected a uint64 array."},
      {written("datetime", TimestampData(Scalar(1.0), Char("seconds"), Char(""))),
       "Type error: .Data.Values: found a 1-by-1 double array, expected an int64 array."},
      {written("datetime", TimeData(Scalar<std::int64_t>(1), Char(""))),
       "Type error: .Data: found a 1-by-1 struct array, expected the field 'TimeZone' in it."},
      {written("datetime", DateData(Scalar(1.0))),
       "Type error: .Data.Values: found a 1-by-1 double array, expected int32 days or int64 "
       "milliseconds."},
      {written("datetime",
               Struct({{"Values", Scalar<std::int64_t>(1)}, {"DateType", Char("Timestamp")}})),
       "Invalid: .Data.DateType: found 'Timestamp', expected 'Date', or a field 'Units' in the "
       "same struct."},
      {categorical(Strings({u"a"}), Scalar(0.0), Logical({false})),
       "Type error: .Data.Values: found a 1-by-1 double array, expected codes of an integer "
       "class."},
      {categorical(Strings({std::nullopt}), Scalar<std::int8_t>(0), Logical({false})),
       "Invalid: .Data.Categories: found a missing text, expected a text for each category."},
      {categorical(Strings({u"a"}), Scalar<std::int8_t>(0), Logical({false, true})),
       "Invalid: .Data.Ordinal: found 2 elements, expected one."},
      {categorical(Scalar(1.0), Scalar<std::int8_t>(0), Logical({false})),
       "Type error: .Data.Categories: found a 1-by-1 double array, expected text."},
  };
  for (const Refused& row : rows) EXPECT_EQ(refusal(row.value), row.text);
}

TEST(EncodeRefusals, WhatArrowsValidationRefuses) {
  // The wording after the path is Arrow's.
  const struct {
    hxArrayPtr value;
    const char* start;
  } rows[] = {
      {WrittenArray("string", 1, TextData("a", {0, 2})), "Invalid: Value: "},
      {WrittenArray("string", 2, TextData("a", {0, 1, 0})), "Invalid: Value: "},
      {WrittenArray("string", 1, TextData("a", {0, std::numeric_limits<std::uint64_t>::max()})),
       "Invalid: Value: "},
      {WrittenArray("string", 1, TextData("\xFF", {0, 1})), "Invalid: Value: "},
      {WrittenArray("categorical", 1,
                    CategoricalData(Strings({u"a"}), Scalar<std::int8_t>(-1), Logical({false}))),
       "Invalid: Value: "},
      {WrittenArray("categorical", 1,
                    CategoricalData(Strings({u"a"}), Scalar<std::int8_t>(1), Logical({false}))),
       "Invalid: Value: "},
      {WrittenArray("duration", 1, TimeData(Scalar<std::int32_t>(86400), Char("seconds"))),
       "Invalid: Value: "},
      {WrittenArray("duration", 1, TimeData(Scalar<std::int64_t>(1), Char("seconds"))),
       "Invalid: Value: "},
  };
  for (const auto& row : rows) {
    const std::string text = refusal(row.value);
    EXPECT_TRUE(text.starts_with(row.start)) << text;
  }
}

}  // namespace
}  // namespace numera::testing
