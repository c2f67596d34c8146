#pragma once

#include <arrow/type.h>

#include <cstdint>
#include <string>

#include "tools/value_summary.h"

namespace numera::tools {

/// The summary of a column of so many rows as a JSON object. Figures that it does not have are
/// null.
std::string summary_json(const ::arrow::Field& column, std::int64_t rows, const Figures& figures);

}  // namespace numera::tools
