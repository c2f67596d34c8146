#include "numera/files/input.h"

#include <arrow/io/file.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <utility>

#include "numera/files/descriptor_output.h"
#include "numera/files/last_error.h"

namespace numera::files {
namespace {

using LocalFile = std::shared_ptr<::arrow::io::ReadableFile>;

::arrow::Result<FileVersion> version_of(const ::arrow::io::ReadableFile& file) {
  struct stat found = {};
  if (::fstat(file.file_descriptor(), &found) != 0) return last_error();
  return FileVersion{found.st_size, found.st_mtim.tv_sec, found.st_mtim.tv_nsec};
}

::arrow::Status has_changed() { return ::arrow::Status::IOError("it changed while it was read"); }

/// Takes the descriptor of a regular file.
::arrow::Result<Input> input_of_file(int descriptor, const ReadOptions& options) {
  if (descriptor < 0) return last_error();
  ARROW_ASSIGN_OR_RAISE(const LocalFile file,
                        ::arrow::io::ReadableFile::Open(descriptor, options.pool));
  ARROW_ASSIGN_OR_RAISE(const FileVersion opened, version_of(*file));
  return Input{std::make_shared<CountedFile>(file), opened.bytes,
               [file, opened]() -> ::arrow::Status {
                 ARROW_ASSIGN_OR_RAISE(const FileVersion now, version_of(*file));
                 return now == opened ? ::arrow::Status::OK() : has_changed();
               },
               opened};
}

::arrow::Result<Input> input_of_pipe(int descriptor, const ReadOptions& options) {
  if (descriptor < 0) return last_error();
  auto pipe = std::make_shared<Pipe>(descriptor, options.pool, options.while_waiting);
  return Input{std::make_shared<CountedFile>(pipe),
               std::nullopt,
               [] { return ::arrow::Status::OK(); },
               {},
               pipe};
}

int copy_of(int descriptor) { return ::fcntl(descriptor, F_DUPFD_CLOEXEC, 0); }

/// A file of which another program has read the start goes on behind that, like a pipe.
::arrow::Result<Input> open_standard_input(const ReadOptions& options) {
  struct stat found = {};
  if (::fstat(STDIN_FILENO, &found) != 0) return last_error();
  const bool is_at_start = ::lseek(STDIN_FILENO, 0, SEEK_CUR) == 0;
  const int descriptor = copy_of(STDIN_FILENO);
  return S_ISREG(found.st_mode) && is_at_start ? input_of_file(descriptor, options)
                                               : input_of_pipe(descriptor, options);
}

/// Checks before the file is opened, because devices may do anything when they are opened.
::arrow::Result<Input> open_local(const std::string& path, const ReadOptions& options) {
  struct stat found = {};
  if (::stat(path.c_str(), &found) != 0) return last_error();
  if (S_ISFIFO(found.st_mode)) {
    // Otherwise it would wait for a writer here.
    return input_of_pipe(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK), options);
  }
  if (!S_ISREG(found.st_mode)) {
    return ::arrow::Status::IOError("it is neither a regular file nor a pipe");
  }
  return input_of_file(::open(path.c_str(), O_RDONLY | O_CLOEXEC), options);
}

::arrow::Result<Input> open_remote(const Location& location) {
  ARROW_ASSIGN_OR_RAISE(const auto opened, location.system->GetFileInfo(location.path));
  if (opened.type() == ::arrow::fs::FileType::NotFound) {
    return ::arrow::Status::IOError("there is no such file");
  }
  ARROW_ASSIGN_OR_RAISE(const auto file, location.system->OpenInputFile(opened));
  ARROW_ASSIGN_OR_RAISE(const std::int64_t size, file->GetSize());
  return Input{std::make_shared<CountedFile>(file),
               size,
               [location, opened]() -> ::arrow::Status {
                 ARROW_ASSIGN_OR_RAISE(const auto now, location.system->GetFileInfo(location.path));
                 return now == opened ? ::arrow::Status::OK() : has_changed();
               },
               {size, 0, opened.mtime().time_since_epoch().count()}};
}

std::string folder_of_copies() {
  // NOLINTNEXTLINE(concurrency-mt-unsafe): nobody changes the environment
  const char* folder = std::getenv("TMPDIR");
  return folder != nullptr ? folder : "/tmp";
}

::arrow::Status not_copied(const ::arrow::Status& reason) {
  return reason.WithMessage("a copy of it cannot be written in ", folder_of_copies(), ": ",
                            reason.message());
}

/// A new file that is removed as soon as it exists.
::arrow::Result<int> open_nameless_file() {
  std::string path = folder_of_copies() + "/numera-XXXXXX";
  const int descriptor = ::mkostemp(path.data(), O_CLOEXEC);
  if (descriptor < 0) return not_copied(last_error());
  ::unlink(path.c_str());
  return descriptor;
}

}  // namespace

::arrow::Result<Input> open_input(const Location& location, const ReadOptions& options) {
  if (location.system != nullptr) return open_remote(location);
  if (location.path == kStandardStream) return open_standard_input(options);
  return open_local(location.path, options);
}

::arrow::Result<Input> copy_to_file(Pipe& pipe, const ReadOptions& options) {
  constexpr std::int64_t kCopiedAtOnce = std::int64_t{1} << 20;
  ARROW_ASSIGN_OR_RAISE(const int descriptor, open_nameless_file());
  ARROW_ASSIGN_OR_RAISE(const LocalFile owner,
                        ::arrow::io::ReadableFile::Open(descriptor, options.pool));
  DescriptorOutput copy(descriptor);
  pipe.forget();
  while (true) {
    // The pipe does not call it while it never waits for bytes.
    if (options.while_waiting) ARROW_RETURN_NOT_OK(options.while_waiting());
    ARROW_ASSIGN_OR_RAISE(const auto bytes, pipe.Read(kCopiedAtOnce));
    if (bytes->size() == 0) break;
    const ::arrow::Status status = copy.Write(bytes->data(), bytes->size());
    if (!status.ok()) return not_copied(status);
  }
  return input_of_file(copy_of(descriptor), options);  // a file takes its size when it is opened
}

}  // namespace numera::files
