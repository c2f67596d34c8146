#include "numera/files/locations.h"

#include <arrow/filesystem/localfs.h>
#include <arrow/filesystem/path_util.h>
#include <arrow/util/config.h>
#include <arrow/util/uri.h>
#include <sys/stat.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <mutex>
#include <string_view>
#include <utility>

#include "numera/files/read.h"

namespace numera::files {
namespace {

namespace fs = ::arrow::fs;

constexpr std::string_view kWildcards = "*?";

struct Place {
  std::shared_ptr<fs::FileSystem> system;  ///< null: local
  std::string prefix;                      ///< of names in messages, such as "s3://"
  std::string path;
};

/// "s3" of "s3://bucket/rows.csv", or nothing for a path.
std::string_view scheme_of(std::string_view path) {
  const size_t end = path.find("://");
  if (end == std::string_view::npos) return {};
  const auto is_of_a_scheme = [](unsigned char letter) {
    return std::isalnum(letter) != 0 || letter == '+' || letter == '-' || letter == '.';
  };
  const std::string_view scheme = path.substr(0, end);
  return std::ranges::all_of(scheme, is_of_a_scheme) ? scheme : std::string_view();
}

/// In newer versions of Arrow, S3 is a library of its own, which Arrow loads if it is asked to.
void load_s3() {
  static std::once_flag once;
  std::call_once(once, [] {
    const auto loaded = fs::LoadFileSystemFactories("libarrow_s3.so." ARROW_SO_VERSION);
    (void)loaded;  // the scheme is unknown then, as the caller finds out
  });
}

::arrow::Result<Place> find_place(const std::string& path) {
  const std::string_view scheme = scheme_of(path);
  if (scheme.empty()) return Place{nullptr, "", path};
  if (scheme == "s3") load_s3();
  Place place;
  ARROW_ASSIGN_OR_RAISE(place.system, fs::FileSystemFromUri(path, &place.path));
  if (place.system->type_name() == "local") return Place{nullptr, "", place.path};
  place.prefix = std::string(scheme) + "://";
  return place;
}

std::shared_ptr<fs::FileSystem> system_of(const Place& place) {
  return place.system != nullptr ? place.system : std::make_shared<fs::LocalFileSystem>();
}

/// Whether a file or folder is there. A local pipe is.
::arrow::Result<fs::FileType> type_of(const Place& place) {
  if (place.system != nullptr) {
    ARROW_ASSIGN_OR_RAISE(const auto info, place.system->GetFileInfo(place.path));
    return info.type();
  }
  struct stat found = {};
  if (::stat(place.path.c_str(), &found) != 0) return fs::FileType::NotFound;
  return S_ISDIR(found.st_mode) ? fs::FileType::Directory : fs::FileType::File;
}

std::vector<std::string_view> segments_of(std::string_view path) {
  std::vector<std::string_view> segments;
  while (!path.empty()) {
    const size_t end = std::min(path.find('/'), path.size());
    if (end > 0) segments.push_back(path.substr(0, end));
    path.remove_prefix(std::min(end + 1, path.size()));
  }
  return segments;
}

/// The keys in the names of the folders above a file.
std::vector<PartitionKey> keys_in(std::string_view path) {
  std::vector<PartitionKey> keys;
  auto folders = segments_of(path);
  if (!folders.empty()) folders.pop_back();
  for (const std::string_view folder : folders) {
    const size_t mark = folder.find('=');
    if (mark == std::string_view::npos || mark == 0) continue;
    const std::string_view value = folder.substr(mark + 1);
    keys.push_back({::arrow::util::UriUnescape(folder.substr(0, mark)), {}});
    if (value != kHiveNull) keys.back().value = ::arrow::util::UriUnescape(value);
  }
  return keys;
}

/// Files of which others know, such as "_SUCCESS" and ".part".
bool is_hidden(std::string_view path) {
  const auto starts_hidden = [](std::string_view name) {
    return name.starts_with('.') || (name.starts_with('_') && name.find('=') == name.npos);
  };
  return std::ranges::any_of(segments_of(path), starts_hidden);
}

/// The entries below a folder, by name.
::arrow::Result<fs::FileInfoVector> entries_of(const Place& folder, std::int32_t levels) {
  fs::FileSelector selector;
  selector.base_dir = folder.path;
  selector.recursive = levels > 1;
  selector.max_recursion = levels - 1;
  ARROW_ASSIGN_OR_RAISE(auto entries, system_of(folder)->GetFileInfo(selector));
  std::ranges::sort(entries, {}, &fs::FileInfo::path);
  return entries;
}

std::string_view below(const Place& root, std::string_view path) {
  return path.substr(std::min(root.path.size(), path.size()));
}

Location location_of(const Place& root, const std::string& path, std::vector<PartitionKey> keys) {
  const size_t hidden = path.starts_with("./") ? 2 : 0;
  return {root.prefix + path.substr(hidden), path, root.system, std::move(keys), false};
}

/// Adds the files below `folder`, with the keys in their names behind `root`.
::arrow::Status add_folder(const Place& root, const Place& folder, std::vector<Location>& files) {
  constexpr std::int32_t kLevels = 64;  // links may lead in a circle
  ARROW_ASSIGN_OR_RAISE(const auto entries, entries_of(folder, kLevels));
  for (const fs::FileInfo& entry : entries) {
    if (!entry.IsFile() || is_hidden(below(folder, entry.path()))) continue;
    files.push_back(location_of(root, entry.path(), keys_in(below(root, entry.path()))));
  }
  return ::arrow::Status::OK();
}

/// Adds the files that the pattern matches, and those in the folders that it matches.
::arrow::Status add_matches(const Place& pattern, std::vector<Location>& files) {
  const size_t wildcard = pattern.path.find_first_of(kWildcards);
  const size_t slash = pattern.path.rfind('/', wildcard);
  const bool is_relative = slash == std::string::npos;
  Place root = pattern;
  root.path = is_relative ? "." : pattern.path.substr(0, std::max<size_t>(slash, 1));
  ARROW_ASSIGN_OR_RAISE(const auto type, type_of(root));
  if (type != fs::FileType::Directory) return ::arrow::Status::OK();
  const std::string_view rest = std::string_view(pattern.path).substr(is_relative ? 0 : slash + 1);
  const auto levels = static_cast<std::int32_t>(segments_of(rest).size());
  ARROW_ASSIGN_OR_RAISE(const auto entries, entries_of(root, levels));
  fs::internal::Globber globber("/" + std::string(rest));
  for (const fs::FileInfo& entry : entries) {
    const std::string path(below(root, entry.path()));
    if (!globber.Matches(path.starts_with('/') ? path : "/" + path) || is_hidden(path)) continue;
    const Place match = {root.system, root.prefix, entry.path()};
    if (entry.IsDirectory()) ARROW_RETURN_NOT_OK(add_folder(root, match, files));
    if (entry.IsFile()) files.push_back(location_of(root, entry.path(), keys_in(path)));
  }
  return ::arrow::Status::OK();
}

::arrow::Status add_path(const std::string& path, std::vector<Location>& files) {
  if (path == kStandardStream) {
    files.push_back({"standard input", path, nullptr});
    return ::arrow::Status::OK();
  }
  ARROW_ASSIGN_OR_RAISE(Place place, find_place(path));
  ARROW_ASSIGN_OR_RAISE(const fs::FileType type, type_of(place));
  const size_t before = files.size();
  if (type == fs::FileType::Directory) {
    while (place.path.size() > 1 && place.path.ends_with('/')) place.path.pop_back();
    ARROW_RETURN_NOT_OK(add_folder(place, place, files));
    if (files.size() == before) return ::arrow::Status::IOError("it is a folder without files");
  } else if (type == fs::FileType::NotFound &&
             place.path.find_first_of(kWildcards) != std::string::npos) {
    ARROW_RETURN_NOT_OK(add_matches(place, files));
    if (files.size() == before) return ::arrow::Status::IOError("no file matches it");
  } else {
    files.push_back({path_without_user(path), place.path, place.system});
  }
  return ::arrow::Status::OK();
}

}  // namespace

std::string path_without_user(const std::string& path) {
  const std::string_view scheme = scheme_of(path);
  if (scheme.empty()) return path;
  const size_t start = scheme.size() + 3;
  const size_t at = path.rfind('@', path.find('/', start));
  return at == std::string::npos || at < start ? path : path.substr(0, start) + path.substr(at + 1);
}

::arrow::Result<std::vector<Location>> find_files(const std::vector<std::string>& paths) {
  std::vector<Location> files;
  for (const std::string& path : paths) {
    const ::arrow::Status status = add_path(path, files);
    if (status.ok()) continue;
    return paths.size() == 1 ? status
                             : status.WithMessage(path_without_user(path), ": ", status.message());
  }
  if (files.empty()) return ::arrow::Status::Invalid("no file is named");
  return files;
}

}  // namespace numera::files
