#pragma once

#include <iosfwd>
#include <string>

namespace numera::tools {

struct ConvertOptions {
  std::string file;
  bool show = false;  ///< print the first values of each encoded column
};

/// Takes every column of a file to the host and back, and prints a row a column. The exit status:
/// 0 when the file was read and the result written, 1 otherwise; the reason goes to `errors` in one
/// line.
int convert(const ConvertOptions& options, std::ostream& out, std::ostream& errors);

}  // namespace numera::tools
