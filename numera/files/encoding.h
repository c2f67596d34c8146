#pragma once

#include <arrow/result.h>
#include <arrow/util/compression.h>

#include <string_view>

#include "numera/files/write.h"

namespace numera::files {

/// A format with all its settings.
struct Encoding {
  Format format = Format::kParquet;
  ::arrow::Compression::type codec = ::arrow::Compression::UNCOMPRESSED;
  int level = ::arrow::util::kUseDefaultCompressionLevel;
  char delimiter = ',';  ///< of CSV
};

/// The encoding for a path and its options; "-" says nothing about the format. Invalid if neither
/// says the format, if the format does not have the compression asked for, or if the delimiter
/// could stand in a number or a time.
::arrow::Result<Encoding> choose_encoding(std::string_view path, const WriteOptions& options);

}  // namespace numera::files
