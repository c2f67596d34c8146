#pragma once

#include <arrow/buffer.h>
#include <arrow/io/interfaces.h>
#include <arrow/memory_pool.h>
#include <arrow/result.h>
#include <arrow/status.h>

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <utility>

namespace numera::files {

/// The bytes of a pipe, as a file that is read forwards.
///
/// The start of a pipe is read several times: to find out the format, then the types. So what was
/// read is kept and can be read again until `forget` is called. There is no size.
class Pipe final : public ::arrow::io::RandomAccessFile {
 public:
  /// Closes the descriptor in the end. While it waits for bytes, it calls
  /// `while_waiting`, if there is one, and ends with an error of that. `pool` outlives
  /// the pipe and what is read from it.
  Pipe(int descriptor, ::arrow::MemoryPool* pool, std::function<::arrow::Status()> while_waiting)
      : descriptor_(descriptor), pool_(pool), while_waiting_(std::move(while_waiting)) {}
  ~Pipe() override;

  /// From now on, drops the bytes that were read.
  void forget() { forgets_ = true; }

  ::arrow::Result<std::int64_t> ReadAt(std::int64_t position, std::int64_t size,
                                       void* out) override;
  ::arrow::Result<std::shared_ptr<::arrow::Buffer>> ReadAt(std::int64_t position,
                                                           std::int64_t size) override;
  ::arrow::Result<std::int64_t> Read(std::int64_t size, void* out) override;
  ::arrow::Result<std::shared_ptr<::arrow::Buffer>> Read(std::int64_t size) override;
  ::arrow::Status Seek(std::int64_t position) override;
  ::arrow::Result<std::int64_t> Tell() const override { return position_; }
  /// IOError: nobody knows the size of a pipe.
  ::arrow::Result<std::int64_t> GetSize() override;
  ::arrow::Status Close() override;
  bool closed() const override { return descriptor_ < 0; }

 private:
  ::arrow::Status fill(std::int64_t end);
  ::arrow::Result<std::int64_t> read_some(std::uint8_t* out, std::int64_t size);

  int descriptor_;
  ::arrow::MemoryPool* pool_;
  std::function<::arrow::Status()> while_waiting_;
  std::deque<std::shared_ptr<::arrow::Buffer>> pieces_;
  std::int64_t start_ = 0;  ///< of the pieces
  std::int64_t end_ = 0;    ///< of the pieces
  std::int64_t position_ = 0;
  bool is_at_end_ = false;
  bool forgets_ = false;
};

}  // namespace numera::files
