/// \file
/// Values that no slot shows, because a null struct, list or map surrounds them. If such a value is
/// invalid for its type, it becomes 0 and the column is still accepted.

#include <arrow/api.h>
#include <arrow/util/decimal.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "numera/core/to_numera.h"
#include "numera/extras/intake/intake.h"
#include "tests/extras/intake/hidden_parts.h"
#include "tests/extras/intake/intake_checks.h"
#include "tests/support/arrow_values.h"
#include "tests/support/host_matchers.h"
#include "tests/support/offset_arrays.h"

namespace numera::testing {
namespace {

using ::arrow::ArrayData;
using ::arrow::field;
using ::arrow::TimeUnit;
using extras::take_in;
using ArrayPtr = std::shared_ptr<::arrow::Array>;
using DataPtr = std::shared_ptr<ArrayData>;
using TypePtr = std::shared_ptr<::arrow::DataType>;

/// Four elements. Only the second may be invalid for its type.
struct Leaf {
  DataPtr bad;
  DataPtr mended;  ///< the same with 0 as the second element
};

template <class T>
Leaf leaf(const TypePtr& type, T first, T bad, T third) {
  const auto make = [&](T second) {
    return ArrayData::Make(type, 4, {nullptr, ExactBuffer<T>({first, second, third, first})}, 0);
  };
  return {make(bad), make(T{})};
}

std::vector<Leaf> leaves() {
  using namespace ::arrow;  // NOLINT(google-build-using-namespace)
  return {
      leaf<std::int64_t>(date64(), 86'400'000, 129'600'000, -86'400'000),
      leaf<std::int32_t>(time32(TimeUnit::SECOND), 86'399, 86'400, 1),
      leaf<std::int32_t>(time32(TimeUnit::MILLI), 86'399'999, -1, 1),
      leaf<std::int64_t>(time64(TimeUnit::MICRO), 86'399'999'999, 86'400'000'000, 1),
      leaf<std::int64_t>(time64(TimeUnit::NANO), 86'399'999'999'999, 86'400'000'000'000, 1),
      leaf<std::int32_t>(decimal32(2, 1), 99, 100, -99),
      leaf<std::int64_t>(decimal64(2, 1), 99, -100, -99),
      leaf<Decimal128>(decimal128(2, 1), Decimal128(99), Decimal128(100), Decimal128(-99)),
      leaf<Decimal256>(decimal256(2, 1), Decimal256(99), Decimal256(100), Decimal256(-99)),
  };
}

/// Wraps four elements in a type so that no slot shows the second.
struct Around {
  const char* what;
  DataPtr (*put)(const DataPtr& leaf);
};

const Around kArounds[] = {
    {"null struct", [](const DataPtr& leaf) { return struct_of(leaf, {0b1101}); }},
    {"null struct of two fields",
     [](const DataPtr& leaf) {
       return ArrayData::Make(::arrow::struct_({field("a", leaf->type), field("b", leaf->type)}), 4,
                              {ArrowBuffer({0b1101})}, {leaf, leaf});
     }},
    {"field without null in a null struct",
     [](const DataPtr& leaf) { return struct_of(struct_of(leaf, {0b1111}), {0b1101}); }},
    {"null struct in a struct",
     [](const DataPtr& leaf) { return struct_of(struct_of(leaf, {0b1101}), {0b1111}); }},
    {"struct from an offset on",
     [](const DataPtr& leaf) {
       const auto data = struct_of(leaf, {0b1101})->Copy();
       data->offset = 1;
       data->length = 2;
       return data;
     }},
    {"slice of a struct that leaves it out",
     [](const DataPtr& leaf) {
       const auto data = struct_of(leaf, {0b1111})->Copy();
       data->offset = 2;
       data->length = 2;
       return data;
     }},
    {"child from an offset on",
     [](const DataPtr& leaf) { return struct_of(leaf->Slice(1, 3), {0b110}); }},
    {"null list", [](const DataPtr& leaf) { return lists_of(leaf, {0, 1, 2, 4}, 0b101); }},
    {"null list from an offset on",
     [](const DataPtr& leaf) {
       const auto data = lists_of(leaf, {0, 1, 2, 4}, 0b101)->Copy();
       data->offset = 1;
       data->length = 2;
       return data;
     }},
    {"elements before the first list",
     [](const DataPtr& leaf) { return lists_of(leaf, {2, 3, 4}, 0b11); }},
    {"null large list",
     [](const DataPtr& leaf) {
       return ArrayData::Make(::arrow::large_list(leaf->type), 2,
                              {ArrowBuffer({0b10}), ExactBuffer<std::int64_t>({0, 2, 4})}, {leaf});
     }},
    {"list in a null struct",
     [](const DataPtr& leaf) { return struct_of(lists_of(leaf, {0, 1, 2, 4}, 0b111), {0b101}); }},
    {"null struct in a list",
     [](const DataPtr& leaf) { return lists_of(struct_of(leaf, {0b1101}), {0, 3, 4}, 0b11); }},
    {"null map",
     [](const DataPtr& leaf) {
       const auto type = ::arrow::map(::arrow::int8(), leaf->type);
       const auto keys = ArrowArray(::arrow::int8(), "[1, 2, 3, 4]")->data();
       const auto entries = ArrayData::Make(type->field(0)->type(), 4, {nullptr}, {keys, leaf}, 0);
       return ArrayData::Make(
           type, 3, {ArrowBuffer({0b101}), ExactBuffer<std::int32_t>({0, 1, 2, 4})}, {entries});
     }},
    {"null list of fixed size",
     [](const DataPtr& leaf) {
       return ArrayData::Make(::arrow::fixed_size_list(leaf->type, 2), 2, {ArrowBuffer({0b10})},
                              {leaf});
     }},
    {"null list of fixed size from an offset on",
     [](const DataPtr& leaf) {
       return ArrayData::Make(::arrow::fixed_size_list(leaf->type, 1), 3, {ArrowBuffer({0b1101})},
                              {leaf}, ::arrow::kUnknownNullCount, 1);
     }},
    {"null list view",
     [](const DataPtr& leaf) {
       return ArrayData::Make(::arrow::list_view(leaf->type), 3,
                              {ArrowBuffer({0b101}), ExactBuffer<std::int32_t>({2, 0, 2}),
                               ExactBuffer<std::int32_t>({1, 4, 2})},
                              {leaf});
     }},
    {"element between list views",
     [](const DataPtr& leaf) {
       return ArrayData::Make(::arrow::list_view(leaf->type), 3,
                              {ArrowBuffer({0b111}), ExactBuffer<std::int32_t>({0, 2, 0}),
                               ExactBuffer<std::int32_t>({1, 2, 1})},
                              {leaf});
     }},
    {"null large list view",
     [](const DataPtr& leaf) {
       return ArrayData::Make(::arrow::large_list_view(leaf->type), 3,
                              {ArrowBuffer({0b101}), ExactBuffer<std::int64_t>({2, 0, 0}),
                               ExactBuffer<std::int64_t>({2, 4, 1})},
                              {leaf});
     }},
    {"null struct in a dictionary",
     [](const DataPtr& leaf) {
       const auto values = struct_of(leaf, {0b1101});
       auto data = ArrowArray(::arrow::int8(), "[3, 2, 1, 0, null]")->data()->Copy();
       data->type = ::arrow::dictionary(::arrow::int8(), values->type);
       data->dictionary = values;
       return data;
     }},
};

hxArrayPtr host_value(const DataPtr& data) {
  const auto taken = take_in(::arrow::MakeArray(data), {.cast = true});
  EXPECT_TRUE(taken.ok()) << taken.status();
  if (!taken.ok()) return nullptr;
  EXPECT_TRUE(taken->value->ValidateFull().ok());
  EXPECT_EQ(Unfit(*taken->value->data()), "");
  return io::arrow::core::to_numera(taken->value).ValueOrDie();
}

TEST(IntakeBehindNulls, PutsZeroInThePlaceOfWhatIsNoValue) {
  for (const Around& around : kArounds) {
    for (const Leaf& leaf : leaves()) {
      SCOPED_TRACE(around.what + (": " + leaf.bad->type->ToString()));
      const hxArrayPtr given = host_value(around.put(leaf.bad));
      ASSERT_NE(given, nullptr);
      EXPECT_TRUE(SameHostValue(given.get(), host_value(around.put(leaf.mended)).get()));
    }
  }
}

TEST(IntakeBehindNulls, LeavesOtherValuesThereAndTheInputAlone) {
  const auto days = ArrayData::Make(
      ::arrow::date64(), 3, {nullptr, ExactBuffer<std::int64_t>({7, 86'400'000, 86'400'000})}, 0);
  const auto given = ::arrow::MakeArray(struct_of(days, {0b100}));
  const auto taken = take_in(given).ValueOrDie().value->data()->child_data[0];
  const auto* values = taken->GetValues<std::int64_t>(1);
  EXPECT_EQ(std::vector<std::int64_t>(values, values + 3),
            (std::vector<std::int64_t>{0, 86'400'000, 86'400'000}));
  EXPECT_EQ(taken->buffers[0], nullptr);
  EXPECT_EQ(days->GetValues<std::int64_t>(1)[0], 7);
}

TEST(IntakeBehindNulls, LeavesTheBufferOfAColumnThatIsValid) {
  const auto days = ArrowArray(::arrow::date64(), "[0, 86400000]")->data();
  const auto taken = take_in(::arrow::MakeArray(struct_of(days, {0b10}))).ValueOrDie().value;
  EXPECT_EQ(taken->data()->child_data[0]->buffers[1], days->buffers[1]);
}

TEST(IntakeBehindNulls, TakesWhatStandsBehindANullOfItsOwn) {
  for (const Leaf& leaf : leaves()) {
    SCOPED_TRACE(leaf.bad->type->ToString());
    const auto data = leaf.bad->Copy();
    data->buffers[0] = ArrowBuffer({0b1101});
    data->null_count = 1;
    EXPECT_TRUE(take_in(::arrow::MakeArray(data), {.cast = true}).ok());
  }
}

TEST(IntakeBehindNulls, RefusesWhatASlotShows) {
  const DataPtr bad = leaves()[0].bad;
  const std::pair<const char*, DataPtr> rows[] = {
      {"struct", struct_of(bad, {0b0010})},
      {"list", lists_of(bad, {0, 1, 2, 4}, 0b010)},
      {"null struct in a dictionary that another value shows",
       [&] {
         auto data = ArrowArray(::arrow::int8(), "[0]")->data()->Copy();
         data->type = ::arrow::dictionary(::arrow::int8(), bad->type);
         data->dictionary = bad;
         return data;
       }()},
      {"view beside a null one",
       ArrayData::Make(::arrow::list_view(bad->type), 2,
                       {ArrowBuffer({0b10}), ExactBuffer<std::int32_t>({0, 1}),
                        ExactBuffer<std::int32_t>({4, 1})},
                       {bad})},
  };
  for (const auto& [what, data] : rows) {
    const auto status = take_in(::arrow::MakeArray(data), {.cast = true}).status();
    EXPECT_EQ(status.code(), ::arrow::StatusCode::Invalid) << what;
  }
}

TEST(IntakeBehindNulls, NamesWhatIsShownWhereBothAreBad) {
  const auto days =
      ArrayData::Make(::arrow::date64(), 2, {nullptr, ExactBuffer<std::int64_t>({7, 13})}, 0);
  const auto status = take_in(::arrow::MakeArray(struct_of(days, {0b10}))).status();
  EXPECT_NE(status.message().find("13"), std::string::npos) << status;
}

TEST(IntakeBehindNulls, KeepsOneDictionaryForTheChunksThatShareIt) {
  const auto words =
      ArrowArray(::arrow::dictionary(::arrow::int8(), ::arrow::utf8()), R"(["a", "b", "a", "b"])")
          ->data();
  const DataPtr bad = leaves()[0].bad;
  const auto rows = ::arrow::MakeArray(
      ArrayData::Make(::arrow::struct_({field("d", bad->type), field("w", words->type)}), 4,
                      {ArrowBuffer({0b1101})}, {bad, words}));
  const auto column = std::make_shared<::arrow::ChunkedArray>(
      ::arrow::ArrayVector{rows->Slice(0, 2), rows->Slice(2)});
  const auto fit = take_in(column).ValueOrDie().value;
  EXPECT_EQ(fit->chunk(0)->data()->child_data[1]->dictionary,
            fit->chunk(1)->data()->child_data[1]->dictionary);
}

}  // namespace
}  // namespace numera::testing
