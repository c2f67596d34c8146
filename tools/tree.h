#pragma once

#include <arrow/status.h>
#include <arrow/table.h>

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "numera/files/read.h"

namespace numera::tools {

struct TreeOptions {
  std::int64_t rows = 10;
  bool cast = false;  ///< cast types that have no host form
  bool json = false;  ///< a JSON object per column, with every value
};

/// Prints a table of at most `tree.rows` rows as an encoded host table.
::arrow::Status print_tree(const std::shared_ptr<::arrow::Table>& table, const TreeOptions& tree,
                           std::ostream& out);

/// Does so with the first rows of a file.
::arrow::Status print_tree(const std::vector<std::string>& paths, const files::ReadOptions& options,
                           const TreeOptions& tree, std::ostream& out);

}  // namespace numera::tools
