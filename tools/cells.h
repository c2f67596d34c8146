#pragma once

#include <arrow/type.h>

#include <cstddef>
#include <iosfwd>
#include <string>
#include <vector>

namespace numera::tools {

enum class Style { kPlain, kBold, kDim };

struct Cell {
  std::string text;  ///< as `one_line` makes it
  Style style = Style::kPlain;
};

/// A column of a printed table.
struct CellColumn {
  std::vector<Cell> cells;
  size_t width = 0;  ///< no cell is wider
  bool aligned_right = false;
};

/// The blanks between two columns.
inline constexpr size_t kGap = 2;

/// The text, for a terminal in its style where `colour` is set.
std::string styled(const Cell& cell, bool colour);

/// Sets the width of a column and its second cell, which is the short name of its type. The type is
/// cut to the width of the other cells or to 20 characters if these are narrower, and to `widest`.
void add_type(CellColumn& column, const ::arrow::DataType& type, size_t widest);

/// Prints columns that have the same number of cells. No line ends with blanks.
void print_columns(const std::vector<CellColumn>& columns, bool colour, std::ostream& out);

}  // namespace numera::tools
