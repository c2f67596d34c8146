#include "numera/core/array_layout.h"

#include <arrow/array/data.h>
#include <arrow/extension_type.h>
#include <arrow/type.h>

#include <string>
#include <utility>

#include "numera/core/arrow_types.h"
#include "numera/core/chunk_memory.h"
#include "numera/core/limits.h"
#include "numera/core/messages.h"

namespace numera::io::arrow::core {
namespace {

using ::arrow::ArrayData;
using ::arrow::DataType;
using ::arrow::Status;
using ::arrow::Type;

/// The type that defines the buffers and children of an array: the storage type of an extension.
const DataType& storage_type(const DataType& type) {
  const DataType* storage = &type;
  while (storage->id() == Type::EXTENSION) {
    storage = static_cast<const ::arrow::ExtensionType*>(storage)->storage_type().get();
  }
  return *storage;
}

Status check_buffers(const ArrayData& array, const DataType& type) {
  const ::arrow::DataTypeLayout layout = type.layout();
  const size_t expected = layout.buffers.size();
  const size_t found = array.buffers.size();
  if (found < expected || (found > expected && !layout.variadic_spec)) {
    return messages::wrong_layout(type, std::to_string(found) + " buffers",
                                  std::to_string(expected));
  }
  const bool is_union = type.id() == Type::SPARSE_UNION || type.id() == Type::DENSE_UNION;
  if (is_union && array.buffers[0] != nullptr) {
    return messages::wrong_layout(type, "a validity bitmap", "none");
  }
  if (type.id() == Type::DICTIONARY && array.dictionary == nullptr) {
    return messages::wrong_layout(type, "no dictionary", "one");
  }
  return Status::OK();
}

/// Checks one child against the type of its parent.
[[gnu::noinline]] Status check_child(const ArrayData& parent, const DataType& type, size_t i) {
  const std::string name = "child " + std::to_string(i);
  const ArrayData* child = parent.child_data[i].get();
  if (child == nullptr || child->type == nullptr) {
    return messages::wrong_layout(type, "no " + name, "one");
  }
  const auto& declared = type.field(static_cast<int>(i))->type();
  if (child->type->id() != declared->id()) {
    return messages::wrong_layout(type, name + " of type " + child->type->name(), declared->name());
  }
  // `check_type` has already checked the type of the column, but the child may have another type
  // object.
  if (child->type != declared) ARROW_RETURN_NOT_OK(check_type(child->type.get()));
  if (type.id() == Type::STRUCT) {
    if (!extent_is_valid(*child)) return messages::wrong_extent(child->offset, child->length);
    const std::int64_t needed = parent.offset + parent.length;
    if (child->length < needed) {
      return messages::wrong_layout(type, name + " of length " + std::to_string(child->length),
                                    "at least " + std::to_string(needed));
    }
  }
  return Status::OK();
}

/// Checks an array itself, but not its children. `levels` is the number of nesting levels still
/// allowed, including that of `array`. This is a separate function so that the recursive
/// `check_array` takes little stack.
[[gnu::noinline]] Status check_node(const ArrayData& array, const DataType& type, int levels) {
  ARROW_RETURN_NOT_OK(check_buffers(array, type));
  if (std::cmp_not_equal(array.child_data.size(), type.num_fields())) {
    return messages::wrong_layout(type, std::to_string(array.child_data.size()) + " children",
                                  std::to_string(type.num_fields()));
  }
  if (array.child_data.empty() && type.id() != Type::STRUCT) return Status::OK();
  // A map takes no level itself; the struct of its entries does.
  if (type.id() != Type::MAP && levels == 0) return messages::nested_too_deeply();
  if (!extent_is_valid(array)) return messages::wrong_extent(array.offset, array.length);
  return Status::OK();
}

[[gnu::noinline]] Status check_map_nulls(const ArrayData& map, const DataType& type) {
  const ArrayData& entries = *map.child_data[0];
  ARROW_ASSIGN_OR_RAISE(const std::int64_t null_entries, count_nulls(entries));
  if (null_entries != 0) return messages::wrong_layout(type, "entries that may be null", "none");
  if (entries.child_data.size() != 2) {
    return messages::wrong_layout(
        type, "entries of " + std::to_string(entries.child_data.size()) + " children", "2");
  }
  ARROW_ASSIGN_OR_RAISE(const std::int64_t null_keys, count_nulls(*entries.child_data[0]));
  if (null_keys != 0) return messages::wrong_layout(type, "keys that may be null", "none");
  return Status::OK();
}

Status check_array(const ArrayData& array, int levels) {
  const DataType& type = storage_type(*array.type);
  ARROW_RETURN_NOT_OK(check_node(array, type, levels));
  if (type.id() != Type::MAP) --levels;
  for (size_t i = 0; i < array.child_data.size(); ++i) {
    ARROW_RETURN_NOT_OK(check_child(array, type, i));
    ARROW_RETURN_NOT_OK(check_array(*array.child_data[i], levels));
  }
  return type.id() == Type::MAP ? check_map_nulls(array, type) : Status::OK();
}

}  // namespace

Status check_layout(const ColumnView& column) {
  if (column.type()->num_fields() == 0) return Status::OK();
  for (const ArrayView& chunk : column.chunks()) {
    if (chunk.data != nullptr) ARROW_RETURN_NOT_OK(check_array(*chunk.data, kMaxNestingLevels));
  }
  return Status::OK();
}

}  // namespace numera::io::arrow::core
