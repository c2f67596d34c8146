#include "numera/core/array_checks.h"

#include <arrow/array/data.h>
#include <arrow/buffer.h>
#include <arrow/type.h>

#include <string>
#include <utility>

#include "numera/core/arrow_types.h"
#include "numera/core/limits.h"
#include "numera/core/messages.h"
#include "numera/format/layout.h"

namespace numera::io::arrow::core {
namespace {

using ::arrow::ArrayData;
using ::arrow::DataType;
using ::arrow::Status;
using ::arrow::Type;
using format::Layout;
using format::layout_of;

[[gnu::noinline]] Status check_has_host_form(const DataType& type) {
  if (arrow_type_row(type.id()).writer != nullptr) return Status::OK();
  return Status::TypeError("Unsupported type for Arrrow-NUMERA conversion: ", type.ToString());
}

Status check_main_memory(const ArrayData& array, size_t index) {
  if (index >= array.buffers.size() || array.buffers[index] == nullptr) return Status::OK();
  return array.buffers[index]->is_cpu() ? Status::OK() : messages::not_readable();
}

Status check_fixed_width(const ArrayView& array) {
  const auto& type = static_cast<const ::arrow::FixedWidthType&>(*array.data->type);
  const std::int64_t width = type.byte_width();  // the width in bits may overflow
  if (width == 0 || array.length == 0) return Status::OK();
  ARROW_RETURN_NOT_OK(check_main_memory(*array.data, 1));
  const auto bytes = static_cast<std::int64_t>(bytes_of(*array.data, 1).size());
  if (array.offset + array.length <= bytes / width) return Status::OK();
  return messages::short_buffer("Values buffer", bytes, array.offset + array.length);
}

/// Checks that there are offset + length + 1 offsets.
Status check_stored_offsets(const ArrayView& array, std::int64_t width) {
  ARROW_RETURN_NOT_OK(check_main_memory(*array.data, 1));
  const auto bytes = static_cast<std::int64_t>(bytes_of(*array.data, 1).size());
  if (array.length == 0 && bytes == 0) return Status::OK();
  if (array.offset + array.length < bytes / width) return Status::OK();
  return messages::short_buffer("Offsets buffer", bytes, array.offset + array.length);
}

Status check_text(const ArrayView& array, std::int64_t width) {
  if (array.length == 0) return Status::OK();
  ARROW_RETURN_NOT_OK(check_stored_offsets(array, width));
  return check_main_memory(*array.data, 2);
}

/// Checks the buffers of the values, but not the bitmap.
[[gnu::noinline]] Status check_values(const ArrayView& array) {
  switch (layout_of(array.data->type->id())) {
    case Layout::kNoHostForm:
    case Layout::kNoValues:
    case Layout::kStruct:
      break;
    case Layout::kBits:
      return array.length == 0 ? Status::OK() : check_main_memory(*array.data, 1);
    case Layout::kFixedWidth:
      return check_fixed_width(array);
    case Layout::kText:
      return check_text(array, sizeof(std::int32_t));
    case Layout::kLargeText:
      return check_text(array, sizeof(std::int64_t));
    case Layout::kList:
    case Layout::kMap:
      return check_stored_offsets(array, sizeof(std::int32_t));
    case Layout::kLargeList:
      return check_stored_offsets(array, sizeof(std::int64_t));
  }
  return Status::OK();
}

[[gnu::noinline]] Status check_validity(const ArrayView& array) {
  if (array.length == 0 || array.data->null_count.load() == 0) return Status::OK();
  return check_main_memory(*array.data, 0);
}

/// Dictionaries that are not text are refused by the writer.
[[gnu::noinline]] Status check_dictionary(const ArrayData& array) {
  const DataType& type = *static_cast<const ::arrow::DictionaryType&>(*array.type).value_type();
  if (type.id() != Type::STRING && type.id() != Type::LARGE_STRING) return Status::OK();
  if (array.dictionary == nullptr) return messages::wrong_dictionary("none", type);
  const ArrayData& values = *array.dictionary;
  if (values.type == nullptr) return messages::wrong_dictionary("an array without a type", type);
  if (!values.type->Equals(type)) return messages::wrong_dictionary(values.type->name(), type);
  if (values.buffers.size() != 3) {
    return messages::wrong_dictionary("an array without its buffers", type);
  }
  if (!extent_is_valid(values)) return messages::wrong_extent(values.offset, values.length);
  return check_values(values);
}

Status check_memory(const ArrayView& array) {
  if (array.data->type->id() == Type::DICTIONARY) {
    ARROW_RETURN_NOT_OK(check_dictionary(*array.data));
  }
  ARROW_RETURN_NOT_OK(check_values(array));
  return check_validity(array);
}

Status check_buffers(const ArrayData& array, const DataType& type) {
  const size_t expected = type.layout().buffers.size();
  if (array.buffers.size() != expected) {
    return messages::wrong_layout(type, std::to_string(array.buffers.size()) + " buffers",
                                  std::to_string(expected));
  }
  if (type.id() == Type::DICTIONARY && array.dictionary == nullptr) {
    return messages::wrong_layout(type, "no dictionary", "one");
  }
  return Status::OK();
}

/// Checks one child against the type of its parent.
[[gnu::noinline]] Status check_child(const ArrayData& parent, size_t i) {
  const DataType& type = *parent.type;
  const std::string name = "child " + std::to_string(i);
  const ArrayData* child = parent.child_data[i].get();
  if (child == nullptr || child->type == nullptr) {
    return messages::wrong_layout(type, "no " + name, "one");
  }
  const auto& declared = type.field(static_cast<int>(i))->type();
  if (child->type->id() != declared->id()) {
    return messages::wrong_layout(type, name + " of type " + child->type->name(), declared->name());
  }
  // The child may have a type object of its own, which nobody has checked yet.
  if (child->type != declared) ARROW_RETURN_NOT_OK(check_type(child->type.get()));
  if (!extent_is_valid(*child)) return messages::wrong_extent(child->offset, child->length);
  const std::int64_t needed = parent.offset + parent.length;
  if (type.id() == Type::STRUCT && child->length < needed) {
    return messages::wrong_layout(type, name + " of length " + std::to_string(child->length),
                                  "at least " + std::to_string(needed));
  }
  return Status::OK();
}

/// Checks an array itself, but not its children. `levels` is the number of nesting levels still
/// allowed, including that of `array`. This is a separate function so that the recursive
/// `check_array` takes little stack.
[[gnu::noinline]] Status check_node(const ArrayData& array, int levels) {
  const DataType& type = *array.type;
  ARROW_RETURN_NOT_OK(check_has_host_form(type));
  ARROW_RETURN_NOT_OK(check_buffers(array, type));
  if (std::cmp_not_equal(array.child_data.size(), type.num_fields())) {
    return messages::wrong_layout(type, std::to_string(array.child_data.size()) + " children",
                                  std::to_string(type.num_fields()));
  }
  const bool is_container = !array.child_data.empty() || type.id() == Type::STRUCT;
  // A map is an array of entries, which are a struct. Only the struct counts as a level.
  if (is_container && type.id() != Type::MAP && levels == 0) return messages::nested_too_deeply();
  return Status::OK();
}

[[gnu::noinline]] Status check_map_nulls(const ArrayData& map) {
  const ArrayData& entries = *map.child_data[0];
  if (count_nulls(entries) != 0) {
    return messages::wrong_layout(*map.type, "entries that may be null", "none");
  }
  if (entries.child_data.size() != 2) {
    return messages::wrong_layout(
        *map.type, "entries of " + std::to_string(entries.child_data.size()) + " children", "2");
  }
  if (count_nulls(*entries.child_data[0]) != 0) {
    return messages::wrong_layout(*map.type, "keys that may be null", "none");
  }
  return Status::OK();
}

/// Checks an array and its children in the order of writing. Of the children of a struct, only the
/// part that the struct shows is written. Keys and items of a map are written whole (`is_entries`).
Status check_array(const ArrayView& array, int levels, bool is_entries = false) {
  ARROW_RETURN_NOT_OK(check_node(*array.data, levels));
  const Type::type id = array.data->type->id();
  if (id != Type::MAP) --levels;
  const bool is_cut = id == Type::STRUCT && !is_entries;
  for (size_t i = 0; i < array.data->child_data.size(); ++i) {
    ARROW_RETURN_NOT_OK(check_child(*array.data, i));
    const ArrayView child = is_cut ? array.struct_child(i) : array.whole_child(i);
    ARROW_RETURN_NOT_OK(check_array(child, levels, id == Type::MAP));
  }
  ARROW_RETURN_NOT_OK(check_memory(array));
  return id == Type::MAP ? check_map_nulls(*array.data) : Status::OK();
}

/// Whether two types are equal except for the names, nullability and metadata of their fields, and
/// for whether map keys are sorted. Such types have the same memory layout.
bool is_laid_out_like(const DataType& type, const DataType& other) {
  if (&type == &other) return true;
  if (type.id() != other.id() || type.num_fields() != other.num_fields()) return false;
  if (type.num_fields() == 0 || layout_of(type.id()) == Layout::kNoHostForm) {
    return type.Equals(other);
  }
  for (int i = 0; i < type.num_fields(); ++i) {
    if (!is_laid_out_like(*type.field(i)->type(), *other.field(i)->type())) return false;
  }
  return true;
}

Status check_types(const ColumnView& column) {
  ARROW_RETURN_NOT_OK(check_type(column.type().get()));
  for (const ArrayView& chunk : column.chunks()) {
    if (chunk.data == nullptr || chunk.data->type == column.type()) continue;
    ARROW_RETURN_NOT_OK(check_type(chunk.data->type.get()));
  }
  return check_has_host_form(*column.type());
}

Status check_chunks(const ColumnView& column) {
  std::int64_t rest = column.length();
  int i = 0;
  for (const ArrayView& chunk : column.chunks()) {
    if (chunk.data == nullptr) return messages::wrong_chunk(i, "no array", *column.type());
    if (!is_laid_out_like(*chunk.data->type, *column.type())) {
      return messages::wrong_chunk(i, chunk.data->type->ToString(), *column.type());
    }
    if (!extent_is_valid(chunk)) return messages::wrong_extent(chunk.offset, chunk.length);
    if (chunk.length > rest) return messages::wrong_total(column.length());
    rest -= chunk.length;
    ++i;
  }
  return rest == 0 ? Status::OK() : messages::wrong_total(column.length());
}

}  // namespace

Status check_column(const ColumnView& column) {
  ARROW_RETURN_NOT_OK(check_types(column));
  ARROW_RETURN_NOT_OK(check_chunks(column));
  const bool is_nested = column.type()->num_fields() > 0;
  for (const ArrayView& chunk : column.chunks()) {
    ARROW_RETURN_NOT_OK(is_nested ? check_array(chunk, kMaxNestingLevels) : check_memory(chunk));
    const bool is_dictionary = chunk.data->dictionary != nullptr && column.chunks().size() > 1;
    // Several dictionaries are merged, which reads their bitmaps.
    if (is_dictionary) ARROW_RETURN_NOT_OK(check_validity(*chunk.data->dictionary));
  }
  return Status::OK();
}

}  // namespace numera::io::arrow::core
