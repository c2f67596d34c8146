/// \file
/// Parts that Arrow's validation does not check: texts at null slots, and the offset of an array
/// without elements.

#include <arrow/api.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "numera/core/to_numera.h"
#include "numera/extras/intake/intake.h"
#include "tests/extras/intake/intake_checks.h"
#include "tests/support/arrow_values.h"
#include "tests/support/dictionaries.h"
#include "tests/support/offset_arrays.h"

namespace numera::testing {
namespace {

using ArrayPtr = std::shared_ptr<::arrow::Array>;
using TypePtr = std::shared_ptr<::arrow::DataType>;

/// "a", null, "b", from element `offset` on. The null slot holds one byte that is not UTF-8.
template <class Offset>
ArrayPtr hidden_byte(const TypePtr& type, std::int64_t offset = 0) {
  const auto data =
      ::arrow::ArrayData::Make(type, 3 - offset,
                               {ArrowBuffer({0b101}), ExactBuffer<Offset>({0, 1, 2, 3}),
                                ExactBuffer(BytesOf("a\xFF"
                                                    "b"))});
  data->offset = offset;
  return ::arrow::MakeArray(data);
}

void expect_taken_in(const ArrayPtr& array, const ArrayPtr& expected) {
  ASSERT_TRUE(array->ValidateFull().ok());
  const auto taken = extras::take_in(array);
  ASSERT_TRUE(taken.ok()) << taken.status();
  EXPECT_TRUE(SameArray(*taken->value, *expected));
  EXPECT_EQ(Unfit(*taken->value->data()), "");
  const auto converted = io::arrow::core::to_numera(taken->value);
  EXPECT_TRUE(converted.ok()) << converted.status();
}

TEST(IntakeUnseenParts, TextThatIsNoUtf8AtANullSlotGetsToTheHost) {
  const char* const json = R"(["a", null, "b"])";
  expect_taken_in(hidden_byte<std::int32_t>(::arrow::utf8()), ArrowArray(::arrow::utf8(), json));
  expect_taken_in(hidden_byte<std::int64_t>(::arrow::large_utf8()),
                  ArrowArray(::arrow::large_utf8(), json));
  expect_taken_in(hidden_byte<std::int32_t>(::arrow::utf8(), 1),
                  ArrowArray(::arrow::utf8(), R"([null, "b"])"));
}

TEST(IntakeUnseenParts, TextAtANullSlotStaysWhereItIsUtf8) {
  const auto data = ::arrow::ArrayData::Make(
      ::arrow::utf8(), 2,
      {ArrowBuffer({0b01}), ExactBuffer<std::int32_t>({0, 1, 2}), ExactBuffer(BytesOf("ab"))});
  const auto taken = extras::take_in(::arrow::MakeArray(data));
  ASSERT_TRUE(taken.ok()) << taken.status();
  EXPECT_EQ(taken->value->data()->buffers[1], data->buffers[1]);
  EXPECT_EQ(taken->value->data()->buffers[2], data->buffers[2]);
}

TEST(IntakeUnseenParts, BytesAtANullSlotStay) {
  const ArrayPtr bytes = hidden_byte<std::int32_t>(::arrow::binary());
  const auto taken = extras::take_in(bytes);
  ASSERT_TRUE(taken.ok()) << taken.status();
  EXPECT_EQ(taken->value->data()->buffers[2], bytes->data()->buffers[2]);
}

TEST(IntakeUnseenParts, ListsWithoutElementsMayBeginBeyondTheirValues) {
  const auto values = ArrowArray(::arrow::int8(), "[1, 2]")->data();
  const auto narrow = ::arrow::ArrayData::Make(::arrow::list(::arrow::int8()), 0,
                                               {nullptr, ExactBuffer<std::int32_t>({7})}, {values});
  const auto large =
      ::arrow::ArrayData::Make(::arrow::large_list(::arrow::int8()), 0,
                               {nullptr, ExactBuffer<std::int64_t>({4311744515})}, {values});
  expect_taken_in(::arrow::MakeArray(narrow), ArrowArray(::arrow::list(::arrow::int8()), "[]"));
  expect_taken_in(::arrow::MakeArray(large),
                  ArrowArray(::arrow::large_list(::arrow::int8()), "[]"));
}

TEST(IntakeUnseenParts, KeysThatACastShowsToBeNullAreRefused) {
  const auto keys =
      Dictionary(::arrow::dictionary(::arrow::int8(), ::arrow::int32()), "[0, 1]", "[7, null]");
  const auto map = ::arrow::MapArray::FromArrays(ArrowArray(::arrow::int32(), "[0, 2]"), keys,
                                                 ArrowArray(::arrow::int8(), "[1, 2]"))
                       .ValueOrDie();
  EXPECT_EQ(extras::take_in(ArrayPtr(map), {.cast = true}).status(),
            ::arrow::Status::Invalid("Map: found 1 null keys, expected none."));
}

TEST(IntakeUnseenParts, ViewsWithoutTheirBuffersAreRefused) {
  const auto inline_view = ArrowBuffer(std::vector<std::uint8_t>(16, 0));
  const std::vector<std::vector<std::shared_ptr<::arrow::Buffer>>> rows = {
      {nullptr, nullptr}, {nullptr, inline_view, nullptr}};
  const char* const messages[] = {
      "Array: found no buffer 1, expected one, because arrays of views use it.",
      "Array: found no buffer 2, expected one, because arrays of views use it."};
  for (size_t i = 0; i < rows.size(); ++i) {
    for (const TypePtr& type : {::arrow::utf8_view(), ::arrow::binary_view()}) {
      const auto array = ::arrow::MakeArray(::arrow::ArrayData::Make(type, 1, rows[i]));
      EXPECT_EQ(extras::take_in(array, {.cast = true}).status(),
                ::arrow::Status::Invalid(messages[i]));
    }
  }
}

}  // namespace
}  // namespace numera::testing
