#include "tests/tools/small_disk.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/statvfs.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace numera::testing {
namespace {

constexpr const char* kFiller = "filler";

std::size_t page_size() { return static_cast<std::size_t>(::sysconf(_SC_PAGESIZE)); }

bool write_to(const char* path, const std::string& text) {
  const int file = ::open(path, O_WRONLY | O_CLOEXEC);
  if (file < 0) return false;
  const bool written = ::write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size());
  return ::close(file) == 0 && written;
}

/// Gives this process its own mounts. If it is not root, it becomes root in a user namespace.
bool leave_for_own_mounts() {
  const std::string user = "0 " + std::to_string(::geteuid()) + " 1";
  const std::string group = "0 " + std::to_string(::getegid()) + " 1";
  if (::unshare(CLONE_NEWNS) == 0) return true;
  return ::unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0 && write_to("/proc/self/setgroups", "deny") &&
         write_to("/proc/self/uid_map", user) && write_to("/proc/self/gid_map", group);
}

/// Returns 0 or the errno of the failure.
int mount_disk(const std::string& place, const std::string& options) {
  const bool mounted =
      leave_for_own_mounts() && ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
      ::mount("none", place.c_str(), "tmpfs", MS_NOSUID | MS_NODEV, options.c_str()) == 0;
  return mounted ? 0 : errno;
}

}  // namespace

SmallDisk::SmallDisk(std::size_t pages, std::size_t files) {
  const std::string place = place_.path("");
  std::string options = "mode=0777,size=" + std::to_string(pages * page_size());
  if (files > 0) options += ",nr_inodes=" + std::to_string(files + 1);  // plus the folder
  int told[2];
  int end[2];
  if (::pipe2(told, O_CLOEXEC) != 0 || ::pipe2(end, O_CLOEXEC) != 0) {
    throw std::system_error(errno, std::generic_category(), "pipe2");
  }
  keeper_ = ::fork();
  if (keeper_ == 0) {
    ::close(end[1]);
    const int error = mount_disk(place, options);
    char nothing = 0;
    const bool is_told = ::write(told[1], &error, sizeof error) == sizeof error;
    // Waits until the other end is closed.
    ::_exit(is_told && ::read(end[0], &nothing, 1) == 0 ? 0 : 1);
  }
  ::close(told[1]);
  ::close(end[0]);
  end_ = end[1];
  int error = EIO;
  if (::read(told[0], &error, sizeof error) != sizeof error) error = EIO;
  ::close(told[0]);
  folder_ = "/proc/" + std::to_string(keeper_) + "/root" + place;
  if (error == 0 && ::access(folder_.c_str(), W_OK) != 0) error = errno;
  if (error != 0) refusal_ = "no small disk: " + std::generic_category().message(error);
}

SmallDisk::~SmallDisk() {
  ::close(end_);
  ::waitpid(keeper_, nullptr, 0);
}

std::size_t SmallDisk::free_pages() const {
  struct statvfs found = {};
  if (::statvfs(folder_.c_str(), &found) != 0) {
    throw std::system_error(errno, std::generic_category(), folder_);
  }
  return found.f_bfree;
}

void SmallDisk::leave_free(std::size_t pages) const {
  write_text(path(kFiller), "");
  const std::size_t all = free_pages();
  write_text(path(kFiller), std::string((all - pages) * page_size(), 'x'));
}

}  // namespace numera::testing
