#pragma once

#include <arrow/filesystem/filesystem.h>
#include <arrow/result.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace numera::files {

/// The name of standard input and standard output.
inline constexpr const char* kStandardStream = "-";

/// What stands for null in the names of folders.
inline constexpr const char* kHiveNull = "__HIVE_DEFAULT_PARTITION__";

/// A column whose value stands in the name of a folder, such as "year=2013".
struct PartitionKey {
  std::string name;
  std::optional<std::string> value;  ///< none: null
};

/// A file to read.
struct Location {
  std::string name;                                 ///< as messages call it
  std::string path;                                 ///< in the file system
  std::shared_ptr<::arrow::fs::FileSystem> system;  ///< null: a local path or standard input
  std::vector<PartitionKey> keys = {};              ///< from the outer folder to the inner one
  bool is_named = true;                             ///< by the caller; false: found in a folder
};

/// The files that `paths` stand for, one path after the other. A path is a file, a folder, a
/// pattern, a URI of one of these, or "-". The files of a folder or a pattern are in the order of
/// their names. IOError for a path that does not exist and for a folder or pattern without files.
::arrow::Result<std::vector<Location>> find_files(const std::vector<std::string>& paths);

}  // namespace numera::files
