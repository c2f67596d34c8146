#pragma once

/// \file
/// Values nested to any depth, in each form: Arrow, as written by `to_numera`, as read by
/// `to_arrow`.

#include <arrow/array/data.h>
#include <arrow/array/util.h>
#include <arrow/type.h>

#include <memory>
#include <utility>
#include <vector>

#include "tests/support/arrow_values.h"
#include "tests/support/envelopes.h"
#include "tests/support/host_builder.h"

namespace numera::testing {

using ArrowData = std::shared_ptr<::arrow::ArrayData>;

/// Wraps a value of one element in a container of one element, in each form.
struct Container {
  const char* name;
  ArrowData (*arrow)(ArrowData inner);
  hxArrayPtr (*written)(hxArrayPtr inner);
  hxArrayPtr (*encoded)(hxArrayPtr inner);  ///< null if `to_arrow` does not read the container
};

inline ArrowData NestedData(std::shared_ptr<::arrow::DataType> type,
                            std::vector<std::shared_ptr<::arrow::Buffer>> buffers,
                            ArrowData child) {
  return ::arrow::ArrayData::Make(std::move(type), 1, std::move(buffers), {std::move(child)}, 0);
}

inline ArrowData ArrowList(ArrowData inner) {
  const auto type = ::arrow::list(inner->type);
  return NestedData(type, {nullptr, ArrowBuffer({0, 0, 0, 0, 1, 0, 0, 0})}, std::move(inner));
}

inline ArrowData ArrowLargeList(ArrowData inner) {
  const auto type = ::arrow::large_list(inner->type);
  return NestedData(type, {nullptr, ArrowBuffer({0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0})},
                    std::move(inner));
}

inline ArrowData ArrowStruct(ArrowData inner) {
  const auto type = ::arrow::struct_({::arrow::field("f", inner->type)});
  return NestedData(type, {nullptr}, std::move(inner));
}

inline ArrowData ArrowMap(ArrowData inner) {
  const auto type = std::make_shared<::arrow::MapType>(::arrow::uint8(), inner->type);
  const auto keys = ::arrow::ArrayData::Make(::arrow::uint8(), 1, {nullptr, ArrowBuffer({7})}, 0);
  const auto entries =
      ::arrow::ArrayData::Make(type->value_type(), 1, {nullptr}, {keys, std::move(inner)}, 0);
  return NestedData(type, {nullptr, ArrowBuffer({0, 0, 0, 0, 1, 0, 0, 0})}, entries);
}

inline hxArrayPtr WrittenList(hxArrayPtr inner) {
  return WrittenNested("list_array", "list_array", 1,
                       ListData(std::move(inner), Column<std::int32_t>({0, 1})));
}

inline hxArrayPtr WrittenLargeList(hxArrayPtr inner) {
  return WrittenNested("list_array", "large_list_array", 1,
                       ListData(std::move(inner), Column<std::int64_t>({0, 1})));
}

inline hxArrayPtr WrittenStruct(hxArrayPtr inner) {
  return WrittenNested("struct", "struct", 1, StructData({"f"}, {std::move(inner)}));
}

inline hxArrayPtr WrittenMap(hxArrayPtr inner) {
  return WrittenNested(
      "map", "map", 1,
      MapData(WrittenNumbers<std::uint8_t>({7}), std::move(inner), Column<std::int32_t>({0, 1})));
}

/// Lists in two chunks. Each chunk is one list around one of the values.
inline hxArrayPtr WrittenTwoChunksOfLists(hxArrayPtr first, hxArrayPtr second) {
  return WrittenEnvelope(
      "list_array", "list_array", StructColumn(kBitmapFields, {WrittenBitmap(1), WrittenBitmap(1)}),
      StructColumn(kListFields, {ListData(std::move(first), Column<std::int32_t>({0, 1})),
                                 ListData(std::move(second), Column<std::int32_t>({0, 1}))}));
}

inline hxArrayPtr EncodedList(hxArrayPtr inner) {
  return ListEnvelope(std::move(inner), Column<std::uint64_t>({0, 1}));
}

inline constexpr Container kList = {"list", ArrowList, WrittenList, nullptr};
inline constexpr Container kLargeList = {"large list", ArrowLargeList, WrittenLargeList,
                                         EncodedList};
inline constexpr Container kStruct = {"struct", ArrowStruct, WrittenStruct, WrittenStruct};
inline constexpr Container kMap = {"map", ArrowMap, WrittenMap, nullptr};

using Containers = std::vector<Container>;

/// Containers that are written and containers that are read: each one alone, and several in turn.
inline const std::vector<Containers> kWrittenContainers = {{kList},
                                                           {kLargeList},
                                                           {kStruct},
                                                           {kMap},
                                                           {kList, kStruct, kMap, kLargeList},
                                                           {kMap, kMap, kStruct}};
inline const std::vector<Containers> kReadContainers = {
    {kLargeList}, {kStruct}, {kStruct, kLargeList, kLargeList}};

/// One double inside `levels` nested containers, which take turns.
inline std::shared_ptr<::arrow::Array> NestedArray(const Containers& containers, size_t levels) {
  ArrowData data = ArrowArray(::arrow::float64(), "[1.5]")->data();
  for (size_t i = 0; i < levels; ++i) data = containers[i % containers.size()].arrow(data);
  return ::arrow::MakeArray(data);
}

inline hxArrayPtr NestedWritten(const Containers& containers, size_t levels) {
  hxArrayPtr value = WrittenNumbers<double>({1.5});
  for (size_t i = 0; i < levels; ++i) {
    value = containers[i % containers.size()].written(std::move(value));
  }
  return value;
}

inline hxArrayPtr NestedEncoded(const Containers& containers, size_t levels) {
  hxArrayPtr value = Numbers<double>({1.5});
  for (size_t i = 0; i < levels; ++i) {
    value = containers[i % containers.size()].encoded(std::move(value));
  }
  return value;
}

}  // namespace numera::testing
