#pragma once

#include <arrow/status.h>

#include <iosfwd>
#include <string>
#include <vector>

#include "numera/files/read.h"

namespace numera::tools {

/// Prints one row per column: name, Arrow type, encoded type name, host class, rows, chunks, nulls.
::arrow::Status print_types(const std::vector<std::string>& paths,
                            const files::ReadOptions& options, std::ostream& out);

}  // namespace numera::tools
