#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "tests/extras/encode/refusals.h"
#include "tests/support/envelopes.h"

namespace numera::testing {
namespace {

TEST(EncodeRefusals, NestedValuesThatDoNotFit) {
  const auto lists = [](hxArrayPtr values, hxArrayPtr offsets) {
    return WrittenEnvelope("list_array", "list_array", WrittenValidity(1),
                           ListData(std::move(values), std::move(offsets)));
  };
  const auto structs = [](hxArrayPtr names, hxArrayPtr fields) {
    return WrittenEnvelope("struct", "struct", WrittenValidity(1),
                           StructData(std::move(names), std::move(fields)));
  };
  const auto maps = [](hxArrayPtr keys, hxArrayPtr items) {
    return WrittenEnvelope(
        "map", "map", WrittenValidity(1),
        MapData(std::move(keys), std::move(items), Column<std::int32_t>({0, 1})));
  };
  const Refused rows[] = {
      {lists(WrittenNumbers<std::int8_t>({1}), Column<std::int32_t>({0, 2})),
       "Invalid: .Data.StartOffsets: found offset 2 at index 1, expected offsets from 0 to 1 that "
       "never decrease."},
      {lists(WrittenNumbers<std::int8_t>({1}), Column<std::int32_t>({-1, 1})),
       "Invalid: .Data.StartOffsets: found offset -1 at index 0, expected offsets from 0 to 1 that "
       "never decrease."},
      {lists(WrittenNumbers<std::int8_t>({1, 2}), Column<std::int64_t>({0, 2, 1})),
       "Invalid: .Data.StartOffsets: found offset 1 at index 2, expected offsets from 0 to 2 that "
       "never decrease."},
      {lists(WrittenNumbers<std::int8_t>({1}), Column<std::int32_t>({})),
       "Invalid: .Data.StartOffsets: found no elements, expected one more than there are lists."},
      {lists(WrittenNumbers<std::int8_t>({1}), Column<double>({0, 1})),
       "Type error: .Data.StartOffsets: found a 2-by-1 double array, expected an int32, int64 or "
       "uint64 array."},
      {lists(Scalar(1.0), Column<std::int32_t>({0, 1})),
       "Type error: .Data.Values: found a 1-by-1 double array, expected an encoded array."},
      {lists(lists(WrittenNumbers<std::int8_t>({1}), Column<std::int32_t>({0, 5})),
             Column<std::int32_t>({0, 1})),
       "Invalid: .Data.Values.Data.StartOffsets: found offset 5 at index 1, expected offsets from "
       "0 to 1 that never decrease."},
      {WrittenEnvelope("list_array", "list_array", WrittenValidity(1), Scalar(1.0)),
       "Type error: .Data: found a 1-by-1 double array, expected a struct array."},
      {structs(Cell({Char("a")}), Cell({})),
       "Invalid: .Data.FieldData: found no fields, expected at least one."},
      {structs(Cell({Char("a")}),
               Cell({WrittenNumbers<std::int8_t>({1}), WrittenNumbers<std::int8_t>({1})})),
       "Invalid: .Data.FieldName: found 1 names, expected 2, one for each field."},
      {structs(Cell({Char("a"), Char("b")}),
               Cell({WrittenNumbers<std::int8_t>({1}), WrittenNumbers<std::int8_t>({1, 2})})),
       "Invalid: .Data.FieldData{1}: found 2 elements, expected 1, as in the first field."},
      {structs(Cell({Scalar(1.0)}), Cell({WrittenNumbers<std::int8_t>({1})})),
       "Type error: .Data.FieldName{0}: found a 1-by-1 double array, expected a char array."},
      {structs(Cell({Char("a")}), Cell({Empty()})),
       "Type error: .Data.FieldData{0}: found no value, expected one."},
      {structs(Cell({Char("a")}), Cell({Complex<double>({1, 1}, {{1, 2}})})),
       "Type error: .Data.FieldData{0}: found a complex 1-by-1 double array, expected an encoded "
       "array."},
      {maps(WrittenNumbers<std::int8_t>({1}), WrittenNumbers<std::int8_t>({1, 2})),
       "Invalid: .Data.Values: found 2 elements, expected 1, one for each key."},
  };
  for (const Refused& row : rows) EXPECT_EQ(refusal(row.value), row.text);
}

TEST(EncodeRefusals, NestedValuesWithoutChunks) {
  for (const char* kind : {"list_array", "struct", "map"}) {
    const hxArrayPtr value = WrittenEnvelope(kind, kind, StructArray({0, 1}, kBitmapFields, {}),
                                             StructArray({0, 1}, kListFields, {}));
    EXPECT_EQ(
        refusal(value),
        "Invalid: .Data: found no chunks, expected at least one: without a chunk the type is not "
        "known.");
  }
}

TEST(EncodeRefusals, AsManyBitmapsAsChunks) {
  const hxArrayPtr value = WrittenEnvelope(
      "list_array", "list_array", WrittenValidity(1),
      StructColumn(kListFields,
                   {ListData(WrittenNumbers<std::int8_t>({1}), Column<std::int32_t>({0, 1})),
                    ListData(WrittenNumbers<std::int8_t>({1}), Column<std::int32_t>({0, 1}))}));
  EXPECT_EQ(refusal(value), "Invalid: .Valid: found 1 elements, expected 2, one for each chunk.");
}

TEST(EncodeRefusals, ChunksOfDifferentTypes) {
  const hxArrayPtr value = WrittenEnvelope(
      "list_array", "list_array",
      StructColumn({"Values", "ArrowType"}, {BufferEnvelope({}), BufferEnvelope({})}),
      StructColumn(kListFields,
                   {ListData(WrittenNumbers<std::int8_t>({1}), Column<std::int32_t>({0, 1})),
                    ListData(WrittenNumbers<double>({1}), Column<std::int32_t>({0, 1}))}));
  const std::string text = refusal(value);
  EXPECT_TRUE(text.starts_with("Invalid: .Data: ")) << text;
}

}  // namespace
}  // namespace numera::testing
