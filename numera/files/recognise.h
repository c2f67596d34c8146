#pragma once

#include <arrow/result.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "numera/files/formats.h"

namespace numera::files {

/// How the table in a file is opened.
struct Recognised {
  std::function<::arrow::Result<Stream>(const ReadOptions&)> open;
  bool reads_forwards;  ///< so that a pipe can be read
};

/// The first bytes tell the format. `size` is that of the file; a pipe has none. With an
/// `encoding`, text is CSV in that. Invalid for a format that is not read; the message names it.
::arrow::Result<Recognised> recognise(const File& file, std::optional<std::int64_t> size,
                                      const std::string& encoding);

}  // namespace numera::files
