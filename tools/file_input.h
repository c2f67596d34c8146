#pragma once

#include <arrow/result.h>
#include <arrow/table.h>

#include <memory>
#include <string>

namespace numera::tools {

/// Reads a whole Parquet or Arrow IPC file, told apart by their first bytes, and validates what it
/// gives in full. A status says in one line why a file cannot be read.
::arrow::Result<std::shared_ptr<::arrow::Table>> read_table(const std::string& path);

}  // namespace numera::tools
