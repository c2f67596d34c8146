#pragma once

#include <arrow/result.h>

#include <cstdint>
#include <functional>
#include <optional>

#include "numera/files/formats.h"

namespace numera::files {

/// How the table in a file is opened.
struct Recognised {
  std::function<::arrow::Result<Stream>(const ReadOptions&)> open;
  bool reads_forwards;  ///< so that a pipe can be read
};

/// The first bytes tell the format. `size` is that of the file; a pipe has none. Invalid for a
/// format that is not read; the message names it.
::arrow::Result<Recognised> recognise(const File& file, std::optional<std::int64_t> size);

}  // namespace numera::files
