#include <arrow/array/util.h>
#include <arrow/c/bridge.h>
#include <arrow/record_batch.h>
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "numera/core/to_numera.h"
#include "tests/support/arrow_values.h"
#include "tests/support/host_matchers.h"
#include "tests/support/results.h"

namespace numera::io::arrow::core {
namespace {

using namespace numera::testing;
using ::arrow::ArrayData;
using ::arrow::field;
using ::arrow::Status;
using ::arrow::struct_;
using DataPtr = std::shared_ptr<ArrayData>;

void forget_counts(::ArrowArray& array) {
  array.null_count = -1;
  for (std::int64_t i = 0; i < array.n_children; ++i) forget_counts(*array.children[i]);
}

/// The array as another library would pass it, with unknown null counts.
std::shared_ptr<::arrow::Array> Uncounted(const ::arrow::Array& array) {
  ::ArrowArray exported;
  if (!::arrow::ExportArray(array, &exported).ok()) return nullptr;
  forget_counts(exported);
  return ValueOf(::arrow::ImportArray(&exported, array.type()));
}

const auto kMap = ::arrow::map(::arrow::utf8(), ::arrow::int8());
const auto kStruct = struct_({field("m", kMap)});

TEST(UncountedNulls, OfMapsInOtherValuesAreCounted) {
  const std::pair<std::shared_ptr<::arrow::DataType>, const char*> cases[] = {
      {kMap, R"([[["a", 1], ["b", null]], null])"},
      {kStruct, R"([[[["a", 1], ["b", 2]]], null, [[["c", null]]]])"},
      {kStruct, "[]"},
      {::arrow::list(kStruct), R"([[[[["a", 1]]], [[["b", 2]]]], [], null])"},
      {::arrow::list(kStruct), "[]"},
      {::arrow::map(::arrow::int8(), kStruct), R"([[[1, [[["a", 1]]]]], []])"},
      {struct_({field("m", ::arrow::map(::arrow::int8(), kMap))}), R"([[[[1, [["a", 1]]]]]])"}};
  for (const auto& [type, json] : cases) {
    SCOPED_TRACE(type->ToString() + json);
    const auto counted = ArrowArray(type, json);
    const auto uncounted = Uncounted(*counted);
    ASSERT_EQ(uncounted->data()->null_count.load(), -1);
    EXPECT_TRUE(
        SameHostValue(ValueOf(to_numera(uncounted)).get(), ValueOf(to_numera(counted)).get()));
  }
}

TEST(UncountedNulls, OfMapsInARecordBatchAreCounted) {
  const auto column = ArrowArray(kStruct, R"([[[["a", 1]]], null])");
  const auto batch =
      ::arrow::RecordBatch::Make(::arrow::schema({field("s", kStruct)}), 2, {column});
  ::ArrowArray exported;
  ASSERT_TRUE(::arrow::ExportRecordBatch(*batch, &exported).ok());
  forget_counts(exported);
  const auto imported = ValueOf(::arrow::ImportRecordBatch(&exported, batch->schema()));

  const auto table = ValueOf(::arrow::Table::FromRecordBatches({imported}));

  const auto expected = ::arrow::Table::Make(batch->schema(), batch->columns());
  EXPECT_TRUE(SameHostValue(ValueOf(to_numera(table)).get(), ValueOf(to_numera(expected)).get()));
}

/// A struct with one map whose entries or keys have a bitmap and an unknown null count.
std::shared_ptr<::arrow::Array> MapWithBitmap(bool of_keys, std::vector<std::uint8_t> bitmap) {
  const auto map = ArrowArray(kMap, R"([[["a", 1], ["b", 2]]])")->data()->Copy();
  DataPtr& entries = map->child_data[0];
  entries = entries->Copy();
  DataPtr& changed = of_keys ? entries->child_data[0] : entries;
  changed = changed->Copy();
  changed->buffers[0] = ArrowBuffer(bitmap);
  changed->null_count = ::arrow::kUnknownNullCount;
  return ::arrow::MakeArray(ArrayData::Make(kStruct, 1, {nullptr}, {map}, 0));
}

TEST(UncountedNulls, AreRefusedInMapsOnlyWhereANullIs) {
  for (const bool of_keys : {false, true}) {
    EXPECT_EQ(to_numera(MapWithBitmap(of_keys, {0b01})).status(),
              Status::Invalid("Array of type map: found ", of_keys ? "keys" : "entries",
                              " that may be null, expected none."));
    EXPECT_EQ(to_numera(MapWithBitmap(of_keys, {0b11})).status(), Status::OK());
    EXPECT_EQ(to_numera(MapWithBitmap(of_keys, {})).status(), Status::OK())
        << "a bitmap of no bits";
  }
}

TEST(UncountedNulls, AreLeftUncountedWhereTheBitmapEndsEarly) {
  const auto array = std::make_shared<::arrow::UInt8Array>(
      9, ArrowBuffer(std::vector<std::uint8_t>(9)), ArrowBuffer({0xFE}), -1);
  EXPECT_EQ(to_numera(array).status(), Status::OK());
  EXPECT_EQ(array->data()->null_count.load(), -1);
}

TEST(UncountedNulls, AreKeptAsTheTrueCountOnceTheyAreCounted) {
  const auto array =
      std::make_shared<::arrow::UInt8Array>(2, ArrowBuffer({1, 2}), ArrowBuffer({0b01}), -1);
  EXPECT_EQ(to_numera(array).status(), Status::OK());
  EXPECT_EQ(array->data()->null_count.load(), 1);
}

}  // namespace
}  // namespace numera::io::arrow::core
