#include "benchmarks/limits.h"

#include <arrow/array/array_binary.h>
#include <arrow/array/array_dict.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>

#include "benchmarks/arrow_data.h"

namespace numera::benchmarks {
namespace {

/// Copies the bits word by word, shifted to the bit position of the target.
void shift_words(const std::uint8_t* source, std::int64_t bits, std::uint8_t* target, int shift) {
  for (std::int64_t at = 8; at < bits / 8 - 8; at += 8) {
    std::uint64_t before;
    std::uint64_t word;
    std::memcpy(&before, source + at - 8, 8);
    std::memcpy(&word, source + at, 8);
    word = word << shift | before >> 1 >> (63 - shift);
    std::memcpy(target + at, &word, 8);
  }
}

void add_bits(Blocks& blocks, const ColumnPtr& column, size_t buffer) {
  std::uint8_t* const target = add_block(blocks, (column->length() + 7) / 8);
  std::int64_t begin = 0;
  for (const ArrayPtr& chunk : column->chunks()) {
    const ::arrow::ArrayData& data = *chunk->data();
    if (data.buffers[buffer] == nullptr) continue;
    const std::uint8_t* const bits = data.buffers[buffer]->data() + data.offset / 8;
    // A single chunk is copied without a shift, whatever its offset.
    const std::int64_t shift = column->num_chunks() == 1 ? 0 : (begin - data.offset) & 7;
    if (shift == 0) {
      const auto bytes = static_cast<size_t>((data.length + begin % 8) / 8);
      std::memcpy(target + begin / 8, bits, bytes);
    } else {
      shift_words(bits, data.length, target + begin / 8, static_cast<int>(shift));
    }
    begin += data.length;
  }
}

void add_values(Blocks& blocks, const ColumnPtr& column, std::int64_t width) {
  std::uint8_t* target = add_block(blocks, column->length() * width);
  for (const ArrayPtr& chunk : column->chunks()) {
    const ::arrow::ArrayData& data = *chunk->data();
    const auto bytes = static_cast<size_t>(data.length * width);
    if (bytes > 0) std::memcpy(target, data.buffers[1]->data() + data.offset * width, bytes);
    target += bytes;
  }
}

std::int64_t width_of(const ::arrow::DataType& type) { return type.bit_width() / 8; }

ArrayPtr dictionary_of(const ArrayPtr& chunk) {
  return static_cast<const ::arrow::DictionaryArray&>(*chunk).dictionary();
}

bool are_below(const ::arrow::ArrayData& codes, std::int64_t count) {
  const auto last = static_cast<std::int32_t>(count - 1);
  std::int32_t signs = 0;
  const auto* const values = codes.GetValues<std::int32_t>(1);
  for (std::int64_t i = 0; i < codes.length; ++i) signs |= values[i] | (last - values[i]);
  return signs >= 0;
}

/// Translates codes into up to 127 categories with a map to the codes of the merged dictionary.
void transpose(const ::arrow::ArrayData& codes, const std::int32_t* map, std::int64_t count,
               std::uint8_t* target) {
  std::array<std::uint8_t, 127> bytes{};
  if (!are_below(codes, count)) std::abort();
  std::copy_n(map, count, bytes.begin());
  const auto* const values = codes.GetValues<std::int32_t>(1);
  for (std::int64_t i = 0; i < codes.length; ++i) {
    target[i] = bytes[static_cast<size_t>(values[i])];
  }
}

template <class Strings>
std::int64_t bytes_in(const Strings& strings) {
  if constexpr (requires { strings.byte_width(); })
    return strings.length() * strings.byte_width();
  else
    return strings.total_values_length();
}

/// Writes a header and the bytes of each element. `places` receives the address of each.
template <class Strings>
std::uint8_t** add_slab(Blocks& blocks, const ::arrow::Array& chunk, std::uint8_t** places) {
  constexpr std::int64_t kHeaderBytes = 64;
  const auto& strings = static_cast<const Strings&>(chunk);
  std::uint8_t* place =
      add_block(blocks, strings.length() * (kHeaderBytes + 15) + bytes_in(strings));
  for (std::int64_t i = 0; i < strings.length(); ++i) {
    const std::string_view bytes = strings.GetView(i);
    std::memset(place, 1, kHeaderBytes);
    if (!bytes.empty()) std::memcpy(place + kHeaderBytes, bytes.data(), bytes.size());
    *places++ = place;
    place += (kHeaderBytes + static_cast<std::int64_t>(bytes.size()) + 15) / 16 * 16;
  }
  return places;
}

ColumnPtr single_chunk(const std::shared_ptr<::arrow::ArrayData>& data) {
  return std::make_shared<::arrow::ChunkedArray>(::arrow::MakeArray(data));
}

Blocks no_values(const ColumnPtr&) { return {}; }

/// The codes of each chunk, unchanged.
Blocks unmerged_codes(const ColumnPtr& column) {
  const auto& type = static_cast<const ::arrow::DictionaryType&>(*column->type());
  Blocks blocks;
  add_values(blocks, column, width_of(*type.index_type()));
  add_validity(blocks, column);
  return blocks;
}

Limit leaf_limit(::arrow::Type::type type, Limit texts) {
  switch (type) {
    case ::arrow::Type::NA:
      return no_values;
    case ::arrow::Type::BOOL:
      return copied_bits;
    case ::arrow::Type::STRING:
    case ::arrow::Type::LARGE_STRING:
      return texts;
    case ::arrow::Type::BINARY:
    case ::arrow::Type::LARGE_BINARY:
    case ::arrow::Type::FIXED_SIZE_BINARY:
      return slab_of_bytes;
    case ::arrow::Type::DICTIONARY:
      return unmerged_codes;
    default:
      return copied_values;
  }
}

void append(Blocks& blocks, Blocks more) {
  for (hxArrayPtr& block : more) blocks.push_back(std::move(block));
}

Blocks leaves_of(const ColumnPtr& column, Limit texts);

/// The offsets of a list or map (a struct has none), and the leaves of all children.
Blocks nested_leaves(const ::arrow::ArrayData& data, Limit texts) {
  Blocks blocks;
  if (data.buffers.size() > 1) {
    const std::int64_t width = data.type->id() == ::arrow::Type::LARGE_LIST ? 8 : 4;
    const auto bytes = static_cast<size_t>((data.length + 1) * width);
    std::memcpy(add_block(blocks, (data.length + 1) * width),
                data.buffers[1]->data() + data.offset * width, bytes);
  }
  for (const auto& child : data.child_data) {
    append(blocks, leaves_of(single_chunk(child), texts));
  }
  return blocks;
}

Blocks leaves_of(const ColumnPtr& column, Limit texts) {
  Blocks blocks;
  switch (column->type()->id()) {
    case ::arrow::Type::LIST:
    case ::arrow::Type::LARGE_LIST:
    case ::arrow::Type::MAP:
    case ::arrow::Type::STRUCT:
      add_validity(blocks, column);
      for (const ArrayPtr& chunk : column->chunks()) {
        append(blocks, nested_leaves(*chunk->data(), texts));
      }
      return blocks;
    default:
      return leaf_limit(column->type()->id(), texts)(column);
  }
}

}  // namespace

std::uint8_t* add_block(Blocks& blocks, std::int64_t bytes) {
  const std::array<size_t, 2> dims = {static_cast<size_t>(bytes), 1};
  blocks.push_back(hxCreateUninitNumericArray(dims, hxClassID::UInt8, hxComplexity::Real));
  return static_cast<std::uint8_t*>(hxGetData(blocks.back().get()));
}

void add_validity(Blocks& blocks, const ColumnPtr& column) {
  if (column->null_count() > 0) add_bits(blocks, column, 0);
}

Blocks copied_values(const ColumnPtr& column) {
  Blocks blocks;
  add_values(blocks, column, width_of(*column->type()));
  add_validity(blocks, column);
  return blocks;
}

Blocks copied_bits(const ColumnPtr& column) {
  Blocks blocks;
  add_bits(blocks, column, 1);
  add_validity(blocks, column);
  return blocks;
}

Blocks slab_of_bytes(const ColumnPtr& column) {
  Blocks blocks;
  auto* places = reinterpret_cast<std::uint8_t**>(add_block(blocks, column->length() * 8));
  for (const ArrayPtr& chunk : column->chunks()) {
    switch (column->type()->id()) {
      case ::arrow::Type::BINARY:
        places = add_slab<::arrow::BinaryArray>(blocks, *chunk, places);
        break;
      case ::arrow::Type::LARGE_BINARY:
        places = add_slab<::arrow::LargeBinaryArray>(blocks, *chunk, places);
        break;
      default:
        places = add_slab<::arrow::FixedSizeBinaryArray>(blocks, *chunk, places);
    }
  }
  add_validity(blocks, column);
  return blocks;
}

Blocks copied_codes(const ColumnPtr& column) {
  if (column->num_chunks() == 1) return unmerged_codes(column);
  const auto& type = static_cast<const ::arrow::DictionaryType&>(*column->type());
  const auto unifier = ::arrow::DictionaryUnifier::Make(type.value_type()).ValueOrDie();
  std::vector<std::shared_ptr<::arrow::Buffer>> maps;
  for (const ArrayPtr& chunk : column->chunks()) {
    require(unifier->Unify(*dictionary_of(chunk), &maps.emplace_back()));
  }
  Blocks blocks;
  add_validity(blocks, column);
  std::uint8_t* target = add_block(blocks, column->length());
  for (size_t i = 0; i < maps.size(); ++i) {
    const ::arrow::ArrayData& codes = *column->chunk(static_cast<int>(i))->data();
    transpose(codes, maps[i]->data_as<std::int32_t>(), codes.dictionary->length, target);
    target += codes.length;
  }
  return blocks;
}

Blocks leaves(const ColumnPtr& column) { return leaves_of(column, any_texts); }
Blocks ascii_leaves(const ColumnPtr& column) { return leaves_of(column, widened_texts); }

}  // namespace numera::benchmarks
