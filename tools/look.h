#pragma once

#include <arrow/status.h>

#include <iosfwd>
#include <string>
#include <vector>

#include "numera/files/read.h"

namespace numera::tools {

struct TypesOptions {
  bool count = false;  ///< reads the whole file to count rows, chunks and nulls
  bool json = false;   ///< a JSON object per column
};

/// Prints one row per column: name, Arrow type, encoded type name, host class, rows, chunks, nulls.
/// Unless they are counted, it prints the numbers that the file states, and "-" for others.
::arrow::Status print_types(const std::vector<std::string>& paths,
                            const files::ReadOptions& options, const TypesOptions& types,
                            std::ostream& out);

}  // namespace numera::tools
