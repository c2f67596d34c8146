#include "numera/files/decompress.h"

#include <arrow/io/compressed.h>

namespace numera::files {
namespace {

constexpr Compression kCompressions[] = {
    {"\x1F\x8B", "gzip", ::arrow::Compression::GZIP},
    {"\x28\xB5\x2F\xFD", "zstd", ::arrow::Compression::ZSTD},
    {"\x04\x22\x4D\x18", "lz4", ::arrow::Compression::LZ4_FRAME},
};

/// Text could start with the letters of bzip2 alone. What follows them is the mark of the first
/// block, or the mark of the end.
constexpr Compression kBzip2 = {"BZh", "bzip2", ::arrow::Compression::BZ2};
constexpr std::string_view kBzip2Blocks[] = {"1AY&SY", "\x17\x72\x45\x38\x50\x90"};

bool is_bzip2(std::string_view start) {
  if (!start.starts_with(kBzip2.magic) || start.size() <= kBzip2.magic.size()) return false;
  const std::string_view block = start.substr(kBzip2.magic.size() + 1);
  return block.starts_with(kBzip2Blocks[0]) || block.starts_with(kBzip2Blocks[1]);
}

}  // namespace

const Compression* find_compression(std::string_view start) {
  for (const Compression& format : kCompressions) {
    if (start.starts_with(format.magic)) return &format;
  }
  return is_bzip2(start) ? &kBzip2 : nullptr;
}

::arrow::Result<std::shared_ptr<::arrow::io::InputStream>> decompress(
    const Compression& format, const std::shared_ptr<::arrow::io::InputStream>& compressed) {
  if (!::arrow::util::Codec::IsAvailable(format.codec)) {
    return ::arrow::Status::Invalid("it is ", format.name, ", which this build does not read");
  }
  ARROW_ASSIGN_OR_RAISE(const auto codec, ::arrow::util::Codec::Create(format.codec));
  return ::arrow::io::CompressedInputStream::Make(codec.get(), compressed);
}

}  // namespace numera::files
