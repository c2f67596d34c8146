#include "tools/cells.h"

#include <algorithm>
#include <ostream>

#include "tools/characters.h"
#include "tools/short_type.h"

namespace numera::tools {
namespace {

/// Types alone make a column no wider than this.
constexpr size_t kWidestType = 20;

}  // namespace

std::string styled(const Cell& cell, bool colour) {
  if (!colour || cell.style == Style::kPlain) return cell.text;
  return (cell.style == Style::kBold ? "\x1b[1m" : "\x1b[2m") + cell.text + "\x1b[0m";
}

void add_type(CellColumn& column, const ::arrow::DataType& type, size_t widest) {
  for (const Cell& cell : column.cells) column.width = std::max(column.width, width_of(cell.text));
  const size_t room = std::max(column.width, std::min(kWidestType, widest));
  column.cells[1] = {fitted(short_type(type), room), Style::kDim};
  column.width = std::max(column.width, width_of(column.cells[1].text));
}

void print_columns(const std::vector<CellColumn>& columns, bool colour, std::ostream& out) {
  if (columns.empty()) return;
  for (size_t row = 0; row < columns.front().cells.size(); ++row) {
    size_t blanks = 0;  // written before the next text, so that no line ends with blanks
    for (const CellColumn& column : columns) {
      const Cell& cell = column.cells[row];
      const size_t rest = column.width - width_of(cell.text);
      if (column.aligned_right) blanks += rest;
      if (!cell.text.empty()) {
        out << std::string(blanks, ' ') << styled(cell, colour);
        blanks = 0;
      }
      blanks += kGap + (column.aligned_right ? 0 : rest);
    }
    out << '\n';
  }
}

}  // namespace numera::tools
