#pragma once

#include <arrow/io/interfaces.h>
#include <arrow/result.h>
#include <arrow/util/compression.h>

#include <memory>
#include <string_view>

namespace numera::files {

/// A format of compressed files.
struct Compression {
  std::string_view magic;  ///< the first bytes of a file
  const char* name;
  ::arrow::Compression::type codec;
};

/// The format of a file that starts with these bytes, or null if it is not compressed.
const Compression* find_compression(std::string_view start);

/// The decompressed bytes. Compressed files may follow one another. Reading fails where the
/// compressed bytes are damaged, end too early, or are followed by anything else. Invalid if this
/// build of Arrow lacks the codec.
::arrow::Result<std::shared_ptr<::arrow::io::InputStream>> decompress(
    const Compression& format, const std::shared_ptr<::arrow::io::InputStream>& compressed);

}  // namespace numera::files
