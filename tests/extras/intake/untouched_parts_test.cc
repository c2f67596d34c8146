// Columns with values that no slot shows, and with parts that must not be followed to them.

#include <arrow/api.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "numera/extras/intake/intake.h"
#include "tests/extras/intake/hidden_parts.h"
#include "tests/support/arrow_values.h"
#include "tests/support/offset_arrays.h"

namespace numera::testing {
namespace {

using ::arrow::ArrayData;
using ::arrow::field;
using extras::take_in;
using DataPtr = std::shared_ptr<ArrayData>;
using TypePtr = std::shared_ptr<::arrow::DataType>;

/// Four days. Only the second is none.
DataPtr days() {
  return ArrayData::Make(
      ::arrow::date64(), 4,
      {nullptr, ExactBuffer<std::int64_t>({86'400'000, 129'600'000, -86'400'000, 86'400'000})}, 0);
}

TEST(IntakeBehindNulls, RefusesMoreListsThanThereAreOffsets) {
  const auto lists = lists_of(days(), {0, 1, 2, 4}, 0b101)->Copy();
  lists->buffers[0] = nullptr;
  lists->length = std::int64_t{1} << 59;
  EXPECT_EQ(take_in(::arrow::MakeArray(lists)).status().code(), ::arrow::StatusCode::Invalid);
}

/// Arrays of a few bytes can declare 2^61 elements. The intake must not visit each of them.
TEST(IntakeBehindNulls, CountsNoElementsThatHoldNoBytes) {
  constexpr std::int64_t kMany = std::int64_t{1} << 61;
  const auto day = days()->Slice(1, 1);
  const auto ends =
      ArrayData::Make(::arrow::int64(), 1, {nullptr, ExactBuffer<std::int64_t>({kMany})}, 0);
  const TypePtr pairs = ::arrow::struct_({field("d", ::arrow::date64())});
  const DataPtr many[] = {
      ArrayData::Make(::arrow::null(), kMany, {nullptr}, kMany),
      ArrayData::Make(::arrow::run_end_encoded(::arrow::int64(), ::arrow::date64()), kMany,
                      {nullptr}, {ends, day->Slice(0, 1)}, 0),
      ArrayData::Make(::arrow::run_end_encoded(::arrow::int64(), pairs), kMany, {nullptr},
                      {ends, struct_of(day, {0})}, 0),
      ArrayData::Make(::arrow::fixed_size_list(::arrow::date64(), 0), kMany, {nullptr}, {day}, 0),
  };
  for (const DataPtr& child : many) {
    SCOPED_TRACE(child->type->ToString());
    const auto rows =
        ArrayData::Make(::arrow::struct_({field("m", child->type), field("d", ::arrow::date64())}),
                        1, {ArrowBuffer({1})}, {child, day});
    EXPECT_EQ(take_in(::arrow::MakeArray(rows), {.cast = true}).status().code(),
              ::arrow::StatusCode::Invalid);
    const auto lists = ArrayData::Make(::arrow::list(child->type), 1,
                                       {nullptr, ExactBuffer<std::int32_t>({0, 1})}, {child}, 0);
    const auto listed =
        ArrayData::Make(::arrow::struct_({field("m", lists->type), field("d", ::arrow::date64())}),
                        1, {ArrowBuffer({1})}, {lists, day});
    EXPECT_EQ(take_in(::arrow::MakeArray(listed), {.cast = true}).status().code(),
              ::arrow::StatusCode::Invalid);
  }
}

/// While the intake looks for nulls, it must not read data that is invalid itself.
TEST(IntakeBehindNulls, RefusesListsThatAreWrongBesideThem) {
  const DataPtr bad = days();
  const std::vector<std::int32_t> wrong[] = {
      {0, 100, 2, 4}, {0, -1, 2, 4}, {4, 3, 2, 1}, {-2147483647, 1, 2, 4}, {0, 1, 2147483647, 4}};
  for (const auto& offsets : wrong) {
    for (const std::uint8_t bitmap : std::vector<std::uint8_t>{0b000, 0b101, 0b111}) {
      const auto lists = lists_of(bad, offsets, bitmap);
      EXPECT_FALSE(take_in(::arrow::MakeArray(lists)).ok());
      EXPECT_FALSE(take_in(::arrow::MakeArray(struct_of(lists, {0b101}))).ok());
    }
  }
}

}  // namespace
}  // namespace numera::testing
