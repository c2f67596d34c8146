#pragma once

#include <arrow/io/file.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

namespace numera::files {

/// A file that counts the bytes that are read from it. A read at its start begins a new count,
/// because text is read more than once, and only the last time gives the rows.
class CountedFile : public ::arrow::io::RandomAccessFile {
 public:
  explicit CountedFile(std::shared_ptr<::arrow::io::RandomAccessFile> file)
      : file_(std::move(file)) {}

  /// May be called while another thread reads.
  std::int64_t bytes_read() const { return bytes_read_; }

  ::arrow::Status Close() override { return file_->Close(); }
  bool closed() const override { return file_->closed(); }
  ::arrow::Result<std::int64_t> Tell() const override { return file_->Tell(); }
  ::arrow::Status Seek(std::int64_t position) override { return file_->Seek(position); }
  ::arrow::Result<std::int64_t> GetSize() override { return file_->GetSize(); }
  ::arrow::Status WillNeed(const std::vector<::arrow::io::ReadRange>& ranges) override {
    return file_->WillNeed(ranges);
  }

  using ::arrow::io::RandomAccessFile::Read;
  using ::arrow::io::RandomAccessFile::ReadAt;
  ::arrow::Result<std::int64_t> Read(std::int64_t bytes, void* out) override;
  ::arrow::Result<std::shared_ptr<::arrow::Buffer>> Read(std::int64_t bytes) override;
  ::arrow::Result<std::int64_t> ReadAt(std::int64_t position, std::int64_t bytes,
                                       void* out) override;
  ::arrow::Result<std::shared_ptr<::arrow::Buffer>> ReadAt(std::int64_t position,
                                                           std::int64_t bytes) override;

 private:
  void count(std::int64_t position, std::int64_t bytes);

  std::shared_ptr<::arrow::io::RandomAccessFile> file_;
  std::atomic<std::int64_t> bytes_read_ = 0;
};

}  // namespace numera::files
