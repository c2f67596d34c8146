#include "numera/files/part_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

#include "numera/files/last_error.h"
#include "numera/files/locations.h"

namespace numera::files {
namespace {

/// Six random characters and ".part".
constexpr std::string_view kAddedToName = ".XXXXXX.part";
constexpr std::string_view kSuffix = ".part";

/// The permissions of the file that is replaced, or the default of a new file.
mode_t mode_for(const std::string& path) {
  struct stat target = {};
  if (::stat(path.c_str(), &target) == 0) return target.st_mode & 0777U;
  return allowed_mode(0666);
}

::arrow::Status check_is_none_of(const struct stat& target,
                                 const std::vector<std::string>& inputs) {
  // What cannot be found was not read either.
  const auto files = find_files(inputs).ValueOr({});
  for (const Location& input : files) {
    struct stat source = {};
    if (::stat(input.path.c_str(), &source) == 0 && source.st_dev == target.st_dev &&
        source.st_ino == target.st_ino) {
      return ::arrow::Status::Invalid("it is the input file");
    }
  }
  return ::arrow::Status::OK();
}

::arrow::Status check_target(const std::string& path, const std::vector<std::string>& inputs) {
  struct stat target = {};
  if (::stat(path.c_str(), &target) != 0) {
    return errno == ENOENT ? ::arrow::Status::OK() : last_error();  // it is new
  }
  ARROW_RETURN_NOT_OK(check_is_none_of(target, inputs));
  if (!S_ISREG(target.st_mode)) return ::arrow::Status::IOError("it is not a regular file");
  return ::access(path.c_str(), W_OK) == 0 ? ::arrow::Status::OK() : last_error();
}

}  // namespace

PartFile::~PartFile() {
  if (descriptor_ >= 0) ::close(descriptor_);
  if (!part_.empty()) std::remove(part_.c_str());
}

::arrow::Status PartFile::open(const std::string& path, const std::vector<std::string>& inputs) {
  ARROW_RETURN_NOT_OK(check_target(path, inputs));
  target_ = behind_links(path);
  return create(path);
}

/// Beside the target, so that it can be renamed, under an unused name.
::arrow::Status PartFile::create(const std::string& path) {
  std::string name = hidden_name_beside(target_, kAddedToName);
  descriptor_ = ::mkostemps(name.data(), static_cast<int>(kSuffix.size()), O_CLOEXEC);
  if (descriptor_ < 0) return last_error();
  part_ = std::move(name);
  return ::fchmod(descriptor_, mode_for(path)) == 0 ? ::arrow::Status::OK() : last_error();
}

::arrow::Status PartFile::put_in_place() {
  if (::fsync(descriptor_) != 0) return last_error();
  if (::close(std::exchange(descriptor_, -1)) != 0) return last_error();
  if (std::rename(part_.c_str(), target_.c_str()) != 0) return last_error();
  part_.clear();
  return ::arrow::Status::OK();
}

std::string behind_links(const std::string& path) {
  std::filesystem::path target = path;
  std::error_code error;
  // The system follows no more than 40.
  for (int i = 0; i < 40 && std::filesystem::is_symlink(target, error); ++i) {
    const std::filesystem::path next = std::filesystem::read_symlink(target, error);
    if (error) break;
    target = target.parent_path() / next;
  }
  return target;
}

std::string hidden_name_beside(const std::string& target, std::string_view added) {
  const std::filesystem::path path = target;
  std::string name = "." + path.filename().string();
  const size_t room = NAME_MAX - added.size();
  if (name.size() > room) name.resize(room);
  return path.parent_path() / name.append(added);
}

mode_t allowed_mode(mode_t mode) {
  const mode_t mask = ::umask(0);
  ::umask(mask);
  return mode & ~mask;
}

::arrow::Status check_is_no_input(int descriptor, const std::vector<std::string>& inputs) {
  struct stat target = {};
  return ::fstat(descriptor, &target) == 0 ? check_is_none_of(target, inputs) : last_error();
}

}  // namespace numera::files
