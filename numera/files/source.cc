#include "numera/files/read.h"

#include <arrow/io/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

#include "numera/files/counted_file.h"
#include "numera/files/last_error.h"
#include "numera/files/memory_limit.h"
#include "numera/files/recognise.h"

namespace numera::files {
namespace {

constexpr std::int64_t kLeastMemory = std::int64_t{1} << 31;

/// Checks before the file is opened, because opening a pipe waits for a writer.
::arrow::Result<std::int64_t> size_of_file(const std::string& path) {
  struct stat found = {};
  if (::stat(path.c_str(), &found) != 0) return last_error();
  if (S_ISDIR(found.st_mode)) return ::arrow::Status::IOError("it is a directory");
  if (!S_ISREG(found.st_mode)) return ::arrow::Status::IOError("it is not a regular file");
  if (::access(path.c_str(), R_OK) != 0) return last_error();
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
  if (::fstat(file.file_descriptor(), &found) != 0) return last_error();
  return Version{found.st_size, found.st_mtim.tv_sec, found.st_mtim.tv_nsec};
}

/// Cuts the batches of a stream to the number of rows asked for. After the last one, refuses a file
/// that changed since it was opened: a CSV that lost lines would otherwise look complete.
class LocalSource : public Source {
 public:
  LocalSource(LimitedPool::Handle pool, std::shared_ptr<::arrow::io::ReadableFile> file,
              std::shared_ptr<CountedFile> counted, const Version& opened, Stream stream,
              std::int64_t batch_rows)
      : pool_(std::move(pool)),
        file_(std::move(file)),
        counted_(std::move(counted)),
        opened_(opened),
        stream_(std::move(stream)),
        batch_rows_(batch_rows) {}

  std::shared_ptr<::arrow::Schema> schema() const override { return stream_.schema; }
  std::optional<std::int64_t> rows() const override { return stream_.rows; }
  std::int64_t chunks() const override { return *stream_.chunks; }
  StatedCounts stated() const override {
    return stream_.stated ? stream_.stated() : Source::stated();
  }
  std::optional<std::int64_t> bytes() const override { return opened_.size; }
  std::int64_t bytes_read() const override {
    return std::min(counted_->bytes_read(), opened_.size);
  }

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
  std::shared_ptr<CountedFile> counted_;  ///< the same file
  Version opened_;
  Stream stream_;
  std::int64_t batch_rows_;
  std::shared_ptr<::arrow::RecordBatch> rest_;  ///< rows that were read and not yet returned
  ::arrow::Status failure_;
};

}  // namespace

Source::~Source() = default;

StatedCounts Source::stated() const {
  StatedCounts counts{.rows = rows()};
  counts.nulls.resize(static_cast<size_t>(schema()->num_fields()));
  return counts;
}

std::optional<std::int64_t> Source::bytes() const { return std::nullopt; }

std::int64_t Source::bytes_read() const { return 0; }

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
  auto counted = std::make_shared<CountedFile>(file);
  ARROW_ASSIGN_OR_RAISE(const OpenTable open, recognise(counted));
  ARROW_RETURN_NOT_OK(file->Seek(0));  // some readers start at the current position
  ARROW_ASSIGN_OR_RAISE(Stream stream, open(read));
  return std::make_shared<LocalSource>(std::move(pool), std::move(file), std::move(counted), opened,
                                       std::move(stream), options.batch_rows);
}

}  // namespace numera::files
