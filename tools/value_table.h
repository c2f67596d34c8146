#pragma once

#include <arrow/record_batch.h>

#include <cstddef>
#include <iosfwd>

#include "tools/characters.h"

namespace numera::tools {

/// How values are laid out.
struct Layout {
  size_t width = kUnlimited;  ///< of a line
  bool colour = false;        ///< headings are bold, types and nulls are dim
};

/// The width to which a table cuts names and values.
inline constexpr size_t kWidestCell = 40;

/// Prints the rows of batches as a table: names of columns, short types, then a line per row.
/// Columns that do not fit are left out at the right and named in a last line.
void print_table(const ::arrow::Schema& schema, const ::arrow::RecordBatchVector& batches,
                 const Layout& layout, std::ostream& out);

/// Prints each row as a block of lines "column: value", with an empty line between two blocks.
/// Values are cut to the width of a line, and to 100,000 characters.
void print_blocks(const ::arrow::Schema& schema, const ::arrow::RecordBatchVector& batches,
                  const Layout& layout, std::ostream& out);

}  // namespace numera::tools
