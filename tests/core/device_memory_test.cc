#include <arrow/array/util.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "numera/core/to_numera.h"
#include "tests/extras/encode/columns.h"
#include "tests/support/arrow_values.h"
#include "tests/support/host_matchers.h"
#include "tests/support/other_device.h"
#include "tests/support/results.h"

namespace numera::io::arrow::core {
namespace {

using namespace numera::testing;
using ::arrow::ArrayData;
using ::arrow::Status;
using DataPtr = std::shared_ptr<ArrayData>;

/// Copies all nodes. The copy shares the buffers.
DataPtr copy_of(const ArrayData& array) {
  DataPtr copy = array.Copy();
  for (DataPtr& child : copy->child_data) child = copy_of(*child);
  if (copy->dictionary != nullptr) copy->dictionary = copy_of(*copy->dictionary);
  return copy;
}

/// Lists the buffers of all nodes, starting with the node itself.
void list_buffers(ArrayData& array, const std::string& place,
                  std::vector<std::pair<std::string, std::shared_ptr<::arrow::Buffer>*>>& list) {
  for (size_t i = 0; i < array.buffers.size(); ++i) {
    if (array.buffers[i] == nullptr) continue;
    list.emplace_back(place + " buffer " + std::to_string(i), &array.buffers[i]);
  }
  for (size_t i = 0; i < array.child_data.size(); ++i) {
    list_buffers(*array.child_data[i], place + " child " + std::to_string(i), list);
  }
  if (array.dictionary != nullptr) list_buffers(*array.dictionary, place + " dictionary", list);
}

void expect_refusal_of_each_buffer(const ::arrow::Array& array) {
  const Status not_readable =
      Status::Invalid("Buffer: found bytes that cannot be read here, expected main memory.");
  for (size_t i = 0;; ++i) {
    const DataPtr data = copy_of(*array.data());
    std::vector<std::pair<std::string, std::shared_ptr<::arrow::Buffer>*>> buffers;
    list_buffers(*data, array.type()->ToString(), buffers);
    if (i == buffers.size()) return;
    auto& [place, buffer] = buffers[i];
    if ((*buffer)->size() == 0) continue;
    *buffer = BufferOfOtherDevice((*buffer)->size());
    EXPECT_EQ(to_numera(::arrow::MakeArray(data)).status(), not_readable) << place;
  }
}

TEST(DeviceMemory, IsRefusedWhereverABufferOfAnyTypeLies) {
  for (const ColumnType& column : column_types()) {
    const auto array = ArrowArray(column.type, column.json);
    expect_refusal_of_each_buffer(*array);
    for (const Nest& nest : nestings()) expect_refusal_of_each_buffer(*nest(array));
  }
}

TEST(DeviceMemory, IsRefusedInEachOfSeveralDictionaries) {
  const auto type = ::arrow::dictionary(::arrow::int8(), ::arrow::utf8());
  const auto good = ArrowArray(type, R"(["a", null])");
  for (const size_t i : {size_t{0}, size_t{1}}) {
    const DataPtr data = copy_of(*good->data());
    data->buffers[i] = BufferOfOtherDevice(data->buffers[i]->size());
    const auto chunks = ::arrow::ArrayVector{good, ::arrow::MakeArray(data)};
    EXPECT_EQ(
        to_numera(std::make_shared<::arrow::ChunkedArray>(chunks)).status(),
        Status::Invalid("Buffer: found bytes that cannot be read here, expected main memory."))
        << "buffer " << i;
  }
}

TEST(DeviceMemory, OfTheBitmapOfADictionaryIsRefusedWhereSeveralAreMerged) {
  const auto type = ::arrow::dictionary(::arrow::int8(), ::arrow::utf8());
  const DataPtr data = copy_of(*ArrowArray(type, R"(["a"])")->data());
  data->dictionary->buffers[0] = BufferOfOtherDevice(1);
  data->dictionary->null_count = ::arrow::kUnknownNullCount;
  const auto chunk = ::arrow::MakeArray(data);
  const auto column = [&chunk](size_t chunks) {
    return std::make_shared<::arrow::ChunkedArray>(::arrow::ArrayVector(chunks, chunk));
  };
  EXPECT_EQ(to_numera(column(1)).status(), Status::OK());
  EXPECT_EQ(to_numera(column(2)).status(),
            Status::Invalid("Buffer: found bytes that cannot be read here, expected main memory."));
}

TEST(DeviceMemory, OfABitmapIsRefusedWhetherItsNullsAreCountedOrNot) {
  for (const std::int64_t nulls : {-1, 1}) {
    const auto array = std::make_shared<::arrow::UInt8Array>(2, ArrowBuffer({1, 2}),
                                                             BufferOfOtherDevice(1), nulls);
    EXPECT_EQ(
        to_numera(array).status(),
        Status::Invalid("Buffer: found bytes that cannot be read here, expected main memory."));
    EXPECT_EQ(array->data()->null_count.load(), nulls);
  }
}

TEST(DeviceMemory, ThatNothingIsReadOfDoesNotMatter) {
  const auto device = BufferOfOtherDevice(1);
  const std::pair<std::shared_ptr<::arrow::Array>, std::shared_ptr<::arrow::Array>> cases[] = {
      {std::make_shared<::arrow::UInt8Array>(2, ArrowBuffer({1, 2}), device, 0),
       ArrowArray(::arrow::uint8(), "[1, 2]")},
      {std::make_shared<::arrow::UInt8Array>(0, device, device, 0),
       ArrowArray(::arrow::uint8(), "[]")},
      {std::make_shared<::arrow::BooleanArray>(0, device, device, 0),
       ArrowArray(::arrow::boolean(), "[]")},
      {std::make_shared<::arrow::StringArray>(0, device, device, device, 0),
       ArrowArray(::arrow::utf8(), "[]")}};
  for (const auto& [array, same] : cases) {
    EXPECT_TRUE(SameHostValue(ValueOf(to_numera(array)).get(), ValueOf(to_numera(same)).get()));
  }
}

}  // namespace
}  // namespace numera::io::arrow::core
