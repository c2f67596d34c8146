#include "numera/files/encoding.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

namespace numera::files {
namespace {

using Codec = ::arrow::Compression::type;

struct Ending {
  std::string_view text;
  Format format;
  char delimiter = ',';
};

/// An end that stands behind the end of a text file.
struct PackedEnding {
  std::string_view text;
  std::string_view compression;
};

constexpr Ending kEndings[] = {{".parquet", Format::kParquet},  {".arrow", Format::kIpcFile},
                               {".feather", Format::kIpcFile},  {".ipc", Format::kIpcFile},
                               {".arrows", Format::kIpcStream}, {".csv", Format::kCsv},
                               {".tsv", Format::kCsv, '\t'},    {".json", Format::kJsonLines},
                               {".jsonl", Format::kJsonLines},  {".ndjson", Format::kJsonLines}};

constexpr PackedEnding kPackedEndings[] = {
    {".gz", "gzip"}, {".zst", "zstd"}, {".bz2", "bz2"}, {".lz4", "lz4"}};

constexpr std::optional<Codec> kNot = std::nullopt;

/// A compression, and the codec that each format has for it.
struct NamedCodec {
  std::string_view name;
  std::optional<Codec> parquet;
  std::optional<Codec> ipc;
  std::optional<Codec> text;
  int level = ::arrow::util::kUseDefaultCompressionLevel;  ///< if none is asked for
};

constexpr NamedCodec kCodecs[] = {
    {"none", Codec::UNCOMPRESSED, Codec::UNCOMPRESSED, Codec::UNCOMPRESSED},
    {"zstd", Codec::ZSTD, Codec::ZSTD, Codec::ZSTD, 1},
    {"lz4", Codec::LZ4, Codec::LZ4_FRAME, Codec::LZ4_FRAME},
    {"snappy", Codec::SNAPPY, kNot, kNot},
    {"gzip", Codec::GZIP, kNot, Codec::GZIP, 6},  // Arrow's default is the slowest
    {"brotli", Codec::BROTLI, kNot, kNot},
    {"bz2", kNot, kNot, Codec::BZ2}};

bool is_text(Format format) { return format == Format::kCsv || format == Format::kJsonLines; }

/// The codec, if the format has it and this build of Arrow, too.
std::optional<Codec> codec_for(const NamedCodec& named, Format format) {
  const auto codec = format == Format::kParquet ? named.parquet
                     : is_text(format)          ? named.text
                                                : named.ipc;
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
  const std::string digits(compression.substr(colon + 1));
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

/// The end of a compressed text file, or null.
const PackedEnding* find_packed(std::string_view path) {
  const auto* found = std::ranges::find_if(
      kPackedEndings, [path](const PackedEnding& ending) { return path.ends_with(ending.text); });
  return found == std::end(kPackedEndings) ? nullptr : found;
}

/// The end that names a format, or null. Only text may be compressed as a whole.
const Ending* find_ending(std::string_view path) {
  const PackedEnding* packed = find_packed(path);
  if (packed != nullptr) path.remove_suffix(packed->text.size());
  const auto* found = std::ranges::find_if(kEndings, [=](const Ending& ending) {
    return path.ends_with(ending.text) && (packed == nullptr || is_text(ending.format));
  });
  return found == std::end(kEndings) ? nullptr : found;
}

::arrow::Status refuse_path(std::string_view path) {
  if (path == "-") return ::arrow::Status::Invalid("its format is not given");
  std::string known;
  for (const Ending& ending : kEndings) {
    known += (known.empty() ? "" : ", ") + std::string(ending.text);
  }
  return ::arrow::Status::Invalid("the name ends in none of ", known);
}

std::string_view default_compression(std::string_view path, Format format) {
  if (format == Format::kParquet) return "zstd";
  const PackedEnding* packed = find_packed(path);
  return is_text(format) && packed != nullptr ? packed->compression : "none";
}

/// No part of a number, a time or a character may separate fields, and no quotation mark.
::arrow::Status check_delimiter(char delimiter) {
  constexpr std::string_view kDelimiters = "\t!#$%&'()*,/;<=>?@[\\]^_`{|}~";
  if (kDelimiters.find(delimiter) != std::string_view::npos) return ::arrow::Status::OK();
  return ::arrow::Status::Invalid("csv_delimiter: found character ",
                                  static_cast<unsigned>(static_cast<unsigned char>(delimiter)),
                                  ", expected tab or one of ", kDelimiters.substr(1));
}

}  // namespace

::arrow::Result<Encoding> choose_encoding(std::string_view path, const WriteOptions& options) {
  const Ending* ending = find_ending(path);
  if (ending == nullptr && !options.partition_by.empty()) ending = kEndings;
  if (ending == nullptr && !options.format) return refuse_path(path);
  Encoding encoding;
  encoding.format = options.format ? *options.format : ending->format;
  encoding.use_threads = options.use_threads;
  std::string_view compression = options.compression;
  if (compression.empty()) compression = default_compression(path, encoding.format);
  ARROW_RETURN_NOT_OK(choose_codec(compression, encoding));
  if (encoding.format == Format::kCsv) {
    const char usual = ending != nullptr ? ending->delimiter : ',';
    encoding.delimiter = options.csv_delimiter.value_or(usual);
    ARROW_RETURN_NOT_OK(check_delimiter(encoding.delimiter));
  }
  return encoding;
}

std::vector<std::string> format_names() {
  std::vector<std::string> names;
  for (const Ending& ending : kEndings) names.emplace_back(ending.text.substr(1));
  return names;
}

std::vector<std::string> compression_names() {
  std::vector<std::string> names;
  for (const NamedCodec& named : kCodecs) names.emplace_back(named.name);
  return names;
}

::arrow::Status select_format(const std::string& name, WriteOptions& options) {
  const auto* ending = std::ranges::find(kEndings, "." + name, &Ending::text);
  if (ending == std::end(kEndings)) {
    return ::arrow::Status::Invalid("there is no format '", name, "'");
  }
  options.format = ending->format;
  if (ending->format == Format::kCsv) options.csv_delimiter = ending->delimiter;
  return ::arrow::Status::OK();
}

std::string ending_of(const Encoding& encoding) {
  const auto* ending = std::ranges::find(kEndings, encoding.format, &Ending::format);
  std::string text(ending->text);
  if (!is_text(encoding.format)) return text;
  const auto* codec = std::ranges::find(kCodecs, encoding.codec, &NamedCodec::text);
  const auto* packed = std::ranges::find(kPackedEndings, codec->name, &PackedEnding::compression);
  if (packed != std::end(kPackedEndings)) text += packed->text;
  return text;
}

}  // namespace numera::files
