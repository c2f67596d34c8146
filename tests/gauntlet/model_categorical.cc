#include <arrow/buffer.h>

#include <algorithm>

#include "tests/gauntlet/model.h"
#include "tests/support/envelopes.h"

namespace numera::gauntlet {
namespace {

using ::arrow::ArrayData;
using ::arrow::DictionaryType;
using ::arrow::Type;
using namespace numera::testing;

const DictionaryType& dictionary_type(const ArrayData& chunk) {
  return static_cast<const DictionaryType&>(*chunk.type);
}

std::vector<Bytes> texts_of(const ArrayData& dictionary) {
  std::vector<Bytes> texts;
  for (std::int64_t i = 0; i < dictionary.length; ++i) texts.push_back(text_at(dictionary, i));
  return texts;
}

hxArrayPtr plain_codes(const Column& column, const std::shared_ptr<::arrow::DataType>& index) {
  Column codes{index, {}};
  for (const auto& chunk : column.chunks) {
    codes.chunks.push_back(ArrayData::Make(index, chunk->length, chunk->buffers,
                                           ::arrow::kUnknownNullCount, chunk->offset));
  }
  return model_data(codes);
}

/// Code `i` of a chunk. A negative code becomes a number beyond every dictionary.
std::uint64_t code_at(const ArrayData& chunk, std::int64_t i) {
  const std::int64_t width = dictionary_type(chunk).index_type()->byte_width();
  const std::int64_t begin = (chunk.offset + i) * width;
  const Bytes bytes = range_at(chunk, 1, begin, begin + width);
  std::uint64_t code = 0;
  for (size_t b = 0; b < bytes.size(); ++b) code |= std::uint64_t{bytes[b]} << (8 * b);
  return code;
}

/// The texts of all dictionaries in order of first appearance, and one code per slot. A null slot
/// whose code is out of range takes the first entry of its chunk's dictionary.
struct Merged {
  std::vector<Bytes> texts;
  std::vector<size_t> codes;

  void add(const ArrayData& chunk) {
    std::vector<size_t> places;
    for (const Bytes& text : texts_of(*chunk.dictionary)) {
      places.push_back(static_cast<size_t>(std::ranges::find(texts, text) - texts.begin()));
      if (places.back() == texts.size()) texts.push_back(text);
    }
    for (std::int64_t i = 0; i < chunk.length; ++i) {
      std::uint64_t code = code_at(chunk, i);
      if (code >= places.size()) {
        if (is_valid_at(chunk, i)) throw Refused();
        code = 0;
      }
      codes.push_back(places.empty() ? 0 : places[code]);
    }
  }

  template <class T>
  hxArrayPtr codes_as() const {
    std::vector<T> column;
    for (const size_t code : codes) column.push_back(static_cast<T>(code));
    return numera::testing::Column<T>(column);
  }

  /// Uses the model of texts on an Arrow array.
  hxArrayPtr categories() const {
    std::vector<std::int64_t> offsets = {0};
    Bytes all;
    for (const Bytes& text : texts) {
      all.insert(all.end(), text.begin(), text.end());
      offsets.push_back(static_cast<std::int64_t>(all.size()));
    }
    const auto array = ArrayData::Make(
        ::arrow::large_utf8(), static_cast<std::int64_t>(texts.size()),
        {nullptr, ::arrow::Buffer::FromVector(offsets), ::arrow::Buffer::FromVector(all)});
    return model_texts({array->type, {array}});
  }
};

/// The number of texts alone decides the class of the codes.
hxArrayPtr merged_categorical(const Column& column) {
  Merged merged;
  for (const auto& chunk : column.chunks) merged.add(*chunk);
  hxArrayPtr codes = merged.texts.size() <= 127     ? merged.codes_as<std::int8_t>()
                     : merged.texts.size() <= 32767 ? merged.codes_as<std::int16_t>()
                                                    : merged.codes_as<std::int32_t>();
  return CategoricalData(merged.categories(), std::move(codes), Logical({false}));
}

}  // namespace

hxArrayPtr model_categorical(const Column& column) {
  const auto& type = static_cast<const DictionaryType&>(*column.type);
  if (column.chunks.size() > 1) return merged_categorical(column);
  Column dictionary{type.value_type(), {}};
  for (const auto& chunk : column.chunks) dictionary.chunks.push_back(chunk->dictionary);
  return CategoricalData(model_texts(dictionary), plain_codes(column, type.index_type()),
                         Logical({type.ordered()}));
}

}  // namespace numera::gauntlet
