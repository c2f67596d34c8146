#pragma once

#include <arrow/status.h>

#include <iosfwd>
#include <string>
#include <vector>

#include "numera/files/read.h"

namespace numera::tools {

struct SummaryOptions {
  bool json = false;  ///< a JSON object per column
};

/// Prints what the values of each column are like: nulls, distinct values, the smallest and the
/// largest, mean, quantiles and a histogram. The lines of the table are the figures. Columns that
/// do not fit the width follow in further tables. Reads the whole file, batch by batch.
::arrow::Status print_summary(const std::vector<std::string>& paths,
                              const files::ReadOptions& options, const SummaryOptions& summary,
                              std::ostream& out);

}  // namespace numera::tools
