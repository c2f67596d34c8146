#pragma once

#include <arrow/result.h>

#include <string>

#include "numera/files/encoder.h"

namespace numera::files {

/// A file that is encoded beside its target. `close` puts it in place; without that, it is removed
/// with the encoder. "-" is standard output.
::arrow::Result<Encoder> open_encoded_file(const std::string& path, const Encoding& encoding,
                                           const WriteOptions& options);

/// A folder of such files, by the values of the columns that the options name. `close` puts the
/// whole folder in place.
::arrow::Result<Encoder> open_partitions(const std::string& path, const Encoding& encoding,
                                         const WriteOptions& options);

}  // namespace numera::files
