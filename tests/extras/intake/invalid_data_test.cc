#include <arrow/array.h>
#include <arrow/type.h>
#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "numera/extras/intake/intake.h"
#include "tests/support/arrow_values.h"
#include "tests/support/offset_arrays.h"

namespace numera::testing {
namespace {

using ::arrow::Array;
using ::arrow::ArrayData;
using ::arrow::field;
using ::arrow::int32;
using ::arrow::int8;
using ::arrow::list;
using ::arrow::Status;
using ::arrow::utf8;
using extras::take_in;
using TypePtr = std::shared_ptr<::arrow::DataType>;

struct Bad {
  const char* what;
  std::shared_ptr<ArrayData> data;
  /// Arrow makes no array of it, but accepts it as a child.
  bool is_no_array = false;
};

std::vector<Bad> bad_arrays() {
  const auto with = [](const TypePtr& type, const char* json, auto change) {
    auto data = ArrowArray(type, json)->data()->Copy();
    change(*data);
    return data;
  };
  const auto buffer = [](std::vector<std::uint8_t> bytes) { return ArrowBuffer(bytes); };
  return {
      {"bad UTF-8",
       with(utf8(), R"(["ab"])", [&](auto& a) { a.buffers[2] = buffer({0xC3, 0x28}); })},
      {"short values", with(int32(), "[1, 2]", [&](auto& a) { a.buffers[1] = buffer({1, 0}); })},
      {"short bitmap", with(int8(), "[1, 2, 3, 4, 5, 6, 7, 8, null]",
                            [&](auto& a) { a.buffers[0] = buffer({1}); })},
      {"length past the end", with(int32(), "[1, 2]", [](auto& a) { a.length = 100; })},
      {"offset past the end", with(int32(), "[1, 2]", [](auto& a) { a.offset = 100; })},
      {"negative offset", with(int32(), "[1, 2]", [](auto& a) { a.offset = -1; })},
      {"extent beyond 64 bits",
       with(int32(), "[1, 2]",
            [](auto& a) { a.offset = std::numeric_limits<std::int64_t>::max(); })},
      {"wrong null count", with(int8(), "[1, null]", [](auto& a) { a.null_count = 2; })},
      {"too few buffers", with(int8(), "[1]", [](auto& a) { a.buffers.resize(1); }), true},
      {"falling offsets",
       with(utf8(), R"(["a", "b"])",
            [&](auto& a) { a.buffers[1] = buffer({0, 0, 0, 0, 9, 0, 0, 0, 2, 0, 0, 0}); })},
      {"list past its elements",
       with(list(int8()), "[[1]]",
            [&](auto& a) { a.buffers[1] = buffer({0, 0, 0, 0, 7, 0, 0, 0}); })},
      {"code outside the dictionary", with(::arrow::dictionary(int8(), utf8()), R"(["a"])",
                                           [&](auto& a) { a.buffers[1] = buffer({3}); })},
      {"no dictionary",
       with(::arrow::dictionary(int8(), utf8()), R"(["a"])",
            [](auto& a) { a.dictionary = nullptr; }),
       true},
      {"short field", with(::arrow::struct_({field("a", int8())}), R"([{"a": 1}])",
                           [](auto& a) { a.length = 3; })},
      {"too few children", with(::arrow::struct_({field("a", int8())}), R"([{"a": 1}])",
                                [](auto& a) { a.child_data.clear(); })},
      {"view past its buffer", with(::arrow::utf8_view(), R"(["longer than twelve bytes"])",
                                    [&](auto& a) { a.buffers[2] = buffer({1, 2}); })},
      {"view without buffer", with(::arrow::utf8_view(), R"(["longer than twelve bytes"])",
                                   [](auto& a) { a.buffers.resize(2); })},
      {"null buffer of views", with(::arrow::utf8_view(), R"(["longer than twelve bytes"])",
                                    [](auto& a) { a.buffers[2] = nullptr; })},
      {"list view past its elements", with(::arrow::list_view(int8()), "[[1]]",
                                           [&](auto& a) { a.buffers[2] = buffer({9, 0, 0, 0}); })},
      {"bytes without address",
       with(int8(), "[1]",
            [](auto& a) { a.buffers[1] = std::make_shared<::arrow::Buffer>(nullptr, 8); })},
  };
}

TEST(IntakeRefusals, MeetInvalidDataAtTheTop) {
  for (const Bad& bad : bad_arrays()) {
    SCOPED_TRACE(bad.what);
    if (bad.is_no_array) continue;
    EXPECT_FALSE(take_in(::arrow::MakeArray(bad.data), {.cast = true}).ok());
  }
}

TEST(IntakeRefusals, MeetInvalidDataBelow) {
  for (const Bad& bad : bad_arrays()) {
    SCOPED_TRACE(bad.what);
    const auto around = ArrayData::Make(::arrow::struct_({field("inner", bad.data->type)}),
                                        bad.data->length, {nullptr}, {bad.data}, 0);
    EXPECT_FALSE(take_in(::arrow::MakeArray(around), {.cast = true}).ok());
  }
}

TEST(IntakeRefusals, MeetListsOfFixedSizeThatLieBehindTheirElements) {
  const auto lists = ArrowArray(::arrow::fixed_size_list(int32(), 2), "[[1, 2]]")->data()->Copy();
  lists->offset = 5;
  const Status expected =
      Status::Invalid("Array: found 2 elements for 6 lists, expected 2 elements for each list.");
  EXPECT_EQ(take_in(::arrow::MakeArray(lists), {.cast = true}).status(), expected);

  const auto fields = ArrayData::Make(::arrow::struct_({field("a", lists->type)}), 1, {nullptr});
  fields->child_data = {lists};
  EXPECT_EQ(take_in(::arrow::MakeArray(fields), {.cast = true}).status(), expected);
}

TEST(IntakeRefusals, MeetMoreElementsThanMemoryCanHold) {
  const auto type = ::arrow::run_end_encoded(::arrow::int64(), int8());
  const auto data = ArrayData::Make(type, std::int64_t{1} << 61, {nullptr}, 0);
  data->child_data = {ArrowArray(::arrow::int64(), "[2305843009213693952]")->data(),
                      ArrowArray(int8(), "[7]")->data()};
  EXPECT_EQ(take_in(::arrow::MakeArray(data), {.cast = true}).status(),
            Status::CapacityError("Array: found more elements than memory can hold."));
}

TEST(IntakeRefusals, MeetMoreElementsOfListViewsThanCanBeCounted) {
  constexpr std::int64_t kMany = std::int64_t{1} << 62;
  const auto type = ::arrow::large_list_view(::arrow::struct_({}));
  const auto data = ArrayData::Make(type, 2, {nullptr}, 0);
  data->buffers.push_back(ExactBuffer(std::vector<std::int64_t>{0, 0}));
  data->buffers.push_back(ExactBuffer(std::vector<std::int64_t>{kMany, kMany}));
  data->child_data = {ArrayData::Make(::arrow::struct_({}), kMany, {nullptr}, 0)};
  EXPECT_EQ(
      take_in(::arrow::MakeArray(data), {.cast = true}).status(),
      Status::CapacityError("List views: found more elements in total than 64 bits can count."));
}

TEST(IntakeRefusals, MeetArraysNestedDeeperThanTheirTypes) {
  auto data = ArrowArray(int8(), "[1]")->data();
  const auto type = ::arrow::struct_({field("a", int8())});
  for (int i = 0; i < 5'000; ++i) data = ArrayData::Make(type, 1, {nullptr}, {data}, 0);
  EXPECT_EQ(
      take_in(::arrow::MakeArray(data)).status(),
      Status::Invalid("Arrays: found more than 4096 levels of nesting, expected at most 4096."));
}

}  // namespace
}  // namespace numera::testing
