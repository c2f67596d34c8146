#pragma once

#include <arrow/status.h>
#include <arrow/table.h>

#include <memory>
#include <string>

#include "numera/files/read.h"
#include "tests/tools/written_files.h"

namespace numera::testing {

/// Reads a whole file. Expects that this succeeds.
std::shared_ptr<::arrow::Table> opened(const std::string& path,
                                       const files::ReadOptions& options = {});

/// The message with which the file is refused when it is opened or read. Expects that it is
/// refused.
std::string refusal_of(const std::string& path, const files::ReadOptions& options = {});

/// Expects equal tables, whatever their chunks. Prints both if they differ.
void expect_equal(const ::arrow::Table& found, const ::arrow::Table& expected);

}  // namespace numera::testing
