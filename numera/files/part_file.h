#pragma once

#include <arrow/status.h>
#include <sys/types.h>

#include <string>
#include <string_view>
#include <vector>

namespace numera::files {

/// A file that is written beside its target and renamed when it is complete. The destructor removes
/// it if it was not put in place.
class PartFile {
 public:
  PartFile() = default;
  ~PartFile();
  PartFile(const PartFile&) = delete;
  PartFile& operator=(const PartFile&) = delete;

  /// Creates it. Invalid if the target is one of `inputs`, IOError if it cannot be replaced.
  ::arrow::Status open(const std::string& path, const std::vector<std::string>& inputs);
  int descriptor() const { return descriptor_; }
  /// The data is on disk before the target's name leads to it.
  ::arrow::Status put_in_place();

 private:
  ::arrow::Status create(const std::string& path);

  std::string target_;  ///< the path with its links followed
  std::string part_;    ///< the unfinished file; empty if there is none
  int descriptor_ = -1;
};

/// The file or folder that links lead to, whether it exists or not.
std::string behind_links(const std::string& path);

/// The target's name with a dot before it and more behind it, so that nobody who reads the folder
/// takes it for data. If that is longer than the system allows, the target's name is cut.
std::string hidden_name_beside(const std::string& target, std::string_view added);

/// The permissions without those that this process gives to nobody.
mode_t allowed_mode(mode_t mode);

/// Invalid if the open file is one of `inputs`.
::arrow::Status check_is_no_input(int descriptor, const std::vector<std::string>& inputs);

}  // namespace numera::files
