#include "numera/files/open_file.h"

#include <algorithm>
#include <utility>

#include "numera/files/input.h"
#include "numera/files/recognise.h"

namespace numera::files {
namespace {

/// Cuts the batches of a stream to the number of rows asked for. After the last one, refuses a file
/// that changed since it was opened: a CSV that lost lines would otherwise look complete.
class FileSource : public Source {
 public:
  FileSource(const Opening& opening, Input input, Stream stream)
      : limit_(opening.limit),
        input_(std::move(input)),
        stream_(std::move(stream)),
        batch_rows_(opening.options.batch_rows) {}

  std::shared_ptr<::arrow::Schema> schema() const override { return stream_.schema; }
  std::optional<std::int64_t> rows() const override { return stream_.rows; }
  std::int64_t chunks() const override { return *stream_.chunks; }
  StatedCounts stated() const override {
    return stream_.stated ? stream_.stated() : Source::stated();
  }
  std::optional<std::int64_t> bytes() const override { return input_.size; }
  std::int64_t bytes_read() const override {
    const std::int64_t read = input_.file->bytes_read();
    return std::min(read, input_.size.value_or(read));
  }

  ::arrow::Status ReadNext(std::shared_ptr<::arrow::RecordBatch>* batch) override {
    *batch = nullptr;
    if (failure_.ok()) failure_ = next().Value(batch);
    return failure_;
  }

  ::arrow::Status Close() override {
    rest_ = nullptr;
    stream_.next = [] { return ::arrow::Status::Invalid("it was closed"); };
    return input_.file->Close();
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
    ARROW_RETURN_NOT_OK(input_.check_unchanged());
    return nullptr;
  }

  std::shared_ptr<LimitedPool> limit_;  ///< destroyed last: all else may have memory of it
  Input input_;
  Stream stream_;
  std::int64_t batch_rows_;
  std::shared_ptr<::arrow::RecordBatch> rest_;  ///< rows that were read and not yet returned
  ::arrow::Status failure_;
};

/// Copies a pipe to a file if its format is not read forwards.
::arrow::Result<Recognised> recognise_input(Input& input, const ReadOptions& options) {
  const std::string& encoding = options.csv_encoding;
  ARROW_ASSIGN_OR_RAISE(Recognised format, recognise(input.file, input.size, encoding));
  const bool reads_twice = options.csv_types_of_all_rows;
  if (input.pipe == nullptr || (format.reads_forwards && !reads_twice)) return format;
  ARROW_ASSIGN_OR_RAISE(input, copy_to_file(*input.pipe, options));
  return recognise(input.file, input.size, encoding);
}

}  // namespace

::arrow::Result<OpenedFile> open_file(const Location& location, const Opening& opening) {
  ARROW_ASSIGN_OR_RAISE(Input input, open_input(location, opening.options));
  const bool is_pipe = input.pipe != nullptr;
  const FileVersion version = input.version;
  ARROW_ASSIGN_OR_RAISE(const Recognised format, recognise_input(input, opening.options));
  if (opening.limit != nullptr && input.size) opening.limit->allow_file_of(*input.size);
  ARROW_RETURN_NOT_OK(input.file->Seek(0));  // some readers start at the current position
  ARROW_ASSIGN_OR_RAISE(Stream stream, format.open(opening.options));
  if (input.pipe != nullptr) input.pipe->forget();
  return OpenedFile{std::make_shared<FileSource>(opening, std::move(input), std::move(stream)),
                    is_pipe, version};
}

}  // namespace numera::files
