#pragma once

#include <arrow/status.h>

#include <cstddef>
#include <iosfwd>
#include <string>
#include <vector>

#include "numera/files/read.h"
#include "numera/files/write.h"

namespace numera::tools {

struct ConvertOptions {
  std::vector<std::string> paths;  ///< of files, folders, patterns and URIs
  files::ReadOptions source;
  bool cast = false;    ///< cast types that have no host form
  size_t threads = 1;   ///< threads that convert and write columns; 0: one per processor
  bool check = true;    ///< compare what comes back with the input
  bool strict = false;  ///< a change of type is a failure
  bool json = false;    ///< a JSON object per column, then one of the ways
  bool show = false;    ///< print the first rows as host values, too
  std::string output;   ///< file for the returned columns; "-": standard output; empty: none
  files::WriteOptions encoding;   ///< how they are written
  bool skip_unsupported = false;  ///< leave out columns whose type has no host form
};

/// Converts a file to the host and back, batch by batch. Prints one row per column, then bytes and
/// seconds per direction, and with `show` the first rows. The output file appears after all
/// printing. Returns Invalid if a column cannot be converted or comes back different; then no
/// output file is written. An interrupt passes through as the host's exception and leaves no output
/// file either. Standard output gets the columns as they come, so a failure leaves them cut.
///
/// With `skip_unsupported`, a column whose type is refused is left out, and a last line says why.
/// The type decides before the first batch. A column that is refused for its values is a failure,
/// and so is a table of which no column is left.
::arrow::Status convert(const ConvertOptions& options, std::ostream& out);

}  // namespace numera::tools
