#include "tests/gauntlet/generate.h"

#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace numera::gauntlet {
namespace {

using ::arrow::ArrayData;
using ::arrow::Type;
using ArrayDataPtr = std::shared_ptr<ArrayData>;
using TypePtr = std::shared_ptr<::arrow::DataType>;
using BufferPtr = std::shared_ptr<::arrow::Buffer>;

template <class T>
void append(Bytes& bytes, T value) {
  const size_t at = bytes.size();
  bytes.resize(at + sizeof(T));
  std::memcpy(bytes.data() + at, &value, sizeof(T));
}

BufferPtr buffer(Bytes bytes, Part part, const Making& making) {
  return make_buffer(std::move(bytes), part, making.memory, making.seed % 2 == 0);
}

BufferPtr bitmap(std::int64_t length, const Making& making) {
  if (making.nulls == Nulls::kNoBitmap) return nullptr;
  return buffer(validity_bits(length, making), Part::kBitmap, making);
}

ArrayDataPtr make(const TypePtr& type, std::int64_t length, const Making& making, Bytes values) {
  return ArrayData::Make(type, length,
                         {bitmap(length, making), buffer(std::move(values), Part::kValues, making)},
                         ::arrow::kUnknownNullCount);
}

ArrayDataPtr bits(const TypePtr& type, std::int64_t length, const Making& making) {
  return make(type, length, making, random_bits(length, making));
}

/// Arrow's validation accepts only times within a day and date64 values of whole days.
std::uint64_t number(const ::arrow::DataType& type, std::uint64_t random) {
  constexpr std::uint64_t kSeconds = 86400;
  switch (type.id()) {
    case Type::TIME32:
    case Type::TIME64:
      return random % kSeconds;
    case Type::DATE64:
      return random % 100000 * kSeconds * 1000;
    default:
      return random;
  }
}

ArrayDataPtr numbers(const TypePtr& type, std::int64_t length, const Making& making) {
  const auto width = static_cast<size_t>(type->byte_width());
  Bytes values;
  for (std::uint64_t i = 0; i < static_cast<std::uint64_t>(length); ++i) {
    Bytes element;
    append(element, number(*type, mix(making.seed, i)));
    element.resize(width, static_cast<std::uint8_t>(i));
    values.insert(values.end(), element.begin(), element.end());
  }
  return make(type, length, making, std::move(values));
}

template <class Offset>
ArrayDataPtr texts_of(const TypePtr& type, const std::vector<std::string>& texts,
                      const Making& making) {
  // The first text starts after two bytes that belong to no text.
  Bytes bytes = {'?', '?'};
  Bytes offsets;
  append(offsets, static_cast<Offset>(bytes.size()));
  for (const std::string& one : texts) {
    bytes.insert(bytes.end(), one.begin(), one.end());
    append(offsets, static_cast<Offset>(bytes.size()));
  }
  const auto length = static_cast<std::int64_t>(texts.size());
  return ArrayData::Make(type, length,
                         {bitmap(length, making), buffer(std::move(offsets), Part::kValues, making),
                          buffer(std::move(bytes), Part::kBytes, making)},
                         ::arrow::kUnknownNullCount);
}

ArrayDataPtr texts_of(const TypePtr& type, const std::vector<std::string>& texts,
                      const Making& making) {
  const bool wide = type->id() == Type::LARGE_STRING || type->id() == Type::LARGE_BINARY;
  return wide ? texts_of<std::int64_t>(type, texts, making)
              : texts_of<std::int32_t>(type, texts, making);
}

ArrayDataPtr texts(const TypePtr& type, std::int64_t length, const Making& making) {
  return texts_of(type, random_texts(length, making), making);
}

ArrayDataPtr dictionary(const ::arrow::DictionaryType& type, const Making& making) {
  Making plain = child_making(making, 0);
  plain.nulls = Nulls::kNoBitmap;
  const auto all = texts_of(type.value_type(), categories(making), plain);
  return making.dictionaries == Dictionaries::kSliced ? all->Slice(3, 7) : all;
}

ArrayDataPtr coded(const TypePtr& type, std::int64_t length, const Making& making) {
  const auto& parts = static_cast<const ::arrow::DictionaryType&>(*type);
  const auto width = static_cast<size_t>(parts.index_type()->byte_width());
  const ArrayDataPtr entries = dictionary(parts, making);
  Bytes codes;
  for (std::int64_t i = 0; i < length; ++i) {
    Bytes element;
    append(element, random_code(making, i, static_cast<std::uint64_t>(entries->length)));
    codes.insert(codes.end(), element.begin(),
                 element.begin() + static_cast<std::ptrdiff_t>(width));
  }
  const ArrayDataPtr array = make(type, length, making, std::move(codes));
  array->dictionary = entries;
  return array;
}

/// Elements of `type`: an array of their own or a slice of a longer one.
ArrayDataPtr child(const TypePtr& type, std::int64_t length, const Making& making) {
  if (!making.sliced_children) return generate(type, length, making);
  return generate(type, length + 5, making)->Slice(3, length);
}

/// One child element follows the last list.
template <class Offset>
BufferPtr list_offsets(std::int64_t length, const Making& making, std::int64_t* child_length) {
  const std::vector<std::int64_t> starts = random_starts(length, making);
  Bytes offsets;
  for (const std::int64_t start : starts) append(offsets, static_cast<Offset>(start));
  *child_length = starts.back() + 1;
  return buffer(std::move(offsets), Part::kValues, making);
}

template <class Offset>
ArrayDataPtr lists(const TypePtr& type, std::int64_t length, const Making& making) {
  std::int64_t child_length = 0;
  BufferPtr offsets = list_offsets<Offset>(length, making, &child_length);
  return ArrayData::Make(type, length, {bitmap(length, making), std::move(offsets)},
                         {child(type->field(0)->type(), child_length, child_making(making, 0))},
                         ::arrow::kUnknownNullCount);
}

ArrayDataPtr structs(const TypePtr& type, std::int64_t length, const Making& making) {
  std::vector<ArrayDataPtr> children;
  for (const auto& field : type->fields()) {
    // The first child is longer than its struct.
    const std::int64_t extra = children.empty() ? 2 : 0;
    children.push_back(child(field->type(), length + extra, child_making(making, children.size())));
  }
  return ArrayData::Make(type, length, {bitmap(length, making)}, std::move(children),
                         ::arrow::kUnknownNullCount);
}

ArrayDataPtr maps(const TypePtr& type, std::int64_t length, const Making& making) {
  std::int64_t child_length = 0;
  BufferPtr offsets = list_offsets<std::int32_t>(length, making, &child_length);
  const TypePtr& entries_type = type->field(0)->type();
  const std::int64_t lead = making.sliced_children ? 3 : 0;
  Making keys_making = child_making(making, 0);
  keys_making.nulls = Nulls::kNoBitmap;
  const auto keys = child(entries_type->field(0)->type(), lead + child_length, keys_making);
  keys->null_count = 0;
  const auto items =
      child(entries_type->field(1)->type(), lead + child_length, child_making(making, 1));
  auto entries = ArrayData::Make(entries_type, child_length, {nullptr}, {keys, items}, 0, lead);
  return ArrayData::Make(type, length, {bitmap(length, making), std::move(offsets)},
                         {std::move(entries)}, ::arrow::kUnknownNullCount);
}

}  // namespace

ArrayDataPtr generate(const TypePtr& type, std::int64_t length, const Making& making) {
  switch (type->id()) {
    case Type::NA:
      return ArrayData::Make(type, length, {nullptr}, length);
    case Type::BOOL:
      return bits(type, length, making);
    case Type::STRING:
    case Type::LARGE_STRING:
    case Type::BINARY:
    case Type::LARGE_BINARY:
      return texts(type, length, making);
    case Type::DICTIONARY:
      return coded(type, length, making);
    case Type::LIST:
      return lists<std::int32_t>(type, length, making);
    case Type::LARGE_LIST:
      return lists<std::int64_t>(type, length, making);
    case Type::STRUCT:
      return structs(type, length, making);
    case Type::MAP:
      return maps(type, length, making);
    default:
      return numbers(type, length, making);
  }
}

}  // namespace numera::gauntlet
