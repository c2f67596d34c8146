#pragma once

#include <arrow/status.h>

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

#include "numera/files/read.h"

namespace numera::tools {

enum class Part { kFirst, kLast };

struct RowsOptions {
  Part part = Part::kFirst;
  std::int64_t rows = 10;
  bool json = false;      ///< a JSON object per row and line
  bool vertical = false;  ///< a block of lines per row instead of a table
  bool count = false;     ///< a last line says how many rows the file has, if that is known
};

/// Prints the first or the last rows of a file as people read them, fitted to the terminal. Memory
/// holds the batches that the rows lie in.
::arrow::Status print_rows(const std::vector<std::string>& paths, const files::ReadOptions& options,
                           const RowsOptions& rows, std::ostream& out);

}  // namespace numera::tools
