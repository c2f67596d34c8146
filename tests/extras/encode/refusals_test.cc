#include <arrow/api.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "numera/extras/encode/encode.h"
#include "numera/host/memory.h"
#include "tests/support/envelopes.h"

namespace numera::testing {
namespace {

using extras::encode;

hxArrayPtr Written(std::string_view type, double length, hxArrayPtr data,
                   const std::vector<std::uint8_t>& valid = {}) {
  return WrittenEnvelope("array", type, WrittenValidity(length, valid), std::move(data));
}

hxArrayPtr Packed(hxArrayPtr values, hxArrayPtr offsets) {
  return Struct({{"Values", std::move(values)}, {"StartOffsets", std::move(offsets)}});
}

std::string refusal(const hxArray* value) {
  const auto encoded = encode(value);
  return encoded.ok() ? "encoded" : encoded.status().ToString();
}

std::string refusal(const hxArrayPtr& value) { return refusal(value.get()); }

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
      refusal(Written("string", 1, Cell({1, 2}, {Char(u"a"), Char(u"\xDC00")})));
  EXPECT_TRUE(inner.starts_with("Invalid: .Data: found text that is not UTF-16 in element 1 ("))
      << inner;
}

struct Refused {
  hxArrayPtr value;
  const char* text;
};

TEST(EncodeRefusals, EnvelopesThatLackAFieldOrHaveOneOfAWrongClass) {
  const Refused rows[] = {
      {Struct({{"ArrowType", Char("array")}}),
       "Type error: Value: found a 1-by-1 struct array, expected the field 'Type' in it."},
      {Struct({{"ArrowType", Char("array")},
               {"Type", Char("double")},
               {"Valid", Empty()},
               {"Data", Scalar(1.0)}}),
       "Type error: .Valid: found no value, expected one."},
      {Struct({{"ArrowType", Scalar(1.0)}}),
       "Type error: .ArrowType: found a 1-by-1 double array, expected a char array."},
      {Struct({{"ArrowType", Empty()}}), "Type error: .ArrowType: found no value, expected one."},
      {StructArray({0, 1}, {"ArrowType"}, {}), "Invalid: Value: found 0 elements, expected one."},
      {KindEnvelope("Array", "double", Scalar(1.0)),
       "Invalid: .ArrowType: found 'Array', expected 'array', 'list_array', 'struct' or 'map'."},
      {WrittenEnvelope("array", "double", Scalar(1.0), Scalar(1.0)),
       "Type error: .Valid: found a 1-by-1 double array, expected a struct array."},
      {Written("double", 1, WrittenBitmap(1, {1})),
       "Invalid: .Type: found 'double', expected the type name of data that is a struct."},
      {Written("double", 9, Column<double>({1, 2, 3, 4, 5, 6, 7, 8, 9}), {1}),
       "Invalid: .Valid.Values: found 1 bytes, expected bits for 9 elements."},
      {WrittenEnvelope("array", "double",
                       Struct({{"ArrowType", Char("bits")}, {"Values", Column<std::uint8_t>({})}}),
                       Scalar(1.0)),
       "Invalid: .Valid.ArrowType: found 'bits', expected 'buffer'."},
      {WrittenEnvelope("array", "double",
                       Struct({{"ArrowType", Char("buffer")}, {"Values", Column<double>({})}}),
                       Scalar(1.0)),
       "Type error: .Valid.Values: found a 0-by-1 double array, expected a uint8 array."},
      {Struct({{"ArrowType", Char("buffer")}, {"Values", Scalar(1.0)}}),
       "Type error: .Values: found a 1-by-1 double array, expected a uint8 array."},
  };
  for (const Refused& row : rows) EXPECT_EQ(refusal(row.value), row.text);
}

TEST(EncodeRefusals, DataThatDoesNotFitItsType) {
  const auto written = [](std::string_view type, hxArrayPtr data) {
    return Written(type, 1, std::move(data));
  };
  const auto categorical = [&](hxArrayPtr categories, hxArrayPtr codes, hxArrayPtr ordinal) {
    return written("categorical", Struct({{"Categories", std::move(categories)},
                                          {"Values", std::move(codes)},
                                          {"Ordinal", std::move(ordinal)}}));
  };
  const Refused rows[] = {
      {written("null", Scalar(3.0)),
       "Type error: .Data: found a 1-by-1 double array, expected an int64 number of elements."},
      {written("null", Scalar<std::int64_t>(-1)),
       "Invalid: .Data: found -1, expected a number of elements."},
      {written("null", Column<std::int64_t>({1, 2})),
       "Invalid: .Data: found 2 elements, expected one."},
      {written("logical", Struct({{"Values", Column<std::uint8_t>({1})},
                                  {"Length", Scalar(9.0)},
                                  {"ArrowType", Char("buffer")}})),
       "Invalid: .Data.Length: found 9.000000, expected a number of bits that 'Values' has."},
      {written("logical", Struct({{"Values", Column<std::uint8_t>({1})},
                                  {"Length", Scalar(std::numeric_limits<double>::quiet_NaN())},
                                  {"ArrowType", Char("buffer")}})),
       "Invalid: .Data.Length: found nan, expected a number of bits that 'Values' has."},
      {written("logical", Struct({{"Values", Column<std::uint8_t>({1})},
                                  {"Length", Scalar(1.0)},
                                  {"ArrowType", Char("bits")}})),
       "Type error: Value: Expected 'buffer' input type, received 'bits' instead."},
      {written("string", Packed(Column<std::uint8_t>({'a'}), Column<std::uint64_t>({}))),
       "Invalid: .Data.StartOffsets: found no elements, expected one more than there are texts."},
      {written("string", Packed(Column<std::uint8_t>({'a'}), Column<std::int64_t>({0, 1}))),
       "Type error: .Data.StartOffsets: found a 2-by-1 int64 array, expected a uint64 array."},
      {written(
           "datetime",
           Struct({{"Values", Scalar(1.0)}, {"Units", Char("seconds")}, {"TimeZone", Char("")}})),
       "Type error: .Data.Values: found a 1-by-1 double array, expected an int64 array."},
      {written("datetime", Struct({{"Values", Scalar<std::int64_t>(1)}, {"Units", Char("")}})),
       "Type error: .Data: found a 1-by-1 struct array, expected the field 'TimeZone' in it."},
      {written("datetime", Struct({{"Values", Scalar(1.0)}, {"DateType", Char("Date")}})),
       "Type error: .Data.Values: found a 1-by-1 double array, expected int32 days or int64 "
       "milliseconds."},
      {written("datetime",
               Struct({{"Values", Scalar<std::int64_t>(1)}, {"DateType", Char("Timestamp")}})),
       "Invalid: .Data.DateType: found 'Timestamp', expected 'Date', or 'Units' beside it."},
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
      {Written("string", 1, Packed(Column<std::uint8_t>({'a'}), Column<std::uint64_t>({0, 2}))),
       "Invalid: Value: "},
      {Written("string", 2, Packed(Column<std::uint8_t>({'a'}), Column<std::uint64_t>({0, 1, 0}))),
       "Invalid: Value: "},
      {Written("string", 1,
               Packed(Column<std::uint8_t>({'a'}),
                      Column<std::uint64_t>({0, std::numeric_limits<std::uint64_t>::max()}))),
       "Invalid: Value: "},
      {Written("string", 1, Packed(Column<std::uint8_t>({0xFF}), Column<std::uint64_t>({0, 1}))),
       "Invalid: Value: "},
      {Written("categorical", 1,
               Struct({{"Categories", Strings({u"a"})},
                       {"Values", Scalar<std::int8_t>(-1)},
                       {"Ordinal", Logical({false})}})),
       "Invalid: Value: "},
      {Written("categorical", 1,
               Struct({{"Categories", Strings({u"a"})},
                       {"Values", Scalar<std::int8_t>(1)},
                       {"Ordinal", Logical({false})}})),
       "Invalid: Value: "},
      {Written("duration", 1,
               Struct({{"Values", Scalar<std::int32_t>(86400)}, {"Units", Char("seconds")}})),
       "Invalid: Value: "},
      {Written("duration", 1,
               Struct({{"Values", Scalar<std::int64_t>(1)}, {"Units", Char("seconds")}})),
       "Invalid: Value: "},
  };
  for (const auto& row : rows) {
    const std::string text = refusal(row.value);
    EXPECT_TRUE(text.starts_with(row.start)) << text;
  }
}

hxArrayPtr Numbers(double length, const std::vector<std::int8_t>& values) {
  return Written("int8", length, Column<std::int8_t>(values));
}

TEST(EncodeRefusals, NestedValuesThatDoNotFit) {
  const auto lists = [](hxArrayPtr values, hxArrayPtr offsets) {
    return WrittenEnvelope("list_array", "list_array", WrittenValidity(1),
                           Packed(std::move(values), std::move(offsets)));
  };
  const auto structs = [](hxArrayPtr names, hxArrayPtr fields) {
    return WrittenEnvelope(
        "struct", "struct", WrittenValidity(1),
        Struct({{"FieldName", std::move(names)}, {"FieldData", std::move(fields)}}));
  };
  const auto maps = [](hxArrayPtr keys, hxArrayPtr items) {
    return WrittenEnvelope("map", "map", WrittenValidity(1),
                           Struct({{"Keys", std::move(keys)},
                                   {"Values", std::move(items)},
                                   {"StartOffsets", Column<std::int32_t>({0, 1})}}));
  };
  const Refused rows[] = {
      {lists(Numbers(1, {1}), Column<std::int32_t>({0, 2})),
       "Invalid: .Data.StartOffsets: found 2 at 1, expected offsets that never fall, within 1 "
       "values."},
      {lists(Numbers(1, {1}), Column<std::int32_t>({-1, 1})),
       "Invalid: .Data.StartOffsets: found -1 at 0, expected offsets that never fall, within 1 "
       "values."},
      {lists(Numbers(2, {1, 2}), Column<std::int64_t>({0, 2, 1})),
       "Invalid: .Data.StartOffsets: found 1 at 2, expected offsets that never fall, within 2 "
       "values."},
      {lists(Numbers(1, {1}), Column<std::int32_t>({})),
       "Invalid: .Data.StartOffsets: found no elements, expected one more than there are lists."},
      {lists(Numbers(1, {1}), Column<double>({0, 1})),
       "Type error: .Data.StartOffsets: found a 2-by-1 double array, expected an int32, int64 or "
       "uint64 array."},
      {lists(Scalar(1.0), Column<std::int32_t>({0, 1})),
       "Type error: .Data.Values: found a 1-by-1 double array, expected an encoded array."},
      {lists(lists(Numbers(1, {1}), Column<std::int32_t>({0, 5})), Column<std::int32_t>({0, 1})),
       "Invalid: .Data.Values.Data.StartOffsets: found 5 at 1, expected offsets that never fall, "
       "within 1 values."},
      {WrittenEnvelope("list_array", "list_array", WrittenValidity(1), Scalar(1.0)),
       "Type error: .Data: found a 1-by-1 double array, expected a struct array."},
      {structs(Cell({Char("a")}), Cell({})),
       "Invalid: .Data.FieldData: found no fields, expected at least one."},
      {structs(Cell({Char("a")}), Cell({Numbers(1, {1}), Numbers(1, {1})})),
       "Invalid: .Data.FieldName: found 1 names, expected 2, one for each field."},
      {structs(Cell({Char("a"), Char("b")}), Cell({Numbers(1, {1}), Numbers(2, {1, 2})})),
       "Invalid: .Data.FieldData{1}: found 2 elements, expected 1 as in the first field."},
      {structs(Cell({Scalar(1.0)}), Cell({Numbers(1, {1})})),
       "Type error: .Data.FieldName{0}: found a 1-by-1 double array, expected a char array."},
      {structs(Cell({Char("a")}), Cell({Empty()})),
       "Type error: .Data.FieldData{0}: found no value, expected one."},
      {structs(Cell({Char("a")}), Cell({Complex<double>({1, 1}, {{1, 2}})})),
       "Type error: .Data.FieldData{0}: found a complex 1-by-1 double array, expected an encoded "
       "array."},
      {maps(Numbers(1, {1}), Numbers(2, {1, 2})),
       "Invalid: .Data.Values: found 2 elements, expected 1 as there are keys."},
  };
  for (const Refused& row : rows) EXPECT_EQ(refusal(row.value), row.text);
}

TEST(EncodeRefusals, NestedValuesWithoutChunks) {
  for (const char* kind : {"list_array", "struct", "map"}) {
    const hxArrayPtr value =
        WrittenEnvelope(kind, kind, StructArray({0, 1}, {"Values", "Length", "ArrowType"}, {}),
                        StructArray({0, 1}, {"Values", "StartOffsets"}, {}));
    EXPECT_EQ(refusal(value),
              "Invalid: .Data: found no chunk, so that no type is known, expected one.");
  }
}

TEST(EncodeRefusals, AsManyBitmapsAsChunks) {
  const hxArrayPtr value =
      WrittenEnvelope("list_array", "list_array", WrittenValidity(1),
                      StructArray({2, 1}, {"Values", "StartOffsets"},
                                  {{Numbers(1, {1}), Column<std::int32_t>({0, 1})},
                                   {Numbers(1, {1}), Column<std::int32_t>({0, 1})}}));
  EXPECT_EQ(refusal(value), "Invalid: .Valid: found 1 elements, expected 2, one for each chunk.");
}

TEST(EncodeRefusals, ChunksOfDifferentTypes) {
  const auto bits = StructArray(
      {2, 1}, {"Values", "ArrowType"},
      {{Column<std::uint8_t>({}), Char("buffer")}, {Column<std::uint8_t>({}), Char("buffer")}});
  const hxArrayPtr value = WrittenEnvelope(
      "list_array", "list_array", hxSharedCopy(bits.get()),
      StructArray({2, 1}, {"Values", "StartOffsets"},
                  {{Numbers(1, {1}), Column<std::int32_t>({0, 1})},
                   {Written("double", 1, Scalar(1.0)), Column<std::int32_t>({0, 1})}}));
  const std::string text = refusal(value);
  EXPECT_TRUE(text.starts_with("Invalid: .Data: ")) << text;
}

}  // namespace
}  // namespace numera::testing
