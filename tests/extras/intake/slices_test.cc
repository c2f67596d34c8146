#include <arrow/array.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "numera/core/to_numera.h"
#include "numera/extras/intake/intake.h"
#include "tests/extras/intake/intake_checks.h"
#include "tests/support/arrow_values.h"
#include "tests/support/host_matchers.h"

namespace numera::testing {
namespace {

using ::arrow::Array;
using ::arrow::field;
using ::arrow::int32;
using ::arrow::int8;
using ::arrow::utf8;
using ArrayPtr = std::shared_ptr<Array>;
using TypePtr = std::shared_ptr<::arrow::DataType>;

constexpr int kLength = 33;

std::string unless_null(int i, std::string json) { return i % 5 == 3 ? "null" : json; }
std::string number(int i) { return unless_null(i, std::to_string(i)); }
std::string whole_days(int i) { return unless_null(i, std::to_string(i * 86400000LL)); }
std::string truth(int i) { return unless_null(i, i % 3 == 0 ? "true" : "false"); }
std::string letters(int i, int count) {
  return '"' + std::string(static_cast<size_t>(count), static_cast<char>('a' + i % 7)) + '"';
}
std::string text(int i) { return unless_null(i, letters(i, i % 4)); }
std::string two_bytes(int i) { return unless_null(i, letters(i, 2)); }
std::string nothing(int) { return "null"; }
/// Only one category, so that all slices have the same dictionary.
std::string category(int i) { return i % 4 == 1 ? "null" : "\"c\""; }

template <Element element>
std::string list_json(int i) {
  if (i % 6 == 4) return "null";
  std::string json = "[";
  for (int k = 0; k < i % 4; ++k) json += (k == 0 ? "" : ", ") + element(i + k);
  return json + "]";
}

template <Element first, Element second>
std::string struct_json(int i) {
  return i % 7 == 5 ? "null" : "{\"x\": " + first(i) + ", \"y\": " + second(i + 1) + "}";
}

template <Element item>
std::string map_json(int i) {
  if (i % 6 == 2) return "null";
  std::string json = "[";
  for (int k = 0; k < i % 3; ++k) {
    json += (k == 0 ? "[\"k" : ", [\"k") + std::to_string(k) + "\", " + item(i + k) + "]";
  }
  return json + "]";
}

TypePtr pair_of(TypePtr x, TypePtr y) {
  return ::arrow::struct_({field("x", std::move(x)), field("y", std::move(y))});
}

struct SlicedType {
  TypePtr type;
  Element element;
};

std::vector<SlicedType> sliced_types() {
  const TypePtr categories = ::arrow::dictionary(int8(), utf8());
  return {
      {::arrow::null(), nothing},
      {::arrow::boolean(), truth},
      {::arrow::uint8(), number},
      {int8(), number},
      {::arrow::uint16(), number},
      {::arrow::int16(), number},
      {::arrow::uint32(), number},
      {int32(), number},
      {::arrow::uint64(), number},
      {::arrow::int64(), number},
      {::arrow::float32(), number},
      {::arrow::float64(), number},
      {utf8(), text},
      {::arrow::large_utf8(), text},
      {::arrow::binary(), text},
      {::arrow::large_binary(), text},
      {::arrow::fixed_size_binary(2), two_bytes},
      {::arrow::date32(), number},
      {::arrow::date64(), whole_days},
      {::arrow::timestamp(::arrow::TimeUnit::NANO, "Europe/Paris"), number},
      {::arrow::time32(::arrow::TimeUnit::SECOND), number},
      {::arrow::time64(::arrow::TimeUnit::MICRO), number},
      {::arrow::duration(::arrow::TimeUnit::MILLI), number},
      {categories, category},
      {::arrow::list(int32()), list_json<number>},
      {::arrow::list(::arrow::boolean()), list_json<truth>},
      {::arrow::large_list(utf8()), list_json<text>},
      {::arrow::list(categories), list_json<category>},
      {::arrow::list(::arrow::large_list(::arrow::boolean())), list_json<list_json<truth>>},
      {pair_of(::arrow::boolean(), utf8()), struct_json<truth, text>},
      {pair_of(categories, ::arrow::null()), struct_json<category, nothing>},
      {pair_of(::arrow::list(::arrow::int16()), pair_of(int8(), ::arrow::boolean())),
       struct_json<list_json<number>, struct_json<number, truth>>},
      {::arrow::list(pair_of(::arrow::list(::arrow::boolean()), ::arrow::float64())),
       list_json<struct_json<list_json<truth>, number>>},
      {::arrow::map(utf8(), int32()), map_json<number>},
      {::arrow::map(utf8(), ::arrow::list(::arrow::boolean())), map_json<list_json<truth>>},
      {::arrow::map(utf8(), categories), map_json<category>},
      {::arrow::list(::arrow::map(utf8(), pair_of(utf8(), ::arrow::boolean()))),
       list_json<map_json<struct_json<text, truth>>>},
  };
}

struct Cut {
  int begin;
  int end;
};

constexpr Cut kCuts[] = {{0, kLength}, {0, 0},  {1, kLength}, {7, kLength}, {8, kLength},
                         {9, kLength}, {1, 9},  {7, 15},      {8, 16},      {9, 10},
                         {8, 11},      {0, 13}, {16, 16},     {32, kLength}};

/// Takes in `array`. Expects a fit result that equals `expected`, in Arrow and in the host.
void expect_slice_taken(const ArrayPtr& array, const ArrayPtr& expected) {
  const auto result = extras::take_in(array);
  ASSERT_TRUE(result.ok()) << result.status();
  const ArrayPtr taken = result->value;
  EXPECT_TRUE(result->casts.empty());
  ASSERT_TRUE(taken->ValidateFull().ok()) << taken->ValidateFull();
  EXPECT_EQ(Unfit(*taken->data()), "");
  EXPECT_TRUE(SameArray(*taken, *array));
  EXPECT_TRUE(SameArray(*taken, *expected));
  const hxArrayPtr actual_host = io::arrow::core::to_numera(taken).ValueOrDie();
  const hxArrayPtr expected_host = io::arrow::core::to_numera(expected).ValueOrDie();
  EXPECT_TRUE(SameHostValue(actual_host.get(), expected_host.get()));
}

using Wrap = ArrayPtr (*)(const ArrayPtr&);

ArrayPtr plain(const ArrayPtr& array) { return array; }

ArrayPtr in_struct(const ArrayPtr& array) {
  return ::arrow::StructArray::Make({array, array}, std::vector<std::string>{"a", "b"})
      .ValueOrDie();
}

/// Two lists that together hold all elements.
template <class List, class Offsets>
ArrayPtr in_list(const ArrayPtr& array) {
  const std::string length = std::to_string(array->length());
  const auto offsets =
      ArrowArray(std::make_shared<Offsets>(),
                 "[0, " + std::to_string(array->length() / 2) + ", " + length + "]");
  return List::FromArrays(*offsets, *array).ValueOrDie();
}

/// One map that holds all elements as items. All keys are equal.
ArrayPtr in_map(const ArrayPtr& array) {
  std::string keys = "[";
  for (std::int64_t i = 0; i < array->length(); ++i) keys += i == 0 ? "1" : ", 1";
  const auto offsets = ArrowArray(int32(), "[0, " + std::to_string(array->length()) + "]");
  return ::arrow::MapArray::FromArrays(offsets, ArrowArray(int8(), keys + "]"), array).ValueOrDie();
}

void expect_all_cuts_taken(Wrap wrap) {
  for (const SlicedType& one : sliced_types()) {
    SCOPED_TRACE(one.type->ToString());
    const ArrayPtr whole = Elements(one.type, one.element, 0, kLength);
    for (const Cut& cut : kCuts) {
      SCOPED_TRACE(std::to_string(cut.begin) + " to " + std::to_string(cut.end));
      const bool has_category =
          cut.end - cut.begin > 8 || one.type->ToString().find("dict") == std::string::npos;
      if (!has_category) continue;
      expect_slice_taken(wrap(whole->Slice(cut.begin, cut.end - cut.begin)),
                         wrap(Elements(one.type, one.element, cut.begin, cut.end)));
    }
  }
}

TEST(IntakeSlices, MeanTheSameWithoutTheirOffset) { expect_all_cuts_taken(plain); }

TEST(IntakeSlices, LoseTheirOffsetInAStruct) { expect_all_cuts_taken(in_struct); }

TEST(IntakeSlices, LoseTheirOffsetInAList) {
  expect_all_cuts_taken(in_list<::arrow::ListArray, ::arrow::Int32Type>);
}

TEST(IntakeSlices, LoseTheirOffsetInALargeList) {
  expect_all_cuts_taken(in_list<::arrow::LargeListArray, ::arrow::Int64Type>);
}

TEST(IntakeSlices, LoseTheirOffsetInAMap) { expect_all_cuts_taken(in_map); }

TEST(IntakeSlices, OfSlicesLoseTheSumOfTheirOffsets) {
  for (const SlicedType& one : sliced_types()) {
    SCOPED_TRACE(one.type->ToString());
    const ArrayPtr whole = Elements(one.type, one.element, 0, kLength);
    expect_slice_taken(whole->Slice(3)->Slice(4)->Slice(2, 20),
                       Elements(one.type, one.element, 9, 29));
    expect_slice_taken(in_struct(in_struct(whole->Slice(1))->Slice(3, 27))->Slice(4, 20),
                       in_struct(in_struct(Elements(one.type, one.element, 8, 28))));
  }
}

TEST(IntakeSlices, OfDictionariesKeepEveryCategory) {
  const auto whole = ::arrow::DictionaryArray::FromArrays(
                         ArrowArray(int8(), "[0, 1, null, 3, 2, 1, 0, 2, 3]"),
                         ArrowArray(utf8(), R"(["x", "a", "bb", "", "ccc"])")->Slice(1))
                         .ValueOrDie();
  const auto expected =
      ::arrow::DictionaryArray::FromArrays(ArrowArray(int8(), "[null, 3, 2, 1, 0]"),
                                           ArrowArray(utf8(), R"(["a", "bb", "", "ccc"])"))
          .ValueOrDie();
  expect_slice_taken(whole->Slice(2, 5), expected);
}

TEST(IntakeSlices, OfAnArrayOfNothingAreTaken) {
  for (const SlicedType& one : sliced_types()) {
    SCOPED_TRACE(one.type->ToString());
    const ArrayPtr empty = Elements(one.type, one.element, 0, 0);
    expect_slice_taken(empty, empty);
    expect_slice_taken(empty->Slice(0, 0), empty);
  }
}

TEST(IntakeSlices, GetTheOffsetThatAnArrayOfNothingMayLack) {
  const auto bare = ::arrow::MakeArray(::arrow::ArrayData::Make(
      utf8(), 0, {nullptr, std::make_shared<::arrow::Buffer>(""), ArrowBuffer({})}));
  expect_slice_taken(bare, Elements(utf8(), text, 0, 0));
  const auto bare_list = ::arrow::MakeArray(
      ::arrow::ArrayData::Make(::arrow::large_list(utf8()), 0,
                               {nullptr, std::make_shared<::arrow::Buffer>("")}, {bare->data()}));
  expect_slice_taken(bare_list, Elements(::arrow::large_list(utf8()), text, 0, 0));
}

}  // namespace
}  // namespace numera::testing
