#include "tests/gauntlet/generate.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string>
#include <utility>

namespace numera::gauntlet {
namespace {

using ::arrow::ArrayData;
using ::arrow::Type;
using ArrayDataPtr = std::shared_ptr<ArrayData>;
using TypePtr = std::shared_ptr<::arrow::DataType>;
using BufferPtr = std::shared_ptr<::arrow::Buffer>;

/// A number for each seed and index.
std::uint64_t mix(std::uint64_t seed, std::uint64_t i) {
  std::uint64_t x = seed + 0x9E3779B97F4A7C15U * (i + 1);
  x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9U;
  x = (x ^ (x >> 27)) * 0x94D049BB133111EBU;
  return x ^ (x >> 31);
}

Making child_making(const Making& making, std::uint64_t number) {
  Making child = making;
  child.seed = mix(making.seed, 1000 + number);
  return child;
}

template <class T>
void append(Bytes& bytes, T value) {
  const size_t at = bytes.size();
  bytes.resize(at + sizeof(T));
  std::memcpy(bytes.data() + at, &value, sizeof(T));
}

bool is_valid(std::int64_t i, Nulls nulls) {
  return nulls == Nulls::kAll ? false : nulls != Nulls::kEveryThird || i % 3 != 1;
}

BufferPtr buffer(Bytes bytes, Part part, const Making& making) {
  return make_buffer(std::move(bytes), part, making.memory, making.seed % 2 == 0);
}

BufferPtr bitmap(std::int64_t length, const Making& making) {
  if (making.nulls == Nulls::kNoBitmap) return nullptr;
  Bytes bytes(static_cast<size_t>((length + 7) / 8));
  for (std::int64_t i = 0; i < length; ++i) {
    if (is_valid(i, making.nulls)) {
      bytes[static_cast<size_t>(i / 8)] |= static_cast<std::uint8_t>(1 << (i % 8));
    }
  }
  return buffer(std::move(bytes), Part::kBitmap, making);
}

ArrayDataPtr make(const TypePtr& type, std::int64_t length, const Making& making, Bytes values) {
  return ArrayData::Make(type, length,
                         {bitmap(length, making), buffer(std::move(values), Part::kValues, making)},
                         ::arrow::kUnknownNullCount);
}

ArrayDataPtr bits(const TypePtr& type, std::int64_t length, const Making& making) {
  Bytes values;
  for (std::int64_t i = 0; i < (length + 7) / 8; ++i) {
    values.push_back(static_cast<std::uint8_t>(mix(making.seed, static_cast<std::uint64_t>(i))));
  }
  return make(type, length, making, std::move(values));
}

/// Arrow's own validation wants times within a day and dates of whole days.
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

/// Texts of none to a dozen bytes, of one to four bytes a character.
std::string text(std::uint64_t random) {
  static constexpr std::array<const char*, 8> kTexts = {"",   "a",        "é",   "漢字",
                                                        "😀", "é漢😀xyz", "ab ", "0123456789ab"};
  return kTexts[random % kTexts.size()];
}

template <class Offset>
ArrayDataPtr texts_of(const TypePtr& type, const std::vector<std::string>& texts,
                      const Making& making) {
  // The first text starts behind bytes that belong to none.
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
  std::vector<std::string> all;
  for (std::uint64_t i = 0; i < static_cast<std::uint64_t>(length); ++i) {
    all.push_back(text(mix(making.seed, i)));
  }
  return texts_of(type, all, making);
}

std::vector<std::string> categories(const Making& making) {
  const auto numbered = [](int first, int count) {
    std::vector<std::string> names;
    for (int i = first; i < first + count; ++i) names.push_back("é" + std::to_string(i));
    return names;
  };
  switch (making.dictionaries) {
    case Dictionaries::kEqual:
    case Dictionaries::kOutOfRange:
      return numbered(0, 5);
    case Dictionaries::kDiffering:
      return numbered(60 * making.chunk, 90);
    case Dictionaries::kUnused:
      return {"zero", "", "é0", "zero", "unused", "unused too"};
    case Dictionaries::kNoEntries:
      return {};
    case Dictionaries::kSliced:
      return numbered(making.chunk, 12);
  }
  return {};
}

ArrayDataPtr dictionary(const ::arrow::DictionaryType& type, const Making& making) {
  Making plain = child_making(making, 0);
  plain.nulls = Nulls::kNoBitmap;
  const auto all = texts_of(type.value_type(), categories(making), plain);
  return making.dictionaries == Dictionaries::kSliced ? all->Slice(3, 7) : all;
}

/// Codes that some slot holds; where nothing can be held, or under nulls on demand, one beyond.
std::uint64_t code(const Making& making, std::int64_t i, std::uint64_t entries) {
  const std::uint64_t random = mix(making.seed, static_cast<std::uint64_t>(i));
  const bool astray = making.dictionaries == Dictionaries::kOutOfRange;
  if (entries == 0 || (astray && !is_valid(i, making.nulls))) {
    return random % 2 == 0 ? entries + random % 20 : ~std::uint64_t{0};
  }
  const std::uint64_t used = making.dictionaries == Dictionaries::kUnused ? 4 : entries;
  return random % used;
}

ArrayDataPtr coded(const TypePtr& type, std::int64_t length, const Making& making) {
  const auto& parts = static_cast<const ::arrow::DictionaryType&>(*type);
  const auto width = static_cast<size_t>(parts.index_type()->byte_width());
  const ArrayDataPtr entries = dictionary(parts, making);
  Bytes codes;
  for (std::int64_t i = 0; i < length; ++i) {
    Bytes element;
    append(element, code(making, i, static_cast<std::uint64_t>(entries->length)));
    codes.insert(codes.end(), element.begin(),
                 element.begin() + static_cast<std::ptrdiff_t>(width));
  }
  const ArrayDataPtr array = make(type, length, making, std::move(codes));
  array->dictionary = entries;
  return array;
}

/// Elements of `type`, by themselves or cut out of more.
ArrayDataPtr child(const TypePtr& type, std::int64_t length, const Making& making) {
  if (!making.sliced_children) return generate(type, length, making);
  return generate(type, length + 5, making)->Slice(3, length);
}

/// The first list starts behind two elements that belong to none, and one is left at the end.
template <class Offset>
BufferPtr list_offsets(std::int64_t length, const Making& making, std::int64_t* child_length) {
  Bytes offsets;
  std::int64_t end = 2;
  append(offsets, static_cast<Offset>(end));
  for (std::uint64_t i = 0; i < static_cast<std::uint64_t>(length); ++i) {
    end += static_cast<std::int64_t>(mix(making.seed, i) % 4);
    append(offsets, static_cast<Offset>(end));
  }
  *child_length = end + 1;
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

const char* name_of(Nulls nulls) {
  switch (nulls) {
    case Nulls::kNoBitmap:
      return "no bitmap";
    case Nulls::kNone:
      return "no nulls";
    case Nulls::kEveryThird:
      return "nulls every 3rd";
    case Nulls::kAll:
      return "all null";
  }
  return "";
}

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
