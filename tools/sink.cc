#include "tools/sink.h"

#include <arrow/array/array_dict.h>
#include <arrow/chunked_array.h>
#include <arrow/io/file.h>
#include <arrow/ipc/writer.h>
#include <arrow/table.h>
#include <fcntl.h>
#include <parquet/arrow/writer.h>
#include <parquet/exception.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <utility>

namespace numera::tools {
namespace {

using Batch = std::shared_ptr<::arrow::RecordBatch>;
using Output = std::shared_ptr<::arrow::io::FileOutputStream>;

::arrow::Status last_error(const char* what) {
  return ::arrow::Status::IOError(what, ": ", std::strerror(errno));
}

/// What writes one format.
class Encoder {
 public:
  virtual ~Encoder() = default;
  virtual ::arrow::Status write(const Batch& batch) = 0;
  virtual ::arrow::Status close() = 0;
};

class ParquetEncoder final : public Encoder {
 public:
  explicit ParquetEncoder(Output output) : output_(std::move(output)) {}

  ::arrow::Status write(const Batch& batch) override {
    if (writer_ == nullptr) {
      const auto properties = parquet::ArrowWriterProperties::Builder().store_schema()->build();
      ARROW_ASSIGN_OR_RAISE(writer_, parquet::arrow::FileWriter::Open(
                                         *batch->schema(), ::arrow::default_memory_pool(), output_,
                                         parquet::default_writer_properties(), properties));
    }
    ARROW_ASSIGN_OR_RAISE(const auto table, ::arrow::Table::FromRecordBatches({batch}));
    return writer_->WriteTable(*table, std::max<std::int64_t>(batch->num_rows(), 1));
  }

  ::arrow::Status close() override { return writer_->Close(); }

 private:
  Output output_;
  std::unique_ptr<parquet::arrow::FileWriter> writer_;
};

/// Dictionaries only grow from batch to batch, since an IPC file cannot replace them.
class IpcEncoder final : public Encoder {
 public:
  explicit IpcEncoder(Output output) : output_(std::move(output)) {}

  ::arrow::Status write(const Batch& batch) override {
    if (writer_ == nullptr) {
      auto options = ::arrow::ipc::IpcWriteOptions::Defaults();
      options.emit_dictionary_deltas = true;
      ARROW_ASSIGN_OR_RAISE(writer_,
                            ::arrow::ipc::MakeFileWriter(output_, batch->schema(), options));
      last_ = batch;
      return writer_->WriteRecordBatch(*batch);
    }
    ::arrow::ArrayVector columns;
    for (int i = 0; i < batch->num_columns(); ++i) {
      ARROW_ASSIGN_OR_RAISE(columns.emplace_back(), extend(last_->column(i), batch->column(i)));
    }
    last_ = ::arrow::RecordBatch::Make(batch->schema(), batch->num_rows(), std::move(columns));
    return writer_->WriteRecordBatch(*last_);
  }

  ::arrow::Status close() override { return writer_->Close(); }

 private:
  /// `column` with its dictionaries, at any depth, led over to those of `last` and what is new.
  static ::arrow::Result<std::shared_ptr<::arrow::Array>> extend(
      const std::shared_ptr<::arrow::Array>& last, const std::shared_ptr<::arrow::Array>& column) {
    const auto both = std::make_shared<::arrow::ChunkedArray>(
        ::arrow::ArrayVector{last->Slice(0, 0), column}, column->type());
    ARROW_ASSIGN_OR_RAISE(const auto unified, ::arrow::DictionaryUnifier::UnifyChunkedArray(both));
    return unified->chunk(1);
  }

  Output output_;
  std::shared_ptr<::arrow::ipc::RecordBatchWriter> writer_;
  Batch last_;
};

class FileSink final : public Sink {
 public:
  explicit FileSink(std::string path)
      : path_(std::move(path)), part_(path_ + "." + std::to_string(::getpid()) + ".part") {}
  FileSink(const FileSink&) = delete;
  FileSink& operator=(const FileSink&) = delete;

  ~FileSink() override {
    encoder_.reset();
    if (output_ != nullptr) std::remove(part_.c_str());
  }

  ::arrow::Status start() {
    const int file = ::open(part_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (file < 0) return last_error(("cannot write " + path_).c_str());
    ARROW_ASSIGN_OR_RAISE(output_, ::arrow::io::FileOutputStream::Open(file));
    if (path_.ends_with(".parquet")) {
      encoder_ = std::make_unique<ParquetEncoder>(output_);
    } else {
      encoder_ = std::make_unique<IpcEncoder>(output_);
    }
    return ::arrow::Status::OK();
  }

  ::arrow::Status write(const Batch& batch) override {
    try {
      started_ = true;
      return name_target(encoder_->write(batch));
    } catch (const parquet::ParquetException& error) {
      return name_target(::arrow::Status::IOError(error.what()));
    }
  }

  ::arrow::Status finish() override {
    if (!started_) return ::arrow::Status::OK();
    try {
      ARROW_RETURN_NOT_OK(name_target(encoder_->close()));
      ARROW_RETURN_NOT_OK(name_target(output_->Close()));
    } catch (const parquet::ParquetException& error) {
      return name_target(::arrow::Status::IOError(error.what()));
    }
    if (std::rename(part_.c_str(), path_.c_str()) != 0) {
      return last_error(("cannot write " + path_).c_str());
    }
    output_ = nullptr;
    return ::arrow::Status::OK();
  }

 private:
  ::arrow::Status name_target(const ::arrow::Status& status) const {
    if (status.ok()) return status;
    return status.WithMessage("cannot write ", path_, ": ", status.message());
  }

  std::string path_;
  std::string part_;
  Output output_;  ///< null once the file is in its place
  std::unique_ptr<Encoder> encoder_;
  bool started_ = false;
};

::arrow::Status check_target(const std::string& path, const std::string& input) {
  bool known = false;
  for (const std::string_view suffix : {".parquet", ".arrow", ".feather", ".ipc"}) {
    known = known || path.ends_with(suffix);
  }
  if (!known) {
    return ::arrow::Status::Invalid("cannot write ", path,
                                    ": the name ends in none of .parquet, .arrow, .feather, .ipc");
  }
  struct stat target = {};
  if (::stat(path.c_str(), &target) != 0) return ::arrow::Status::OK();  // it is new
  struct stat source = {};
  if (::stat(input.c_str(), &source) == 0 && source.st_dev == target.st_dev &&
      source.st_ino == target.st_ino) {
    return ::arrow::Status::Invalid("cannot write ", path, ": it is the file that is read");
  }
  if (!S_ISREG(target.st_mode)) {
    return ::arrow::Status::IOError("cannot write ", path, ": it is not a regular file");
  }
  return ::arrow::Status::OK();
}

}  // namespace

::arrow::Result<std::unique_ptr<Sink>> Sink::open(const std::string& path,
                                                  const std::string& input) {
  ARROW_RETURN_NOT_OK(check_target(path, input));
  auto sink = std::make_unique<FileSink>(path);
  ARROW_RETURN_NOT_OK(sink->start());
  return sink;
}

}  // namespace numera::tools
