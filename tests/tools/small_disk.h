#pragma once

/// \file
/// A disk that is soon full.

#include <sys/types.h>

#include <cstddef>
#include <string>
#include <vector>

#include "tests/tools/written_files.h"

namespace numera::testing {

/// A file system of few pages in memory. It is mounted in a namespace of its own, of a process that
/// does nothing else and through which all others reach it, so it needs no rights and goes with it.
class SmallDisk {
 public:
  /// `files`: how many it may hold; 0: any number.
  explicit SmallDisk(std::size_t pages, std::size_t files = 0);
  ~SmallDisk();
  SmallDisk(const SmallDisk&) = delete;
  SmallDisk& operator=(const SmallDisk&) = delete;

  /// Why the system gives none; empty where it is there.
  const std::string& refusal() const { return refusal_; }

  std::string path(const std::string& name) const { return folder_ + "/" + name; }
  std::vector<std::string> names() const { return names_in(folder_); }
  std::size_t free_pages() const;
  /// Fills it with a file, but for so many pages. The file replaces the one that did so before.
  void leave_free(std::size_t pages) const;

 private:
  TemporaryFolder place_;
  std::string folder_;
  std::string refusal_;
  pid_t keeper_ = 0;
  int end_ = -1;  ///< closed: the keeper ends
};

}  // namespace numera::testing
