#include "numera/extras/encode/text.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <limits>
#include <span>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "numera/format/records.h"
#include "numera/host/message_id_exception.h"
#include "numera/host/string_array.h"
#include "numera/unicode/convert_utf16_to_utf8.h"
#include "numera/unicode/exceptions.h"

namespace numera::extras::encoding {
namespace {

using UnrecognizedText =
    hxTaggedException<NUMERA::io::arrow::unicode::UnrecognizedUTF16Character, std::exception>;

bool is_column(const hxArray* value) {
  const std::span<const size_t> dims = hxGetDimensions(value);
  return dims.size() == 2 && dims[1] <= 1;
}

bool is_char_row(const hxArray* value) {
  if (hxGetClassID(value) != hxClassID::Char) return false;
  const std::span<const size_t> dims = hxGetDimensions(value);
  return dims.size() == 2 && dims[0] <= 1;
}

// `convertUTF16ToUTF8` accepts string arrays with at most one column.
hxArrayPtr as_string_column(const hxArray* value) {
  if (is_column(value)) return hxSharedCopy(value);
  const hxStringArray& strings = hxGetStringArray(value);
  auto column = hxMakeStringArray(std::array<size_t, 2>{strings.size(), 1});
  for (size_t i = 0; i < strings.size(); ++i) {
    if (const auto text = strings.element(i)) {
      column->set(i, *text);
    } else {
      column->set_missing(i);
    }
  }
  return hxCreateStringArrayFrom(std::move(column));
}

::arrow::Result<hxArrayPtr> as_cell_column(const Located& cells) {
  const size_t length = hxGetNumberOfElements(cells.value);
  for (size_t i = 0; i < length; ++i) {
    ARROW_ASSIGN_OR_RAISE(const Located text, cell(cells, i));
    if (!is_char_row(text.value)) return wrong_class(text, "a char row");
  }
  if (is_column(cells.value)) return hxSharedCopy(cells.value);
  hxArrayPtr column = format::make_cell(length, 1);
  for (size_t i = 0; i < length; ++i) {
    hxSetCell(column.get(), i, hxSharedCopy(hxGetCell(cells.value, i)));
  }
  return column;
}

// The texts as input of `convertUTF16ToUTF8`, which then rejects only text that is not UTF-16.
::arrow::Result<hxArrayPtr> gateway_input(const Located& texts) {
  if (hxIsStringArray(texts.value)) return as_string_column(texts.value);
  if (hxGetClassID(texts.value) == hxClassID::Cell) return as_cell_column(texts);
  ARROW_RETURN_NOT_OK(check_class(texts, hxClassID::Char, "text"));
  if (hxGetDimensions(texts.value).size() != 2) {
    return wrong_class(texts, "a char array of two dimensions");
  }
  return hxSharedCopy(texts.value);
}

::arrow::Status not_utf16(const Located& texts, const UnrecognizedText& error) {
  const std::span<const hxMessageArgument> arguments = error.arguments();
  std::string found = "text that is not UTF-16";
  if (arguments.size() == 2 && std::holds_alternative<std::uint64_t>(arguments[0]) &&
      std::holds_alternative<std::string>(arguments[1])) {
    found += " in element " + std::to_string(std::get<std::uint64_t>(arguments[0]) - 1) + " (" +
             std::get<std::string>(arguments[1]) + ")";
  }
  return invalid(texts, found, "paired surrogates");
}

hxArrayPtr bits_of_present(const hxStringArray& strings) {
  hxArrayPtr bits = nullptr;
  const size_t length = strings.size();
  for (size_t i = 0; i < length; ++i) {
    if (strings.element(i)) continue;
    if (bits == nullptr) {
      bits = format::make_column(hxClassID::UInt8, format::bitmap_bytes(length));
      std::memset(format::elements<std::uint8_t>(bits), 0xFF, format::bitmap_bytes(length));
    }
    std::uint8_t& byte = format::elements<std::uint8_t>(bits)[i / 8];
    byte = static_cast<std::uint8_t>(byte & ~(1U << (i % 8)));
  }
  return bits;
}

}  // namespace

::arrow::Result<ReadableValue> pack_texts(const Located& texts) {
  ARROW_ASSIGN_OR_RAISE(const hxArrayPtr input, gateway_input(texts));
  std::array<hxArrayPtr, 2> outputs;
  const hxArray* inputs = input.get();
  try {
    io::arrow::unicode::convertUTF16ToUTF8(2, outputs.data(), 1, &inputs);
  } catch (const UnrecognizedText& error) {
    return not_utf16(texts, error);
  }
  auto& [values, offsets] = outputs;
  ReadableValue readable{.type = format::kStringType, .data = nullptr};
  readable.length = hxGetNumberOfElements(offsets.get()) - 1;
  readable.data = format::make_record(format::kPacked, std::move(values), std::move(offsets));
  if (hxIsStringArray(input.get())) {
    readable.valid = bits_of_present(hxGetStringArray(input.get()));
  }
  return readable;
}

::arrow::Result<ReadableValue> pack_bytes(const Located& cells) {
  const size_t length = hxGetNumberOfElements(cells.value);
  hxArrayPtr offsets = format::make_column(hxClassID::UInt64, length + 1);
  auto* const ends = format::elements<std::uint64_t>(offsets);
  std::vector<const void*> blocks(length);
  ends[0] = 0;
  for (size_t i = 0; i < length; ++i) {
    ARROW_ASSIGN_OR_RAISE(const Located bytes, cell(cells, i));
    ARROW_RETURN_NOT_OK(check_numbers(bytes, hxClassID::UInt8, "a uint8 array"));
    const size_t size = hxGetNumberOfElements(bytes.value);
    // Cells can share one large array, so the sum of their sizes can exceed the memory.
    constexpr std::uint64_t kMaxBytes = std::numeric_limits<std::int64_t>::max();
    if (size > kMaxBytes - ends[i]) return invalid(cells, "2^63 bytes or more", "fewer");
    ends[i + 1] = ends[i] + size;
    blocks[i] = hxGetData(bytes.value);
  }
  hxArrayPtr values = format::make_column(hxClassID::UInt8, ends[length]);
  auto* const target = format::elements<std::uint8_t>(values);
  for (size_t i = 0; i < length; ++i) {
    const size_t size = ends[i + 1] - ends[i];
    if (size > 0) std::memcpy(target + ends[i], blocks[i], size);
  }
  return ReadableValue{
      .type = format::kBinaryType,
      .data = format::make_record(format::kPacked, std::move(values), std::move(offsets)),
      .length = length};
}

::arrow::Result<ReadableValue> packed_as_it_is(const Located& packed, const char* type) {
  ARROW_RETURN_NOT_OK(check_one_element(packed));
  ARROW_ASSIGN_OR_RAISE(const Located values, field(packed, 0, format::kValues));
  ARROW_RETURN_NOT_OK(check_numbers(values, hxClassID::UInt8, "a uint8 array"));
  ARROW_ASSIGN_OR_RAISE(const Located offsets, field(packed, 0, format::kStartOffsets));
  ARROW_RETURN_NOT_OK(check_numbers(offsets, hxClassID::UInt64, "a uint64 array"));
  const size_t ends = hxGetNumberOfElements(offsets.value);
  if (ends == 0) return invalid(offsets, "no elements", "one more than there are texts");
  return ReadableValue{
      .type = type, .data = hxSharedCopy(packed.value), .length = ends - 1, .is_valid = false};
}

}  // namespace numera::extras::encoding
