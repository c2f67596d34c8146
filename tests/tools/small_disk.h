#pragma once

/// \file
/// A disk that fills up quickly.

#include <sys/types.h>

#include <cstddef>
#include <string>
#include <vector>

#include "tests/tools/written_files.h"

namespace numera::testing {

/// A file system of a few pages in memory. A helper process mounts it in a mount namespace of its
/// own and does nothing else. Other processes reach it through the helper. So it needs no
/// privileges and disappears with the helper.
class SmallDisk {
 public:
  /// `files`: the number of files that it can hold; 0: no limit.
  explicit SmallDisk(std::size_t pages, std::size_t files = 0);
  ~SmallDisk();
  SmallDisk(const SmallDisk&) = delete;
  SmallDisk& operator=(const SmallDisk&) = delete;

  /// Why the system provides no disk; empty if there is one.
  const std::string& refusal() const { return refusal_; }

  std::string path(const std::string& name) const { return folder_ + "/" + name; }
  std::vector<std::string> names() const { return names_in(folder_); }
  std::size_t free_pages() const;
  /// Fills the disk with one file and leaves `pages` pages free. The file replaces the previous
  /// one.
  void leave_free(std::size_t pages) const;

 private:
  TemporaryFolder place_;
  std::string folder_;
  std::string refusal_;
  pid_t keeper_ = 0;
  int end_ = -1;  ///< closing it ends the helper process
};

}  // namespace numera::testing
