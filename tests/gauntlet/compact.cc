#include "tests/gauntlet/compact.h"

#include <arrow/buffer.h>
#include <arrow/type.h>

#include <utility>
#include <vector>

#include "tests/gauntlet/element.h"

namespace numera::gauntlet {
namespace {

using ::arrow::ArrayData;
using ::arrow::Type;
using ArrayDataPtr = std::shared_ptr<ArrayData>;
using BufferPtr = std::shared_ptr<::arrow::Buffer>;

template <class T>
BufferPtr buffer_of(std::vector<T> values) {
  return ::arrow::Buffer::FromVector(std::move(values));
}

BufferPtr bits_of(const ArrayData& array, size_t buffer) {
  Bytes bits(static_cast<size_t>((array.length + 7) / 8));
  for (std::int64_t i = 0; i < array.length; ++i) {
    if (bit_at(array, buffer, array.offset + i, true)) {
      bits[static_cast<size_t>(i / 8)] |= static_cast<std::uint8_t>(1 << (i % 8));
    }
  }
  return buffer_of(std::move(bits));
}

BufferPtr bitmap_of(const ArrayData& array) {
  return array.buffers[0] == nullptr ? nullptr : bits_of(array, 0);
}

ArrayDataPtr make(const ArrayData& array, std::vector<BufferPtr> buffers,
                  std::vector<ArrayDataPtr> children = {}) {
  buffers.insert(buffers.begin(), bitmap_of(array));
  return ArrayData::Make(array.type, array.length, std::move(buffers), std::move(children),
                         nulls_of(array));
}

template <class Offset>
ArrayDataPtr compact_texts(const ArrayData& array) {
  std::vector<Offset> offsets = {0};
  Bytes bytes;
  for (std::int64_t i = 0; i < array.length; ++i) {
    const Bytes text = text_at(array, i);
    bytes.insert(bytes.end(), text.begin(), text.end());
    offsets.push_back(static_cast<Offset>(bytes.size()));
  }
  return make(array, {buffer_of(std::move(offsets)), buffer_of(std::move(bytes))});
}

/// Elements [begin, begin + length) of an array.
ArrayDataPtr part(const ArrayData& array, std::int64_t begin, std::int64_t length) {
  const ArrayDataPtr cut = array.Copy();
  cut->offset += begin;
  cut->length = length;
  if (cut->null_count != 0) cut->null_count = ::arrow::kUnknownNullCount;
  return compact(*cut);
}

template <class Offset>
ArrayDataPtr compact_lists(const ArrayData& array) {
  std::vector<Offset> offsets = {0};
  Offset begin = 0;
  if (array.length > 0) begin = element_at<Offset>(array, 1, array.offset);
  for (std::int64_t i = 1; i <= array.length; ++i) {
    offsets.push_back(element_at<Offset>(array, 1, array.offset + i) - begin);
  }
  const std::int64_t used = offsets.back();
  return make(array, {buffer_of(std::move(offsets))}, {part(*array.child_data[0], begin, used)});
}

ArrayDataPtr compact_struct(const ArrayData& array) {
  std::vector<ArrayDataPtr> children;
  for (const auto& child : array.child_data) {
    children.push_back(part(*child, array.offset, array.length));
  }
  return make(array, {}, std::move(children));
}

ArrayDataPtr compact_fixed_width(const ArrayData& array) {
  const std::int64_t width =
      array.type->id() == Type::DICTIONARY
          ? static_cast<const ::arrow::DictionaryType&>(*array.type).index_type()->byte_width()
          : array.type->byte_width();
  const std::int64_t begin = array.length == 0 ? 0 : array.offset * width;
  ArrayDataPtr values =
      make(array, {buffer_of(range_at(array, 1, begin, begin + array.length * width))});
  if (array.dictionary != nullptr) values->dictionary = compact(*array.dictionary);
  return values;
}

}  // namespace

ArrayDataPtr compact(const ArrayData& array) {
  switch (array.type->id()) {
    case Type::NA:
      return ArrayData::Make(array.type, array.length, {nullptr}, array.length);
    case Type::BOOL:
      return make(array, {bits_of(array, 1)});
    case Type::STRING:
    case Type::BINARY:
      return compact_texts<std::int32_t>(array);
    case Type::LARGE_STRING:
    case Type::LARGE_BINARY:
      return compact_texts<std::int64_t>(array);
    case Type::LIST:
    case Type::MAP:
      return compact_lists<std::int32_t>(array);
    case Type::LARGE_LIST:
      return compact_lists<std::int64_t>(array);
    case Type::STRUCT:
      return compact_struct(array);
    default:
      return compact_fixed_width(array);
  }
}

}  // namespace numera::gauntlet
