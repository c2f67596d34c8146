#pragma once

#include <arrow/status.h>

#include <cerrno>
#include <system_error>

namespace numera::files {

/// The reason why the last system call of this thread failed.
inline ::arrow::Status last_error() {
  return ::arrow::Status::IOError(std::generic_category().message(errno));
}

}  // namespace numera::files
