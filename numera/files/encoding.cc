#include "numera/files/encoding.h"

#include <charconv>
#include <optional>
#include <string>

namespace numera::files {
namespace {

using Codec = ::arrow::Compression::type;

struct Ending {
  std::string_view text;
  Format format;
};

constexpr Ending kEndings[] = {{".parquet", Format::kParquet},
                               {".arrow", Format::kIpcFile},
                               {".feather", Format::kIpcFile},
                               {".ipc", Format::kIpcFile},
                               {".arrows", Format::kIpcStream}};

constexpr std::optional<Codec> kNot = std::nullopt;

/// A compression, and the codec that each format has for it.
struct NamedCodec {
  std::string_view name;
  std::optional<Codec> parquet;
  std::optional<Codec> ipc;
  int level = ::arrow::util::kUseDefaultCompressionLevel;  ///< if none is asked for
};

constexpr NamedCodec kCodecs[] = {{"none", Codec::UNCOMPRESSED, Codec::UNCOMPRESSED},
                                  {"zstd", Codec::ZSTD, Codec::ZSTD, 1},
                                  {"lz4", Codec::LZ4, Codec::LZ4_FRAME},
                                  {"snappy", Codec::SNAPPY, kNot},
                                  {"gzip", Codec::GZIP, kNot, 6},  // Arrow's default is the slowest
                                  {"brotli", Codec::BROTLI, kNot}};

/// The codec, if the format has it and this build of Arrow, too.
std::optional<Codec> codec_for(const NamedCodec& named, Format format) {
  const auto codec = format == Format::kParquet ? named.parquet : named.ipc;
  return codec && ::arrow::util::Codec::IsAvailable(*codec) ? codec : kNot;
}

std::string names_for(Format format) {
  std::string names;
  for (const NamedCodec& named : kCodecs) {
    if (codec_for(named, format)) names += (names.empty() ? "" : ", ") + std::string(named.name);
  }
  return names;
}

template <class... Parts>
::arrow::Status refuse(std::string_view compression, const Parts&... expected) {
  return ::arrow::Status::Invalid("compression: found '", compression, "', expected ", expected...);
}

::arrow::Result<int> read_level(std::string_view compression, Codec codec) {
  const size_t colon = compression.find(':');
  if (!::arrow::util::Codec::SupportsCompressionLevel(codec)) {
    return refuse(compression, compression.substr(0, colon), ", which has no levels");
  }
  ARROW_ASSIGN_OR_RAISE(const int least, ::arrow::util::Codec::MinimumCompressionLevel(codec));
  ARROW_ASSIGN_OR_RAISE(const int most, ::arrow::util::Codec::MaximumCompressionLevel(codec));
  int level = 0;
  const std::string_view digits = compression.substr(colon + 1);
  const char* end = digits.data() + digits.size();
  const auto [stop, error] = std::from_chars(digits.data(), end, level);
  if (error == std::errc() && stop == end && level >= least && level <= most) return level;
  return refuse(compression, "a level from ", least, " to ", most);
}

::arrow::Status choose_codec(std::string_view compression, Encoding& encoding) {
  const size_t colon = compression.find(':');
  for (const NamedCodec& named : kCodecs) {
    const auto codec = codec_for(named, encoding.format);
    if (named.name != compression.substr(0, colon) || !codec) continue;
    encoding.codec = *codec;
    encoding.level = named.level;
    if (colon == std::string_view::npos) return ::arrow::Status::OK();
    return read_level(compression, *codec).Value(&encoding.level);
  }
  return refuse(compression, "one of ", names_for(encoding.format));
}

::arrow::Result<Format> choose_format(std::string_view path, const WriteOptions& options) {
  if (options.format) return *options.format;
  if (path == "-") return ::arrow::Status::Invalid("its format is not given");
  std::string known;
  for (const Ending& ending : kEndings) {
    if (path.ends_with(ending.text)) return ending.format;
    known += (known.empty() ? "" : ", ") + std::string(ending.text);
  }
  return ::arrow::Status::Invalid("the name ends in none of ", known);
}

}  // namespace

::arrow::Result<Encoding> choose_encoding(std::string_view path, const WriteOptions& options) {
  Encoding encoding;
  ARROW_ASSIGN_OR_RAISE(encoding.format, choose_format(path, options));
  std::string_view compression = options.compression;
  if (compression.empty()) compression = encoding.format == Format::kParquet ? "zstd" : "none";
  ARROW_RETURN_NOT_OK(choose_codec(compression, encoding));
  return encoding;
}

}  // namespace numera::files
