#pragma once

/// \file
/// Snapshots of Arrow values, node by node, for comparison after a call.

#include <arrow/array/array_base.h>
#include <arrow/array/data.h>
#include <arrow/chunked_array.h>
#include <arrow/table.h>
#include <arrow/type.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace numera::testing {

/// Counts the null slots of a node one by one. Slots beyond the end of a short bitmap are valid.
/// Returns nothing where no count exists: offset or length is invalid, or the bitmap is not
/// readable.
inline std::optional<std::int64_t> TrueNullCount(const ::arrow::ArrayData& array) {
  using ::arrow::Type;
  if (array.type != nullptr) {
    const Type::type id = array.type->id();
    if (id == Type::NA) return array.length;
    const bool without_bitmap =
        id == Type::SPARSE_UNION || id == Type::DENSE_UNION || id == Type::RUN_END_ENCODED;
    if (without_bitmap) return 0;
  }
  if (array.buffers.empty() || array.buffers[0] == nullptr) return 0;
  const ::arrow::Buffer& bits = *array.buffers[0];
  std::int64_t end = 0;
  if (array.offset < 0 || array.length < 0 ||
      __builtin_add_overflow(array.offset, array.length, &end)) {
    return std::nullopt;
  }
  if (bits.size() > 0 && (!bits.is_cpu() || bits.data() == nullptr)) return std::nullopt;
  const std::int64_t bytes = std::max<std::int64_t>(bits.size(), 0);
  std::int64_t nulls = 0;
  for (std::int64_t i = array.offset; i < end && i / 8 < bytes; ++i) {
    nulls += (bits.data()[i / 8] >> (i % 8) & 1) == 0 ? 1 : 0;
  }
  return nulls;
}

/// All nodes of an Arrow value: arrays, their children and dictionaries. The value must outlive
/// this.
class ArrayNodes {
 public:
  explicit ArrayNodes(const ::arrow::ArrayData& array) { add(&array, "array"); }
  explicit ArrayNodes(const ::arrow::Array& array) : ArrayNodes(*array.data()) {}
  explicit ArrayNodes(const ::arrow::ChunkedArray& column) { add(column, ""); }
  explicit ArrayNodes(const ::arrow::Table& table) {
    for (size_t i = 0; i < table.columns().size(); ++i) {
      const auto& column = table.columns()[i];
      if (column != nullptr) add(*column, "column " + std::to_string(i) + ", ");
    }
  }

  /// Describes the first node that has changed; empty if none has. It is no change if an unknown
  /// null count has become the true one.
  std::string difference() const {
    for (const Node& node : nodes_) {
      const std::string changed = difference(node);
      if (!changed.empty()) return node.place + ": " + changed;
    }
    return "";
  }

 private:
  /// Keeps alive what the node refers to, so that no new object can reuse its address.
  struct Node {
    std::string place;
    const ::arrow::ArrayData* array;
    std::shared_ptr<::arrow::DataType> type;
    std::int64_t length;
    std::int64_t offset;
    std::int64_t null_count;
    std::vector<std::shared_ptr<::arrow::Buffer>> buffers;
    std::vector<std::pair<std::uintptr_t, std::int64_t>> regions;  ///< addresses and sizes
    std::vector<std::shared_ptr<::arrow::ArrayData>> children;
    std::shared_ptr<::arrow::ArrayData> dictionary;
  };

  static std::vector<std::pair<std::uintptr_t, std::int64_t>> regions(
      const ::arrow::ArrayData& array) {
    std::vector<std::pair<std::uintptr_t, std::int64_t>> all;
    for (const auto& buffer : array.buffers) {
      if (buffer == nullptr) {
        all.emplace_back(0, 0);
      } else {
        all.emplace_back(buffer->address(), buffer->size());
      }
    }
    return all;
  }

  void add(const ::arrow::ChunkedArray& column, const std::string& place) {
    for (size_t i = 0; i < column.chunks().size(); ++i) {
      const auto& chunk = column.chunks()[i];
      if (chunk != nullptr) add(chunk->data().get(), place + "chunk " + std::to_string(i));
    }
  }

  void add(const ::arrow::ArrayData* array, const std::string& place) {
    if (array == nullptr) return;
    nodes_.push_back({place, array, array->type, array->length, array->offset,
                      array->null_count.load(), array->buffers, regions(*array), array->child_data,
                      array->dictionary});
    for (size_t i = 0; i < array->child_data.size(); ++i) {
      add(array->child_data[i].get(), place + ", child " + std::to_string(i));
    }
    add(array->dictionary.get(), place + ", dictionary");
  }

  static std::string changed(const char* what, std::int64_t from, std::int64_t to) {
    return std::string(what) + " " + std::to_string(from) + " is now " + std::to_string(to);
  }

  static std::string difference(const Node& node) {
    const ::arrow::ArrayData& array = *node.array;
    if (array.type != node.type) return "another type";
    if (array.length != node.length) return changed("length", node.length, array.length);
    if (array.offset != node.offset) return changed("offset", node.offset, array.offset);
    if (array.buffers != node.buffers) return "other buffers";
    if (regions(array) != node.regions) return "buffers of another address or size";
    if (array.child_data != node.children) return "other children";
    if (array.dictionary != node.dictionary) return "another dictionary";
    const std::int64_t count = array.null_count.load();
    if (count == node.null_count) return "";
    if (node.null_count == ::arrow::kUnknownNullCount && count == TrueNullCount(array)) return "";
    return changed("null count", node.null_count, count);
  }

  std::vector<Node> nodes_;
};

/// A copy that shares the buffers. The null counts of its nodes are unknown.
inline std::shared_ptr<::arrow::ArrayData> Uncounted(const ::arrow::ArrayData& array) {
  auto copy = array.Copy();
  // In the null type every slot is null. Arrow sets that count itself.
  if (copy->type->id() != ::arrow::Type::NA) copy->null_count = ::arrow::kUnknownNullCount;
  for (auto& child : copy->child_data) child = Uncounted(*child);
  if (copy->dictionary != nullptr) copy->dictionary = Uncounted(*copy->dictionary);
  return copy;
}

}  // namespace numera::testing
