#include "numera/files/pipe.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <utility>

#include "numera/files/last_error.h"

namespace numera::files {
namespace {

/// As much as a pipe usually holds.
constexpr std::int64_t kPieceBytes = std::int64_t{1} << 16;

/// The time between two calls while a pipe gives nothing.
constexpr int kMillisecondsToWait = 100;

}  // namespace

Pipe::~Pipe() {
  if (!closed()) ::close(descriptor_);
}

/// Waits for bytes. Returns 0 at the end of the pipe.
::arrow::Result<std::int64_t> Pipe::read_some(std::uint8_t* out, std::int64_t size) {
  while (true) {
    pollfd ready = {descriptor_, POLLIN, 0};
    if (::poll(&ready, 1, kMillisecondsToWait) > 0) {
      const ssize_t read = ::read(descriptor_, out, static_cast<size_t>(size));
      if (read >= 0) return read;
      if (errno != EINTR && errno != EAGAIN) return last_error();
    }
    if (while_waiting_) ARROW_RETURN_NOT_OK(while_waiting_());
  }
}

/// Reads until `end`, or until the pipe ends.
::arrow::Status Pipe::fill(std::int64_t end) {
  while (end_ < end && !is_at_end_) {
    if (closed()) return ::arrow::Status::Invalid("it was closed");
    ARROW_ASSIGN_OR_RAISE(std::shared_ptr<::arrow::ResizableBuffer> piece,
                          ::arrow::AllocateResizableBuffer(kPieceBytes, pool_));
    ARROW_ASSIGN_OR_RAISE(const std::int64_t read, read_some(piece->mutable_data(), kPieceBytes));
    ARROW_RETURN_NOT_OK(piece->Resize(read));
    is_at_end_ = read == 0;
    end_ += read;
    pieces_.push_back(std::move(piece));
  }
  return ::arrow::Status::OK();
}

::arrow::Result<std::int64_t> Pipe::ReadAt(std::int64_t position, std::int64_t size, void* out) {
  if (position < start_) return ::arrow::Status::IOError("a pipe is read forwards only");
  if (size > 0) ARROW_RETURN_NOT_OK(fill(position + size));
  auto* to = static_cast<std::byte*>(out);
  std::int64_t piece_start = start_;
  for (const auto& piece : pieces_) {
    const std::int64_t skipped = std::max<std::int64_t>(position - piece_start, 0);
    const std::int64_t more = std::min(piece->size() - skipped, size);
    piece_start += piece->size();
    if (more <= 0) continue;
    std::memcpy(to, piece->data() + skipped, static_cast<size_t>(more));
    to += more;
    position += more;
    size -= more;
  }
  while (forgets_ && !pieces_.empty() && start_ + pieces_.front()->size() <= position) {
    start_ += pieces_.front()->size();
    pieces_.pop_front();
  }
  return to - static_cast<std::byte*>(out);
}

::arrow::Result<std::shared_ptr<::arrow::Buffer>> Pipe::ReadAt(std::int64_t position,
                                                               std::int64_t size) {
  ARROW_ASSIGN_OR_RAISE(std::shared_ptr<::arrow::ResizableBuffer> buffer,
                        ::arrow::AllocateResizableBuffer(size, pool_));
  ARROW_ASSIGN_OR_RAISE(const std::int64_t read, ReadAt(position, size, buffer->mutable_data()));
  ARROW_RETURN_NOT_OK(buffer->Resize(read));
  return buffer;
}

::arrow::Result<std::int64_t> Pipe::Read(std::int64_t size, void* out) {
  ARROW_ASSIGN_OR_RAISE(const std::int64_t read, ReadAt(position_, size, out));
  position_ += read;
  return read;
}

::arrow::Result<std::shared_ptr<::arrow::Buffer>> Pipe::Read(std::int64_t size) {
  ARROW_ASSIGN_OR_RAISE(auto buffer, ReadAt(position_, size));
  position_ += buffer->size();
  return buffer;
}

::arrow::Status Pipe::Seek(std::int64_t position) {
  position_ = position;
  return ::arrow::Status::OK();
}

::arrow::Result<std::int64_t> Pipe::GetSize() {
  return ::arrow::Status::IOError("a pipe has no size");
}

::arrow::Status Pipe::Close() {
  if (closed()) return ::arrow::Status::OK();
  return ::close(std::exchange(descriptor_, -1)) == 0 ? ::arrow::Status::OK() : last_error();
}

}  // namespace numera::files
