// The limits of texts, in both directions.

#include <arrow/array/array_binary.h>

#include <cstdint>
#include <string_view>

#include "benchmarks/limits.h"
#include "numera/host/memory/utf_transcode.h"

namespace numera::benchmarks {
namespace {

namespace memory = numera::host::memory;

/// The bytes of all texts of a chunk, back to back.
template <class Texts>
std::string_view bytes_of_texts(const Texts& texts) {
  return {reinterpret_cast<const char*>(texts.raw_data()) + texts.value_offset(0),
          static_cast<size_t>(texts.total_values_length())};
}

/// `convert` writes the code units of one chunk of texts and returns their number.
template <class Texts, class Convert>
Blocks add_texts(const ColumnPtr& column, Convert convert) {
  Blocks blocks;
  std::int64_t bytes = 0;
  for (const auto& chunk : column->chunks()) {
    bytes += static_cast<const Texts&>(*chunk).total_values_length();
  }
  auto* units = reinterpret_cast<char16_t*>(add_block(blocks, bytes * 2));
  auto* ends = reinterpret_cast<std::int64_t*>(add_block(blocks, (column->length() + 1) * 8));
  for (const auto& chunk : column->chunks()) {
    const auto& texts = static_cast<const Texts&>(*chunk);
    units += convert(bytes_of_texts(texts), units);
    const auto* const offsets = texts.raw_value_offsets();
    for (std::int64_t i = 0; i < texts.length(); ++i) *ends++ = offsets[i + 1];
  }
  *ends = bytes;
  add_validity(blocks, column);
  return blocks;
}

size_t widen(std::string_view bytes, char16_t* units) {
  for (size_t i = 0; i < bytes.size(); ++i) units[i] = static_cast<unsigned char>(bytes[i]);
  return bytes.size();
}

size_t transcode(std::string_view bytes, char16_t* units) {
  return memory::utf8_to_utf16(bytes, {units, bytes.size()}).written;
}

size_t widen_or_transcode(std::string_view bytes, char16_t* units) {
  char bits = 0;
  for (const char byte : bytes) bits = static_cast<char>(bits | byte);
  return static_cast<signed char>(bits) < 0 ? transcode(bytes, units) : widen(bytes, units);
}

void add_offsets(Blocks& blocks, std::int64_t texts, size_t bytes) {
  auto* const offsets = reinterpret_cast<std::uint64_t*>(add_block(blocks, (texts + 1) * 8));
  const size_t width = texts == 0 ? 0 : bytes / static_cast<size_t>(texts);
  for (size_t i = 0; i <= static_cast<size_t>(texts); ++i) offsets[i] = i * width;
}

}  // namespace

Blocks widened_texts(const ColumnPtr& column) {
  return add_texts<::arrow::StringArray>(column, widen);
}

Blocks transcoded_texts(const ColumnPtr& column) {
  return add_texts<::arrow::StringArray>(column, transcode);
}

Blocks any_texts(const ColumnPtr& column) {
  return column->type()->id() == ::arrow::Type::STRING
             ? add_texts<::arrow::StringArray>(column, widen_or_transcode)
             : add_texts<::arrow::LargeStringArray>(column, widen_or_transcode);
}

Blocks narrowed_units(std::u16string_view units, std::int64_t texts) {
  Blocks blocks;
  std::uint8_t* const bytes = add_block(blocks, static_cast<std::int64_t>(units.size()) + 1);
  for (size_t i = 0; i < units.size(); ++i) bytes[i] = static_cast<std::uint8_t>(units[i]);
  bytes[units.size()] = 0;
  add_offsets(blocks, texts, units.size());
  return blocks;
}

Blocks encoded_units(std::u16string_view units, std::int64_t texts) {
  Blocks blocks;
  std::uint8_t* const bytes = add_block(blocks, static_cast<std::int64_t>(units.size()) * 3 + 1);
  const auto done =
      memory::utf16_to_utf8(units, {reinterpret_cast<char*>(bytes), units.size() * 3});
  bytes[done.written] = 0;
  add_offsets(blocks, texts, done.written);
  return blocks;
}

}  // namespace numera::benchmarks
