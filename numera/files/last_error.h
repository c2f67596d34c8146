#pragma once

#include <arrow/status.h>
#include <arrow/util/io_util.h>
#include <poll.h>

#include <cerrno>
#include <system_error>

namespace numera::files {

/// The reason why the last system call of this thread failed. Its number is the detail of the
/// status.
inline ::arrow::Status last_error() {
  const int number = errno;
  return ::arrow::internal::IOErrorFromErrno(number, std::generic_category().message(number));
}

/// Whether the system call on the descriptor that failed last can be tried again. Waits for
/// `events` if the descriptor does not block by itself.
inline bool can_be_tried_again(int descriptor, short events) {
  if (errno == EINTR) return true;
  if (errno != EAGAIN) return false;
  pollfd ready = {descriptor, events, 0};
  return ::poll(&ready, 1, -1) >= 0 || errno == EINTR;
}

}  // namespace numera::files
