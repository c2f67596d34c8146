#include "tools/text_table.h"

#include <algorithm>
#include <ostream>
#include <utility>

#include "tools/characters.h"

namespace numera::tools {

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

std::string grouped(long long number) {
  std::string digits = std::to_string(number);
  const size_t first = number < 0 ? 1 : 0;
  for (size_t at = digits.size(); at > first + 3; at -= 3) digits.insert(at - 3, 1, ',');
  return digits;
}

}  // namespace numera::tools
