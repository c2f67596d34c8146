#pragma once

#include <arrow/result.h>
#include <arrow/util/compression.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "numera/files/write.h"

namespace numera::files {

/// A format with all its settings.
struct Encoding {
  Format format = Format::kParquet;
  ::arrow::Compression::type codec = ::arrow::Compression::UNCOMPRESSED;
  int level = ::arrow::util::kUseDefaultCompressionLevel;
  char delimiter = ',';      ///< of CSV
  bool use_threads = false;  ///< for the columns of Parquet
  /// The size of the row groups of Parquet. Each is held in memory.
  std::int64_t group_bytes = std::int64_t{16} * 1024 * 1024;
};

/// The encoding for a path and its options; "-" says nothing about the format, and a folder of
/// partitions is of Parquet unless its name says something else. Invalid if neither
/// says the format, if the format does not have the compression asked for, or if the delimiter
/// could stand in a number or a time.
::arrow::Result<Encoding> choose_encoding(std::string_view path, const WriteOptions& options);

/// The usual end of the name of such a file, such as ".csv.gz".
std::string ending_of(const Encoding& encoding);

}  // namespace numera::files
