#pragma once

#include <arrow/result.h>

#include <functional>

#include "numera/files/formats.h"

namespace numera::files {

using OpenTable = std::function<::arrow::Result<Stream>(const ReadOptions&)>;

/// How the table in a file is opened. The first bytes tell the format. Invalid for a format that is
/// not read; the message names it.
::arrow::Result<OpenTable> recognise(const File& file);

}  // namespace numera::files
