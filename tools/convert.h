#pragma once

#include <arrow/status.h>

#include <cstddef>
#include <iosfwd>
#include <string>

#include "tools/source.h"

namespace numera::tools {

struct ConvertOptions {
  std::string file;
  SourceOptions source;
  bool cast = false;    ///< cast what has no host form
  size_t threads = 1;   ///< that convert to the host; 0: one a processor
  bool strict = false;  ///< a change of type is a failure
  bool show = false;    ///< print the first rows as the host values that they become, too
  std::string output;   ///< where the way back is written; empty: nowhere
};

/// Takes a file to the host and back, batch by batch, and prints a row a column and what it took,
/// and the first rows where they are asked for; the output appears behind all that.
/// Invalid where a column cannot go or return, or returns otherwise than it went; then no output is
/// written. An interrupt passes through as the host's exception, and leaves no output either.
::arrow::Status convert(const ConvertOptions& options, std::ostream& out);

}  // namespace numera::tools
