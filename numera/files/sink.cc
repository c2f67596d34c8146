#include "numera/files/write.h"

#include <arrow/io/file.h>
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

#include "numera/files/encoder.h"

namespace numera::files {
namespace {

constexpr std::string_view kAddedToName = ".XXXXXX.part";
constexpr std::string_view kSuffix = ".part";

::arrow::Status last_error() {
  return ::arrow::Status::IOError(std::generic_category().message(errno));
}

/// The permissions of the file that is replaced, or the default of a new file.
mode_t mode_for(const std::string& path) {
  struct stat target = {};
  if (::stat(path.c_str(), &target) == 0) return target.st_mode & 0777U;
  const mode_t mask = ::umask(0);
  ::umask(mask);
  return 0666U & ~mask;
}

/// A name beside the target: the target's name, six random characters and ".part". If that is
/// longer than the system allows, the target's name is cut.
std::string pattern_of_part(const std::filesystem::path& target) {
  std::string name = target.filename();
  const size_t room = NAME_MAX - kAddedToName.size();
  if (name.size() > room) name.resize(room);
  return target.parent_path() / (name + std::string(kAddedToName));
}

/// The file that links lead to, whether it exists or not. Follows 40 links, as the system does.
std::string behind_links(const std::string& path) {
  std::filesystem::path target = path;
  std::error_code error;
  for (int i = 0; i < 40 && std::filesystem::is_symlink(target, error); ++i) {
    const std::filesystem::path next = std::filesystem::read_symlink(target, error);
    if (error) break;
    target = target.parent_path() / next;
  }
  return target;
}

class FileSink : public Sink {
 public:
  explicit FileSink(std::string path) : path_(std::move(path)), target_(behind_links(path_)) {}

  ~FileSink() override {
    encoder_ = {};
    if (!part_.empty()) std::remove(part_.c_str());
  }

  ::arrow::Status open(const WriteOptions& options) { return name_target(start(options)); }

  ::arrow::Status write(const std::shared_ptr<::arrow::RecordBatch>& batch) override {
    return name_target(encoder_.write(batch));
  }

  ::arrow::Status finish() override { return name_target(put_in_place()); }

 private:
  ::arrow::Status start(const WriteOptions& options) {
    ARROW_ASSIGN_OR_RAISE(const MakeEncoder make, find_encoder(path_));
    ARROW_RETURN_NOT_OK(check_target(options.inputs));
    ARROW_RETURN_NOT_OK(create_part());
    encoder_ = make(output_);
    return ::arrow::Status::OK();
  }

  ::arrow::Status check_target(const std::vector<std::string>& inputs) const {
    struct stat target = {};
    if (::stat(path_.c_str(), &target) != 0) {
      return errno == ENOENT ? ::arrow::Status::OK() : last_error();  // it is new
    }
    for (const std::string& input : inputs) {
      struct stat source = {};
      if (::stat(input.c_str(), &source) == 0 && source.st_dev == target.st_dev &&
          source.st_ino == target.st_ino) {
        return ::arrow::Status::Invalid("it is the input file");
      }
    }
    if (!S_ISREG(target.st_mode)) return ::arrow::Status::IOError("it is not a regular file");
    return ::access(path_.c_str(), W_OK) == 0 ? ::arrow::Status::OK() : last_error();
  }

  /// Creates the file beside the target, so that it can be renamed, under an unused name.
  ::arrow::Status create_part() {
    std::string name = pattern_of_part(target_);
    const int file = ::mkostemps(name.data(), static_cast<int>(kSuffix.size()), O_CLOEXEC);
    if (file < 0) return last_error();
    part_ = std::move(name);
    if (::fchmod(file, mode_for(path_)) != 0) {
      ::arrow::Status status = last_error();
      ::close(file);
      return status;
    }
    return ::arrow::io::FileOutputStream::Open(file).Value(&output_);
  }

  /// The data is on disk before the target's name leads to it.
  ::arrow::Status put_in_place() {
    ARROW_RETURN_NOT_OK(encoder_.close());
    if (::fsync(output_->file_descriptor()) != 0) return last_error();
    ARROW_RETURN_NOT_OK(output_->Close());
    if (std::rename(part_.c_str(), target_.c_str()) != 0) return last_error();
    part_.clear();
    return ::arrow::Status::OK();
  }

  ::arrow::Status name_target(const ::arrow::Status& status) const {
    if (status.ok()) return status;
    return status.WithMessage("cannot write ", path_, ": ", status.message());
  }

  std::string path_;
  std::string target_;  ///< `path_` with its links followed
  std::string part_;    ///< the unfinished file; empty if there is none
  std::shared_ptr<::arrow::io::FileOutputStream> output_;
  Encoder encoder_;
};

}  // namespace

Sink::~Sink() = default;

::arrow::Result<std::unique_ptr<Sink>> open_sink(const std::string& path,
                                                 const WriteOptions& options) {
  auto sink = std::make_unique<FileSink>(path);
  ARROW_RETURN_NOT_OK(sink->open(options));
  return sink;
}

}  // namespace numera::files
