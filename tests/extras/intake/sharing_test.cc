#include <arrow/array.h>
#include <arrow/buffer.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "numera/core/to_numera.h"
#include "numera/extras/intake/intake.h"
#include "tests/extras/intake/intake_checks.h"
#include "tests/support/arrow_values.h"
#include "tests/support/host_matchers.h"

namespace numera::testing {
namespace {

using ::arrow::Array;
using ::arrow::ArrayData;
using ::arrow::utf8;

std::shared_ptr<ArrayData> taken(const std::shared_ptr<Array>& array) {
  return extras::take_in(array).ValueOrDie().value->data();
}

void expect_same_buffers(const ArrayData& actual, const ArrayData& expected) {
  EXPECT_EQ(actual.buffers, expected.buffers) << expected.type->ToString();
  ASSERT_EQ(actual.child_data.size(), expected.child_data.size());
  for (size_t i = 0; i < actual.child_data.size(); ++i) {
    expect_same_buffers(*actual.child_data[i], *expected.child_data[i]);
  }
  if (expected.dictionary) expect_same_buffers(*actual.dictionary, *expected.dictionary);
}

TEST(IntakeSharing, KeepsAllBuffersOfAnArrayThatIsFit) {
  const std::shared_ptr<Array> arrays[] = {
      ArrowArray(::arrow::int32(), "[1, null, 3]"),
      ArrowArray(::arrow::boolean(), "[true, null]"),
      ArrowArray(utf8(), R"(["a", null, "bc"])"),
      ArrowArray(::arrow::list(::arrow::boolean()), "[[true], null, [false, null]]"),
      ArrowArray(::arrow::struct_({::arrow::field("a", utf8())}), R"([{"a": "x"}, null])"),
      ArrowArray(::arrow::map(utf8(), ::arrow::int8()), R"([[["a", 1]], null])"),
      ArrowArray(::arrow::dictionary(::arrow::int8(), utf8()), R"(["a", null, "b", "a"])"),
  };
  for (const auto& array : arrays) expect_same_buffers(*taken(array), *array->data());
}

TEST(IntakeSharing, ReadsTheValuesOfASliceWhereTheyAre) {
  const auto whole = ArrowArray(::arrow::int32(), "[1, 2, null, 4, 5]");
  const auto data = taken(whole->Slice(1, 3));
  EXPECT_EQ(data->buffers[1]->data(), whole->data()->buffers[1]->data() + 4);
  EXPECT_EQ(data->buffers[1]->size(), 12);
  EXPECT_NE(data->buffers[0]->data(), whole->data()->buffers[0]->data());
}

TEST(IntakeSharing, ReadsABitmapFromAWholeByteOnWhereItIs) {
  const auto whole = ArrowArray(::arrow::boolean(),
                                "[true, true, true, true, true, true, true, true, null, false]");
  const auto data = taken(whole->Slice(8));
  EXPECT_EQ(data->buffers[0]->data(), whole->data()->buffers[0]->data() + 1);
  EXPECT_EQ(data->buffers[1]->data(), whole->data()->buffers[1]->data() + 1);
}

TEST(IntakeSharing, DropsABitmapOfNoNullsRatherThanShiftIt) {
  auto whole = ArrowArray(::arrow::int32(), "[1, 2, null]");
  EXPECT_EQ(taken(whole->Slice(1, 1))->buffers[0]->size(), 1);
  const auto part = whole->Slice(1, 1);
  ASSERT_EQ(part->null_count(), 0);
  EXPECT_EQ(taken(part)->buffers[0], nullptr);
}

TEST(IntakeSharing, ReadsTheTextOfASliceWhereItIs) {
  const auto whole = ArrowArray(utf8(), R"(["a", "bc", "def"])");
  const auto data = taken(whole->Slice(1));
  EXPECT_EQ(data->buffers[1]->data(), whole->data()->buffers[1]->data() + 4);
  EXPECT_EQ(data->buffers[2], whole->data()->buffers[2]);
}

TEST(IntakeSharing, CutsTheElementsOfASlicedListAndCopiesItsOffsetsAlone) {
  const auto whole = ArrowArray(::arrow::list(::arrow::int32()), "[[1, 2], [3], [4, 5]]");
  const auto data = taken(whole->Slice(1, 1));
  EXPECT_EQ(data->child_data[0]->length, 1);
  EXPECT_EQ(data->child_data[0]->buffers[1]->data(),
            whole->data()->child_data[0]->buffers[1]->data() + 8);
}

TEST(IntakeSharing, CutsBitmapsThatAreLongerThanTheirElements) {
  std::vector<std::uint8_t> padded(64, 0);
  padded[0] = 0b101;
  const auto array = ::arrow::MakeArray(
      ArrayData::Make(::arrow::boolean(), 3, {ArrowBuffer(padded), ArrowBuffer(padded)}));
  const auto data = taken(array);
  EXPECT_EQ(data->buffers[0]->size(), 1);
  EXPECT_EQ(data->buffers[1]->size(), 1);
  EXPECT_EQ(data->buffers[0]->data(), array->data()->buffers[0]->data());
  const auto fit = ArrowArray(::arrow::boolean(), "[true, null, true]");
  EXPECT_TRUE(SameHostValue(io::arrow::core::to_numera(::arrow::MakeArray(data))->get(),
                            io::arrow::core::to_numera(fit)->get()));
}

TEST(IntakeSharing, LeavesOneDictionaryToTheChunksThatShareIt) {
  const auto whole = ArrowArray(::arrow::dictionary(::arrow::int8(), utf8()), R"(["a", "b"])");
  const auto column = std::make_shared<::arrow::ChunkedArray>(
      ::arrow::ArrayVector{whole->Slice(0, 1), whole->Slice(1, 1)});
  const auto fit = extras::take_in(column).ValueOrDie().value;
  EXPECT_EQ(fit->chunk(0)->data()->dictionary, fit->chunk(1)->data()->dictionary);
}

TEST(IntakeSharing, LeavesTheInputAsItIs) {
  const auto whole = ArrowArray(::arrow::list(utf8()), R"([["a"], null, ["b", "c"]])");
  const auto slice = whole->Slice(1);
  const auto before = slice->data()->buffers;
  ASSERT_TRUE(extras::take_in(slice).ok());
  EXPECT_EQ(slice->offset(), 1);
  EXPECT_EQ(slice->data()->buffers, before);
  EXPECT_EQ(slice->data()->child_data[0]->length, 3);
}

}  // namespace
}  // namespace numera::testing
