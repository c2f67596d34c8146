#include "numera/files/counted_file.h"

#include <arrow/buffer.h>

namespace numera::files {

using BufferResult = ::arrow::Result<std::shared_ptr<::arrow::Buffer>>;

::arrow::Result<std::int64_t> CountedFile::Read(std::int64_t bytes, void* out) {
  ARROW_ASSIGN_OR_RAISE(const std::int64_t position, Tell());
  ARROW_ASSIGN_OR_RAISE(const std::int64_t read, file_->Read(bytes, out));
  count(position, read);
  return read;
}

BufferResult CountedFile::Read(std::int64_t bytes) {
  ARROW_ASSIGN_OR_RAISE(const std::int64_t position, Tell());
  ARROW_ASSIGN_OR_RAISE(auto buffer, file_->Read(bytes));
  count(position, buffer->size());
  return buffer;
}

::arrow::Result<std::int64_t> CountedFile::ReadAt(std::int64_t position, std::int64_t bytes,
                                                  void* out) {
  ARROW_ASSIGN_OR_RAISE(const std::int64_t read, file_->ReadAt(position, bytes, out));
  count(position, read);
  return read;
}

BufferResult CountedFile::ReadAt(std::int64_t position, std::int64_t bytes) {
  ARROW_ASSIGN_OR_RAISE(auto buffer, file_->ReadAt(position, bytes));
  count(position, buffer->size());
  return buffer;
}

void CountedFile::count(std::int64_t position, std::int64_t bytes) {
  if (position == 0) bytes_read_ = 0;
  bytes_read_ += bytes;
}

}  // namespace numera::files
