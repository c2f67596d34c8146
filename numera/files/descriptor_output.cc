#include "numera/files/descriptor_output.h"

#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>

#include "numera/files/last_error.h"

namespace numera::files {
namespace {

/// Without SIGPIPE for this thread, which would end the process. A signal that was pending before
/// stays pending.
class WithoutPipeSignal {
 public:
  WithoutPipeSignal() {
    sigset_t pending;
    ::sigpending(&pending);
    was_pending_ = ::sigismember(&pending, SIGPIPE) == 1;
    ::sigemptyset(&only_);
    ::sigaddset(&only_, SIGPIPE);
    ::pthread_sigmask(SIG_BLOCK, &only_, &before_);
  }

  ~WithoutPipeSignal() {
    const int error = errno;  // of the write
    const timespec now = {};
    if (!was_pending_) ::sigtimedwait(&only_, nullptr, &now);
    ::pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    errno = error;
  }

  WithoutPipeSignal(const WithoutPipeSignal&) = delete;
  WithoutPipeSignal& operator=(const WithoutPipeSignal&) = delete;

 private:
  bool was_pending_;
  sigset_t only_;
  sigset_t before_;
};

ssize_t write_some(int descriptor, const void* data, size_t bytes, bool may_raise_signal) {
  if (!may_raise_signal) return ::write(descriptor, data, bytes);
  const WithoutPipeSignal guard;
  return ::write(descriptor, data, bytes);
}

/// Waits if the descriptor does not block by itself.
bool can_be_tried_again(int descriptor) {
  if (errno == EINTR) return true;
  if (errno != EAGAIN) return false;
  pollfd ready = {descriptor, POLLOUT, 0};
  return ::poll(&ready, 1, -1) >= 0 || errno == EINTR;
}

}  // namespace

DescriptorOutput::DescriptorOutput(int descriptor) : descriptor_(descriptor) {
  struct stat found = {};
  may_raise_signal_ = ::fstat(descriptor, &found) == 0 && !S_ISREG(found.st_mode);
  set_mode(::arrow::io::FileMode::WRITE);
}

::arrow::Status DescriptorOutput::Close() {
  is_closed_ = true;
  return ::arrow::Status::OK();
}

::arrow::Status DescriptorOutput::Write(const void* data, std::int64_t bytes) {
  if (is_closed_) return ::arrow::Status::Invalid("it was closed");
  const auto* next = static_cast<const std::byte*>(data);
  while (bytes > 0) {
    const ssize_t size =
        write_some(descriptor_, next, static_cast<size_t>(bytes), may_raise_signal_);
    if (size < 0) {
      if (!can_be_tried_again(descriptor_)) return last_error();
      continue;
    }
    next += size;
    bytes -= size;
    written_ += size;
  }
  return ::arrow::Status::OK();
}

}  // namespace numera::files
