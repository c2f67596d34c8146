#include "tools/source.h"

#include <arrow/buffer.h>
#include <arrow/io/file.h>
#include <arrow/util/utf8.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string_view>
#include <system_error>
#include <utility>

#include "tools/formats.h"

namespace numera::tools {
namespace {

using Open = ::arrow::Result<Source> (*)(const File&, const SourceOptions&);

struct Format {
  std::string_view magic;  ///< the first bytes of a file
  Open open;
};

/// An IPC stream starts with the continuation marker of its first message.
constexpr Format kFormats[] = {
    {"PAR1", open_parquet}, {"ARROW1", open_ipc_file}, {"\xFF\xFF\xFF\xFF", open_ipc_stream}};

constexpr std::int64_t kLookedAt = 65536;

/// Whether it is UTF-8 without NUL. Unless `whole` is set, `start` may end within a character.
bool looks_like_csv(std::string_view start, bool whole) {
  ::arrow::util::InitializeUTF8();  // before this call every text counts as valid
  if (start.find('\0') != std::string_view::npos) return false;
  for (size_t cut = 0; cut < 4 && cut <= start.size(); ++cut) {
    const auto text = start.substr(0, start.size() - cut);
    if (::arrow::util::ValidateUTF8(text)) return true;
    if (whole) return false;
  }
  return false;
}

::arrow::Result<Open> recognise(const File& file) {
  ARROW_ASSIGN_OR_RAISE(const std::int64_t size, file->GetSize());
  if (size == 0) return ::arrow::Status::Invalid("it is empty");
  ARROW_ASSIGN_OR_RAISE(const auto start, file->ReadAt(0, std::min(size, kLookedAt)));
  const std::string_view bytes(*start);
  for (const Format& format : kFormats) {
    if (bytes.starts_with(format.magic)) return format.open;
  }
  ARROW_ASSIGN_OR_RAISE(const bool is_old, is_old_ipc_stream(file));
  if (is_old) return open_ipc_stream;
  if (looks_like_csv(bytes, size <= kLookedAt)) return open_csv;
  return ::arrow::Status::Invalid("it is not a Parquet, Arrow IPC or CSV file");
}

/// Checks before the file is opened, because opening a pipe waits for a writer.
::arrow::Status check_is_file(const std::string& path) {
  struct stat found = {};
  if (::stat(path.c_str(), &found) != 0)
    return ::arrow::Status::IOError(std::generic_category().message(errno));
  if (S_ISDIR(found.st_mode)) return ::arrow::Status::IOError("it is a directory");
  if (!S_ISREG(found.st_mode)) return ::arrow::Status::IOError("it is not a regular file");
  if (::access(path.c_str(), R_OK) != 0)
    return ::arrow::Status::IOError(std::generic_category().message(errno));
  return ::arrow::Status::OK();
}

struct Version {
  off_t size;
  std::int64_t seconds;
  std::int64_t nanoseconds;

  bool operator==(const Version&) const = default;
};

::arrow::Result<Version> version_of(const ::arrow::io::ReadableFile& file) {
  struct stat found = {};
  if (::fstat(file.file_descriptor(), &found) != 0)
    return ::arrow::Status::IOError(std::generic_category().message(errno));
  return Version{found.st_size, found.st_mtim.tv_sec, found.st_mtim.tv_nsec};
}

/// After the last batch, refuses a file that changed since `opened`. A CSV that lost lines would
/// otherwise look complete.
Source unless_changed(Source source, std::shared_ptr<::arrow::io::ReadableFile> file,
                      const Version& opened) {
  auto pull = std::move(source.next);
  source.next = [pull = std::move(pull), file = std::move(file),
                 opened]() -> ::arrow::Result<std::shared_ptr<::arrow::RecordBatch>> {
    ARROW_ASSIGN_OR_RAISE(auto batch, pull());
    if (batch != nullptr) return batch;
    ARROW_ASSIGN_OR_RAISE(const Version read, version_of(*file));
    if (read != opened) return ::arrow::Status::IOError("it changed while it was read");
    return nullptr;
  };
  return source;
}

/// Slices batches of more than `rows` rows.
Source in_batches_of(Source source, std::int64_t rows) {
  auto pull = std::move(source.next);
  source.next = [pull = std::move(pull), rows,
                 rest = std::shared_ptr<::arrow::RecordBatch>()]() mutable
      -> ::arrow::Result<std::shared_ptr<::arrow::RecordBatch>> {
    if (rest == nullptr) {
      ARROW_ASSIGN_OR_RAISE(rest, pull());
      if (rest == nullptr) return nullptr;
      ARROW_RETURN_NOT_OK(rest->Validate());
    }
    auto batch = rest->Slice(0, rows);
    rest = rest->num_rows() > rows ? rest->Slice(rows) : nullptr;
    return batch;
  };
  return source;
}

}  // namespace

::arrow::Result<Source> open_source(const std::string& path, const SourceOptions& options) {
  ARROW_RETURN_NOT_OK(check_is_file(path));
  ARROW_ASSIGN_OR_RAISE(const auto file, ::arrow::io::ReadableFile::Open(path));
  ARROW_ASSIGN_OR_RAISE(const Version opened, version_of(*file));
  ARROW_ASSIGN_OR_RAISE(const Open open, recognise(file));
  ARROW_RETURN_NOT_OK(file->Seek(0));  // some readers start at the current position
  ARROW_ASSIGN_OR_RAISE(Source source, open(file, options));
  source = unless_changed(std::move(source), file, opened);
  return in_batches_of(std::move(source), options.batch_rows);
}

}  // namespace numera::tools
