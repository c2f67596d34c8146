#include "tools/output_format.h"

#include <unistd.h>

#include <algorithm>
#include <optional>
#include <string_view>

namespace numera::tools {
namespace {

using files::Format;

struct NamedFormat {
  std::string_view name;
  Format format;
  std::optional<char> delimiter = {};
};

constexpr NamedFormat kFormats[] = {{"parquet", Format::kParquet},  {"arrow", Format::kIpcFile},
                                    {"feather", Format::kIpcFile},  {"ipc", Format::kIpcFile},
                                    {"arrows", Format::kIpcStream}, {"csv", Format::kCsv, ','},
                                    {"tsv", Format::kCsv, '\t'},    {"json", Format::kJsonLines},
                                    {"jsonl", Format::kJsonLines},  {"ndjson", Format::kJsonLines}};

}  // namespace

std::vector<std::string> names_of_formats() {
  std::vector<std::string> names;
  for (const NamedFormat& named : kFormats) names.emplace_back(named.name);
  return names;
}

std::vector<std::string> names_of_compressions() {
  return {"none", "zstd", "lz4", "snappy", "gzip", "brotli", "bz2"};
}

void select_format(const std::string& name, files::WriteOptions& options) {
  const NamedFormat* named = std::ranges::find(kFormats, name, &NamedFormat::name);
  options.format = named->format;
  options.csv_delimiter = named->delimiter;
}

bool would_garble_terminal(const files::WriteOptions& options) {
  const bool is_text = options.format == Format::kCsv || options.format == Format::kJsonLines;
  const bool is_packed = !options.compression.empty() && options.compression != "none";
  return (!is_text || is_packed) && ::isatty(STDOUT_FILENO) == 1;
}

}  // namespace numera::tools
