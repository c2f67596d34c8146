#pragma once

#include <arrow/status.h>

#include <cstddef>
#include <iosfwd>
#include <string>

#include "numera/files/read.h"

namespace numera::tools {

struct ConvertOptions {
  std::string file;
  files::ReadOptions source;
  bool cast = false;    ///< cast types that have no host form
  size_t threads = 1;   ///< threads that convert columns; 0: one per processor
  bool check = true;    ///< compare what comes back with the input
  bool strict = false;  ///< a change of type is a failure
  bool json = false;    ///< a JSON object per column, then one of the ways
  bool show = false;    ///< print the first rows as host values, too
  std::string output;   ///< file for the returned columns; empty: none
};

/// Converts a file to the host and back, batch by batch. Prints one row per column, then bytes and
/// seconds per direction, and with `show` the first rows. The output file appears after all
/// printing. Returns Invalid if a column cannot be converted or comes back different; then no
/// output is written. An interrupt passes through as the host's exception and leaves no output
/// either.
::arrow::Status convert(const ConvertOptions& options, std::ostream& out);

}  // namespace numera::tools
