#pragma once

#include <arrow/status.h>

#include <cstdint>
#include <iosfwd>
#include <string>

#include "numera/files/read.h"

namespace numera::tools {

/// Prints one row per column: name, Arrow type, encoded type name, host class, rows, chunks, nulls.
::arrow::Status print_types(const std::string& file, const files::ReadOptions& options,
                            std::ostream& out);

struct ShowOptions {
  std::int64_t rows = 10;
  bool cast = false;  ///< cast types that have no host form
};

/// Prints the first rows of a file as an encoded host table.
::arrow::Status print_values(const std::string& file, const files::ReadOptions& options,
                             const ShowOptions& show, std::ostream& out);

}  // namespace numera::tools
