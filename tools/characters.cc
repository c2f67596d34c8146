#include "tools/characters.h"

#include <arrow/util/utf8.h>

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace numera::tools {
namespace {

struct Range {
  std::uint32_t first;
  std::uint32_t last;
};

/// The blocks of combining marks and of characters that take no cell, in order.
constexpr Range kWithoutWidth[] = {
    {0x300, 0x36F},     {0x483, 0x489},    {0x591, 0x5BD},   {0x610, 0x61A},   {0x64B, 0x65F},
    {0x1AB0, 0x1AFF},   {0x1DC0, 0x1DFF},  {0x200B, 0x200F}, {0x202A, 0x202E}, {0x2060, 0x206F},
    {0x20D0, 0x20FF},   {0x3099, 0x309A},  {0xFE00, 0xFE0F}, {0xFE20, 0xFE2F}, {0xFEFF, 0xFEFF},
    {0xE0000, 0xE007F}, {0xE0100, 0xE01EF}};

/// The blocks of characters that take two cells, in order.
constexpr Range kWide[] = {
    {0x1100, 0x115F},   {0x2E80, 0x303E},   {0x3041, 0xA4CF},  {0xA960, 0xA97F}, {0xAC00, 0xD7A3},
    {0xF900, 0xFAFF},   {0xFE30, 0xFE6F},   {0xFF00, 0xFF60},  {0xFFE0, 0xFFE6}, {0x1F300, 0x1F64F},
    {0x1F680, 0x1F6FF}, {0x1F900, 0x1FAFF}, {0x20000, 0x3FFFD}};

template <size_t size>
bool is_in(const Range (&ranges)[size], std::uint32_t code) {
  const Range* range = std::ranges::lower_bound(ranges, code, {}, &Range::last);
  return range != std::end(ranges) && range->first <= code;
}

unsigned to_number(char byte) { return static_cast<unsigned char>(byte); }

bool opens_character(char byte) { return (to_number(byte) & 0xC0U) != 0x80U; }

/// The length in bytes that the first byte of a character states.
size_t stated_length(char byte) {
  const unsigned first = to_number(byte);
  return first < 0x80U ? 1 : first < 0xE0U ? 2 : first < 0xF0U ? 3 : 4;
}

/// The length in bytes of the first character if a terminal displays it. 0 for a control character
/// (C1 included) and for invalid UTF-8.
size_t length_of_shown(std::string_view text) {
  const unsigned first = to_number(text.front());
  if (first < 0x80U) return first < 0x20U || first == 0x7FU ? 0 : 1;
  const size_t length = length_of_character(text);
  const bool is_c1 = length > 0 && first == 0xC2U && to_number(text[1]) < 0xA0U;
  return is_c1 ? 0 : length;
}

size_t width_of_character(std::string_view character) {
  if (character.size() == 1) return 1;
  std::uint32_t code = to_number(character.front()) & (0x7FU >> character.size());
  for (const char byte : character.substr(1)) code = code << 6U | (to_number(byte) & 0x3FU);
  return is_in(kWithoutWidth, code) ? 0 : is_in(kWide, code) ? 2 : 1;
}

}  // namespace

size_t length_of_character(std::string_view text) {
  if (to_number(text.front()) < 0x80U) return 1;
  ::arrow::util::InitializeUTF8();  // before this call every text counts as valid
  const size_t length = stated_length(text.front());
  const std::string_view character = text.substr(0, length);
  return character.size() == length && ::arrow::util::ValidateUTF8(character) ? length : 0;
}

std::string one_line(std::string_view text) { return fitted(text, kUnlimited); }

size_t width_of(std::string_view text) {
  size_t width = 0;
  while (!text.empty()) {
    const std::string_view character = text.substr(0, stated_length(text.front()));
    width += width_of_character(character);
    text.remove_prefix(character.size());
  }
  return width;
}

std::string fitted(std::string_view text, size_t width) {
  std::string line;
  size_t used = 0;
  size_t room_for_mark = 0;  // the bytes of `line` that leave one cell for "…"
  while (!text.empty()) {
    const size_t length = length_of_shown(text);
    const std::string_view shown = length == 0 ? "?" : text.substr(0, length);
    used += width_of_character(shown);
    if (used > width) return line.substr(0, room_for_mark) + "…";
    line += shown;
    if (used < width) room_for_mark = line.size();
    text.remove_prefix(std::max<size_t>(length, 1));
  }
  return line;
}

std::string shortened(const std::string& line) {
  size_t head = 400;
  size_t tail = 200;
  if (line.size() <= head + tail) return line;
  while (!opens_character(line[head])) --head;
  while (!opens_character(line[line.size() - tail])) --tail;
  return line.substr(0, head) + " ... " + line.substr(line.size() - tail);
}

}  // namespace numera::tools
