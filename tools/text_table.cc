#include "tools/text_table.h"

#include <arrow/util/utf8.h>

#include <algorithm>
#include <ostream>
#include <string_view>
#include <utility>

namespace numera::tools {
namespace {

unsigned to_number(char byte) { return static_cast<unsigned char>(byte); }

bool opens_character(char byte) { return (to_number(byte) & 0xC0U) != 0x80U; }

/// The number of code points: for names, close enough to the width on a terminal.
size_t width_of(const std::string& text) {
  return static_cast<size_t>(std::ranges::count_if(text, opens_character));
}

/// The length in bytes of the first character if a terminal displays it. 0 for a control character
/// (C1 included) and for invalid UTF-8.
size_t length_of_shown(std::string_view text) {
  const unsigned first = to_number(text.front());
  if (first < 0x80U) return first < 0x20U || first == 0x7FU ? 0 : 1;
  const size_t length = first < 0xE0U ? 2 : first < 0xF0U ? 3 : 4;
  const std::string_view character = text.substr(0, length);
  if (character.size() < length || !::arrow::util::ValidateUTF8(character)) return 0;
  const bool is_c1 = first == 0xC2U && to_number(character[1]) < 0xA0U;
  return is_c1 ? 0 : length;
}

}  // namespace

void TextTable::add(std::vector<std::string> cells) {
  for (std::string& cell : cells) cell = one_line(cell);
  rows_.push_back(std::move(cells));
}

void TextTable::print(std::ostream& out, bool colour) const {
  std::vector<size_t> widths(rows_.front().size(), 0);
  for (const auto& row : rows_) {
    for (size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], width_of(row[i]));
  }
  for (const auto& row : rows_) {
    std::string line;
    for (size_t i = 0; i < row.size(); ++i) {
      line += row[i] + std::string(widths[i] - width_of(row[i]) + 2, ' ');
    }
    line.erase(line.find_last_not_of(' ') + 1);
    const bool bold = colour && &row == &rows_.front();
    out << (bold ? "\x1b[1m" : "") << line << (bold ? "\x1b[0m" : "") << '\n';
  }
}

std::string one_line(std::string_view text) {
  ::arrow::util::InitializeUTF8();  // before this call every text counts as valid
  std::string line;
  while (!text.empty()) {
    const size_t length = length_of_shown(text);
    if (length == 0) {
      line += '?';
    } else {
      line += text.substr(0, length);
    }
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

std::string grouped(long long number) {
  std::string digits = std::to_string(number);
  const size_t first = number < 0 ? 1 : 0;
  for (size_t at = digits.size(); at > first + 3; at -= 3) digits.insert(at - 3, 1, ',');
  return digits;
}

}  // namespace numera::tools
