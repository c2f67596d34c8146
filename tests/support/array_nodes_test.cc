#include <arrow/array/util.h>
#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "tests/support/array_nodes.h"
#include "tests/support/arrow_values.h"
#include "tests/support/dictionaries.h"
#include "tests/support/other_device.h"

namespace numera::testing {
namespace {

using ::arrow::ArrayData;
using ::arrow::kUnknownNullCount;

constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();

std::shared_ptr<ArrayData> Int8s(std::int64_t length, std::shared_ptr<::arrow::Buffer> bitmap,
                                 std::int64_t null_count, std::int64_t offset = 0) {
  return ArrayData::Make(::arrow::int8(), length, {std::move(bitmap), nullptr}, null_count, offset);
}

/// A struct of a list and a dictionary array.
std::shared_ptr<ArrayData> Tree() {
  const auto categories = ::arrow::dictionary(::arrow::int8(), ::arrow::utf8());
  const auto lists = ArrowArray(::arrow::list(::arrow::int16()), "[[1, null]]");
  const auto coded = Dictionary(categories, "[0]", R"(["a"])");
  const std::vector<std::string> names = {"l", "d"};
  return ::arrow::StructArray::Make({lists, coded}, names).ValueOrDie()->data();
}

template <class Change>
std::string DifferenceAfter(Change change) {
  const auto tree = Tree();
  const ArrayNodes before(*tree);
  change(*tree);
  return before.difference();
}

TEST(ArrayNodes, AreTheSameWhereNothingChanges) {
  EXPECT_EQ(DifferenceAfter([](ArrayData&) {}), "");
}

TEST(ArrayNodes, NameTheNodeAndWhatChanged) {
  const auto list = [](ArrayData& tree) -> ArrayData& { return *tree.child_data[0]; };
  const auto items = [](ArrayData& tree) -> ArrayData& {
    return *tree.child_data[0]->child_data[0];
  };
  const auto texts = [](ArrayData& tree) -> ArrayData& { return *tree.child_data[1]->dictionary; };
  EXPECT_EQ(DifferenceAfter([](ArrayData& tree) { tree.length = 7; }), "array: length 1 is now 7");
  EXPECT_EQ(DifferenceAfter([&](ArrayData& tree) { list(tree).offset = 1; }),
            "array, child 0: offset 0 is now 1");
  EXPECT_EQ(DifferenceAfter([&](ArrayData& tree) { items(tree).null_count = 2; }),
            "array, child 0, child 0: null count 1 is now 2");
  EXPECT_EQ(DifferenceAfter([&](ArrayData& tree) { items(tree).null_count = kUnknownNullCount; }),
            "array, child 0, child 0: null count 1 is now -1");
  EXPECT_EQ(DifferenceAfter([&](ArrayData& tree) { items(tree).type = ::arrow::uint16(); }),
            "array, child 0, child 0: another type");
  EXPECT_EQ(DifferenceAfter([&](ArrayData& tree) { texts(tree).buffers.pop_back(); }),
            "array, child 1, dictionary: other buffers");
  EXPECT_EQ(DifferenceAfter([&](ArrayData& tree) { list(tree).child_data[0] = nullptr; }),
            "array, child 0: other children");
  EXPECT_EQ(DifferenceAfter([](ArrayData& tree) { tree.child_data[1]->dictionary = nullptr; }),
            "array, child 1: another dictionary");
}

TEST(ArrayNodes, SeeABufferThatIsResized) {
  const auto array = Int8s(1, nullptr, 0);
  auto buffer = ::arrow::AllocateResizableBuffer(64).ValueOrDie();
  auto* const resized = buffer.get();
  array->buffers[1] = std::move(buffer);
  const ArrayNodes before(*array);
  ASSERT_TRUE(resized->Resize(8, /*shrink_to_fit=*/false).ok());
  EXPECT_EQ(before.difference(), "array: buffers of another address or size");
}

TEST(ArrayNodes, NameChunksAndColumns) {
  const auto column = ArrowChunks(::arrow::int8(), {"[1]", "[2]"});
  const auto table =
      ::arrow::Table::Make(::arrow::schema({::arrow::field("c", column->type())}), {column});
  const ArrayNodes of_column(*column);
  const ArrayNodes of_table(*table);
  column->chunk(1)->data()->offset = 3;
  EXPECT_EQ(of_column.difference(), "chunk 1: offset 0 is now 3");
  EXPECT_EQ(of_table.difference(), "column 0, chunk 1: offset 0 is now 3");
}

TEST(ArrayNodes, MayCountTheirNullsButNotWrongly) {
  const auto array = Int8s(8, ArrowBuffer({0x0F}), kUnknownNullCount);
  const ArrayNodes before(*array);
  array->null_count = 4;
  EXPECT_EQ(before.difference(), "");
  array->null_count = 5;
  EXPECT_EQ(before.difference(), "array: null count -1 is now 5");
}

TEST(TrueNullCount, IsThatOfTheBitsAsFarAsTheyGo) {
  struct Case {
    std::shared_ptr<ArrayData> array;
    std::optional<std::int64_t> count;
  };
  const Case cases[] = {
      {Int8s(8, ArrowBuffer({0x0F}), 1), 4},
      {Int8s(3, ArrowBuffer({0x0F}), -1, 3), 2},
      {Int8s(100, ArrowBuffer({0xFE}), -1), 1},
      {Int8s(100, ArrowBuffer({}), -1), 0},
      {Int8s(100, nullptr, -1), 0},
      {Int8s(-1, nullptr, -1), 0},
      {Int8s(-1, ArrowBuffer({0}), -1), std::nullopt},
      {Int8s(1, ArrowBuffer({0}), -1, -1), std::nullopt},
      {Int8s(kMost, ArrowBuffer({0}), -1, 1), std::nullopt},
      {Int8s(1, BufferOfOtherDevice(1), -1), std::nullopt},
      {ArrayData::Make(::arrow::null(), 3, {nullptr}, -1), 3},
      {ArrayData::Make(::arrow::int8(), 3, {}, -1), 0},
      {ArrowArray(::arrow::sparse_union({::arrow::field("a", ::arrow::int8())}), "[[0, null]]")
           ->data(),
       0},
  };
  for (const Case& one : cases) EXPECT_EQ(TrueNullCount(*one.array), one.count);
}

TEST(Uncounted, ForgetsTheCountsOfACopy) {
  const auto tree = Tree();
  const ArrayNodes before(*tree);
  const auto uncounted = Uncounted(*tree);
  EXPECT_EQ(before.difference(), "");
  const ArrayData* const nodes[] = {uncounted.get(), uncounted->child_data[0].get(),
                                    uncounted->child_data[0]->child_data[0].get(),
                                    uncounted->child_data[1].get(),
                                    uncounted->child_data[1]->dictionary.get()};
  for (const ArrayData* node : nodes) EXPECT_EQ(node->null_count.load(), kUnknownNullCount);
  EXPECT_EQ(uncounted->child_data[0]->buffers, tree->child_data[0]->buffers);
}

}  // namespace
}  // namespace numera::testing
