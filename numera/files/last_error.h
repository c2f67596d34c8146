#pragma once

#include <arrow/status.h>
#include <arrow/util/io_util.h>

#include <cerrno>
#include <system_error>

namespace numera::files {

/// The reason why the last system call of this thread failed. Its number is the detail of the
/// status.
inline ::arrow::Status last_error() {
  const int number = errno;
  return ::arrow::internal::IOErrorFromErrno(number, std::generic_category().message(number));
}

}  // namespace numera::files
