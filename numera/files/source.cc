#include "numera/files/read.h"

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

#include "numera/files/formats.h"
#include "numera/files/memory_limit.h"

namespace numera::files {
namespace {

using Open = ::arrow::Result<Stream> (*)(const File&, const ReadOptions&);

struct Format {
  std::string_view magic;  ///< the first bytes of a file
  Open open;
};

/// An IPC stream starts with the continuation marker of its first message.
constexpr Format kFormats[] = {
    {"PAR1", open_parquet}, {"ARROW1", open_ipc_file}, {"\xFF\xFF\xFF\xFF", open_ipc_stream}};

constexpr std::int64_t kLookedAt = 65536;
constexpr std::int64_t kLeastMemory = std::int64_t{1} << 31;

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

::arrow::Result<Stream> open_text(const File& file, const ReadOptions& options) {
  ARROW_ASSIGN_OR_RAISE(const std::int64_t size, file->GetSize());
  return open_csv([=] { return ::arrow::io::RandomAccessFile::GetStream(file, 0, size); }, options);
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
  if (looks_like_csv(bytes, size <= kLookedAt)) return open_text;
  return ::arrow::Status::Invalid("it is not a Parquet, Arrow IPC or CSV file");
}

/// Checks before the file is opened, because opening a pipe waits for a writer.
::arrow::Result<std::int64_t> size_of_file(const std::string& path) {
  struct stat found = {};
  if (::stat(path.c_str(), &found) != 0)
    return ::arrow::Status::IOError(std::generic_category().message(errno));
  if (S_ISDIR(found.st_mode)) return ::arrow::Status::IOError("it is a directory");
  if (!S_ISREG(found.st_mode)) return ::arrow::Status::IOError("it is not a regular file");
  if (::access(path.c_str(), R_OK) != 0)
    return ::arrow::Status::IOError(std::generic_category().message(errno));
  return found.st_size;
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

/// Cuts the batches of a stream to the number of rows asked for. After the last one, refuses a file
/// that changed since it was opened: a CSV that lost lines would otherwise look complete.
class LocalSource : public Source {
 public:
  LocalSource(LimitedPool::Handle pool, std::shared_ptr<::arrow::io::ReadableFile> file,
              const Version& opened, Stream stream, std::int64_t batch_rows)
      : pool_(std::move(pool)),
        file_(std::move(file)),
        opened_(opened),
        stream_(std::move(stream)),
        batch_rows_(batch_rows) {}

  std::shared_ptr<::arrow::Schema> schema() const override { return stream_.schema; }
  std::optional<std::int64_t> rows() const override { return stream_.rows; }
  std::int64_t chunks() const override { return *stream_.chunks; }

  ::arrow::Status ReadNext(std::shared_ptr<::arrow::RecordBatch>* batch) override {
    *batch = nullptr;
    if (failure_.ok()) failure_ = next().Value(batch);
    return failure_;
  }

  ::arrow::Status Close() override {
    rest_ = nullptr;
    stream_.next = [] { return ::arrow::Status::Invalid("it was closed"); };
    return file_->Close();
  }

 private:
  BatchResult next() {
    if (rest_ == nullptr) {
      ARROW_ASSIGN_OR_RAISE(rest_, stream_.next());
      if (rest_ == nullptr) return last();
      ARROW_RETURN_NOT_OK(rest_->Validate());
    }
    auto batch = rest_->Slice(0, batch_rows_);
    rest_ = rest_->num_rows() > batch_rows_ ? rest_->Slice(batch_rows_) : nullptr;
    return batch;
  }

  BatchResult last() {
    stream_.next = [] { return std::shared_ptr<::arrow::RecordBatch>(); };
    ARROW_ASSIGN_OR_RAISE(const Version read, version_of(*file_));
    if (read != opened_) return ::arrow::Status::IOError("it changed while it was read");
    return nullptr;
  }

  LimitedPool::Handle pool_;  ///< destroyed last: all else may have memory of it
  std::shared_ptr<::arrow::io::ReadableFile> file_;
  Version opened_;
  Stream stream_;
  std::int64_t batch_rows_;
  std::shared_ptr<::arrow::RecordBatch> rest_;  ///< rows that were read and not yet returned
  ::arrow::Status failure_;
};

}  // namespace

Source::~Source() = default;

::arrow::Result<std::shared_ptr<Source>> open_source(const std::string& path,
                                                     const ReadOptions& options) {
  if (options.batch_rows <= 0) {
    return ::arrow::Status::Invalid("batch_rows: found ", options.batch_rows,
                                    ", expected a positive number");
  }
  ARROW_ASSIGN_OR_RAISE(const std::int64_t size, size_of_file(path));
  ReadOptions read = options;
  LimitedPool::Handle pool;
  if (options.pool == nullptr) {
    pool = LimitedPool::make(options.memory_limit.value_or(std::max(kLeastMemory, 4 * size)));
    read.pool = pool.get();
  }
  ARROW_ASSIGN_OR_RAISE(auto file, ::arrow::io::ReadableFile::Open(path, read.pool));
  ARROW_ASSIGN_OR_RAISE(const Version opened, version_of(*file));
  ARROW_ASSIGN_OR_RAISE(const Open open, recognise(file));
  ARROW_RETURN_NOT_OK(file->Seek(0));  // some readers start at the current position
  ARROW_ASSIGN_OR_RAISE(Stream stream, open(file, read));
  return std::make_shared<LocalSource>(std::move(pool), std::move(file), opened, std::move(stream),
                                       options.batch_rows);
}

}  // namespace numera::files
