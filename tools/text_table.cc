#include "tools/text_table.h"

#include <algorithm>
#include <ostream>
#include <utility>

namespace numera::tools {
namespace {

/// Code points of a UTF-8 text: its width on a terminal, near enough for names.
size_t width_of(const std::string& text) {
  return static_cast<size_t>(std::ranges::count_if(
      text, [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U; }));
}

bool is_control(char byte) { return static_cast<unsigned char>(byte) < 0x20U || byte == 0x7F; }

}  // namespace

void TextTable::add(std::vector<std::string> cells) {
  for (std::string& cell : cells) cell = one_line(std::move(cell));
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

std::string one_line(std::string text) {
  std::ranges::replace_if(text, is_control, '?');
  return text;
}

std::string grouped(long long number) {
  std::string digits = std::to_string(number);
  const size_t first = number < 0 ? 1 : 0;
  for (size_t at = digits.size(); at > first + 3; at -= 3) digits.insert(at - 3, 1, ',');
  return digits;
}

}  // namespace numera::tools
