#include "fuzz/arrow_tree.h"

#include <arrow/buffer.h>
#include <arrow/type.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "fuzz/arrow_copies.h"
#include "tests/support/array_nodes.h"

namespace numera::fuzz {
namespace {

using ::arrow::ArrayData;
using ::arrow::DataType;
using ::arrow::Type;
using DataPtr = std::shared_ptr<ArrayData>;
using TypePtr = std::shared_ptr<DataType>;
using Bytes = std::vector<std::uint8_t>;

const std::vector<TypePtr>& plain_types() {
  using namespace ::arrow;  // NOLINT(google-build-using-namespace)
  static const std::vector<TypePtr> types = {utf8(),
                                             int32(),
                                             boolean(),
                                             float64(),
                                             large_utf8(),
                                             binary(),
                                             large_binary(),
                                             int64(),
                                             uint8(),
                                             int8(),
                                             int16(),
                                             uint16(),
                                             uint32(),
                                             uint64(),
                                             float32(),
                                             date32(),
                                             date64(),
                                             time32(TimeUnit::SECOND),
                                             time32(TimeUnit::MILLI),
                                             time64(TimeUnit::NANO),
                                             timestamp(TimeUnit::MICRO),
                                             timestamp(TimeUnit::NANO, "Europe/Paris"),
                                             timestamp(TimeUnit::SECOND, "\xFF"),
                                             duration(TimeUnit::NANO),
                                             fixed_size_binary(3),
                                             fixed_size_binary(0),
                                             null(),
                                             float16(),
                                             decimal32(5, 1),
                                             decimal64(12, 4),
                                             decimal128(9, 2),
                                             decimal256(40, 3),
                                             utf8_view(),
                                             binary_view(),
                                             month_interval(),
                                             day_time_interval(),
                                             month_day_nano_interval()};
  return types;
}

TypePtr index_type(ByteSource& source) {
  using namespace ::arrow;  // NOLINT(google-build-using-namespace)
  const TypePtr types[] = {int8(),  int16(),  int32(),  int64(),
                           uint8(), uint16(), uint32(), uint64()};
  return types[source.below(std::size(types))];
}

TypePtr read_struct_type(ByteSource& source, int levels) {
  ::arrow::FieldVector fields;
  for (size_t count = source.below(4); count > 0; --count) {
    const std::uint8_t name = source.byte();
    fields.push_back(::arrow::field(std::string(1, static_cast<char>(name)),
                                    read_arrow_type(source, levels - 1)));
  }
  return ::arrow::struct_(std::move(fields));
}

/// The number of elements that buffers and children need.
struct Needs {
  std::int64_t elements;  ///< length and offset together
  std::int64_t next = 0;  ///< elements of a child, or bytes that offsets reach
};

bool has_offsets(Type::type id) {
  return ::arrow::is_base_binary_like(id) || id == Type::LIST || id == Type::LARGE_LIST ||
         id == Type::MAP;
}

template <class T>
void store(Bytes& bytes, size_t index, std::int64_t value) {
  const auto narrow = static_cast<T>(value);
  std::memcpy(bytes.data() + index * sizeof(T), &narrow, sizeof(T));
}

/// Offsets that mostly do not decrease.
template <class Offset>
Bytes read_offsets(ByteSource& source, Needs& needs) {
  Bytes bytes((static_cast<size_t>(needs.elements) + 1) * sizeof(Offset));
  const std::uint8_t odd = source.byte();
  std::int64_t end = odd % 4 == 1 ? source.byte() : 0;
  for (size_t i = 0; i <= static_cast<size_t>(needs.elements); ++i) {
    store<Offset>(bytes, i, end);
    end += source.byte() % 5;
    if (odd == 255) end = static_cast<std::int64_t>(source.word()) * source.word() - source.word();
  }
  needs.next = std::clamp<std::int64_t>(end, 0, 1000);
  return bytes;
}

/// Small numbers, such as valid codes and run ends, in one of four cases; otherwise any bytes.
Bytes read_elements(ByteSource& source, const DataType& type, std::int64_t width, Needs& needs) {
  Bytes bytes(static_cast<size_t>(needs.elements * width));
  const std::uint8_t mode = source.byte();
  if (mode % 4 == 0) {
    for (size_t i = 0; width > 0 && i < bytes.size(); i += static_cast<size_t>(width)) {
      bytes[i] = static_cast<std::uint8_t>(source.byte() % 7);
    }
  } else {
    const auto drawn = source.take(bytes.size());
    std::ranges::copy(drawn, bytes.begin());
  }
  if (type.id() == Type::LIST_VIEW || type.id() == Type::LARGE_LIST_VIEW) needs.next = 8;
  return bytes;
}

/// A correct buffer, or in 20 of 256 cases one that is missing, too short, too long or misaligned.
std::shared_ptr<::arrow::Buffer> finish(ByteSource& source, Bytes bytes) {
  const std::uint8_t damage = source.byte();
  if (damage >= 250) return nullptr;
  if (damage >= 244) bytes.resize(bytes.size() / 2);
  if (damage >= 242) bytes.resize(bytes.size() + 5, 0xA5);
  return exact_copy(::arrow::Buffer(bytes.data(), static_cast<std::int64_t>(bytes.size())),
                    damage >= 236 ? 1 : 0);
}

std::shared_ptr<::arrow::Buffer> read_buffer(ByteSource& source, const DataType& type, size_t index,
                                             const ::arrow::DataTypeLayout::BufferSpec& spec,
                                             Needs& needs) {
  using Layout = ::arrow::DataTypeLayout;
  const auto bits = static_cast<size_t>(needs.elements / 8 + (needs.elements % 8 != 0));
  switch (spec.kind) {
    case Layout::ALWAYS_NULL:
      return nullptr;
    case Layout::BITMAP: {
      if (index == 0 && source.byte() % 2 == 0) return nullptr;
      Bytes bitmap(bits, 0xFF);
      std::ranges::copy(source.take(bits), bitmap.begin());
      return finish(source, std::move(bitmap));
    }
    case Layout::FIXED_WIDTH:
      if (index == 1 && has_offsets(type.id())) {
        return finish(source, spec.byte_width == 8 ? read_offsets<std::int64_t>(source, needs)
                                                   : read_offsets<std::int32_t>(source, needs));
      }
      return finish(source, read_elements(source, type, spec.byte_width, needs));
    case Layout::VARIABLE_WIDTH: {
      Bytes text(static_cast<size_t>(needs.next), 'a');
      std::ranges::copy(source.take(source.byte() % 2 == 0 ? 0 : text.size()), text.begin());
      return finish(source, std::move(text));
    }
  }
  return nullptr;
}

std::int64_t child_length(const DataType& type, const Needs& needs, size_t index) {
  switch (type.id()) {
    case Type::STRUCT:
    case Type::SPARSE_UNION:
    case Type::DENSE_UNION:
      return needs.elements;
    case Type::FIXED_SIZE_LIST:
      return needs.elements * static_cast<const ::arrow::FixedSizeListType&>(type).list_size();
    case Type::RUN_END_ENCODED:
      return index == 0 ? std::min<std::int64_t>(needs.elements, 1) : 1;
    default:
      return needs.next;
  }
}

/// Unknown, correct, or any small number.
std::int64_t read_null_count(ByteSource& source, const ArrayData& array) {
  const std::uint8_t drawn = source.byte();
  if (drawn >= 248) return drawn - 248;
  if (drawn % 2 == 0) return ::arrow::kUnknownNullCount;
  return testing::TrueNullCount(array).value_or(::arrow::kUnknownNullCount);
}

DataPtr read_data(ByteSource& source, const TypePtr& type, std::int64_t length,
                  std::int64_t offset) {
  Needs needs{.elements = length + offset};
  const ::arrow::DataTypeLayout layout = type->layout();
  auto array = ArrayData::Make(type, length);
  array->offset = offset;
  for (size_t i = 0; i < layout.buffers.size(); ++i) {
    array->buffers.push_back(read_buffer(source, *type, i, layout.buffers[i], needs));
  }
  for (int i = 0; i < type->num_fields(); ++i) {
    const auto index = static_cast<size_t>(i);
    std::int64_t child = child_length(*type, needs, index);
    const std::uint8_t damage = source.byte();
    if (damage >= 250 && child > 0) --child;
    array->child_data.push_back(
        read_data(source, type->field(i)->type(), child, damage % 16 == 1 ? damage / 16 : 0));
  }
  if (type->id() == Type::DICTIONARY) {
    array->dictionary =
        read_data(source, static_cast<const ::arrow::DictionaryType&>(*type).value_type(), 7, 0);
  }
  array->null_count = read_null_count(source, *array);
  return array;
}

/// Whether Arrow would find no nulls in the array. False if the bitmap is too short.
bool has_no_nulls(const ArrayData& array) {
  const std::int64_t count = array.null_count.load();
  if (count != ::arrow::kUnknownNullCount || array.buffers[0] == nullptr) return count <= 0;
  const bool covered = array.buffers[0]->size() * 8 >= array.offset + array.length;
  return covered && testing::TrueNullCount(array) == 0;
}

}  // namespace

TypePtr read_arrow_type(ByteSource& source, int levels) {
  const size_t kind = levels > 0 ? source.byte() : 0;
  const auto child = [&] { return read_arrow_type(source, levels - 1); };
  switch (kind % 16) {
    case 1:
      return ::arrow::list(child());
    case 2:
      return ::arrow::large_list(child());
    case 3:
    case 4:
      return read_struct_type(source, levels);
    case 5: {
      const TypePtr key = child();
      return ::arrow::map(key, child());
    }
    case 6:
    case 7: {
      const TypePtr index = index_type(source);
      return ::arrow::dictionary(index, plain_types()[source.below(4)], kind >= 128);
    }
    case 8:
      return ::arrow::fixed_size_list(child(), static_cast<std::int32_t>(source.below(4)));
    case 9:
      return ::arrow::list_view(child());
    case 10:
      return ::arrow::large_list_view(child());
    default:
      return plain_types()[source.below(plain_types().size())];
  }
}

bool is_made_by_arrow(const ArrayData& array) {
  if (array.type->id() == Type::STRUCT) return true;
  if (array.type->id() != Type::MAP) {
    return std::ranges::all_of(array.child_data,
                               [](const DataPtr& child) { return is_made_by_arrow(*child); });
  }
  const ArrayData& entries = *array.child_data[0];
  return has_no_nulls(entries) && has_no_nulls(*entries.child_data[0]) &&
         std::ranges::all_of(entries.child_data,
                             [](const DataPtr& child) { return is_made_by_arrow(*child); });
}

DataPtr read_arrow_data(ByteSource& source, const TypePtr& type) {
  const auto length = static_cast<std::int64_t>(source.below(70));
  const std::uint8_t offset = source.byte();
  return read_data(source, type, length, offset % 2 == 0 ? 0 : offset / 8);
}

}  // namespace numera::fuzz
