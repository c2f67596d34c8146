#pragma once

/// \file
/// Calls `numera::files` for Python objects.

#include <arrow/result.h>
#include <arrow/status.h>

#include <exception>
#include <mutex>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "python/bindings/bindings.h"
#include "python/bindings/errors.h"
#include "python/bindings/unlocked.h"

namespace numera::python {

/// The bytes of a path. ValueError for a NUL, where the system would end the path.
std::string path_of(nb::handle path);

/// Calls a function of `numera::files` while other Python threads run. Two threads that call at
/// once would share what one of them asked for, so the second one is refused.
class Calls {
 public:
  /// Messages begin with `prefix`.
  explicit Calls(std::vector<std::string> paths, std::string prefix = "")
      : paths_(std::move(paths)), prefix_(std::move(prefix)) {}

  const std::vector<std::string>& paths() const { return paths_; }

  /// To be called by `call` while it waits or reads. Cancelled if Python was interrupted; the
  /// exception of Python is raised when `call` returns.
  ::arrow::Status while_waiting();

  /// The value of a result of `call`.
  template <class Call>
  auto value(const Call& call) {
    const std::unique_lock<std::mutex> lock(mutex_, std::try_to_lock);
    if (!lock.owns_lock()) {
      throw std::runtime_error("File: found two threads that use it, expected one at a time.");
    }
    auto result = [&] {
      const Unlocked unlocked;
      return call();
    }();
    if (interrupt_ != nullptr) std::rethrow_exception(std::exchange(interrupt_, nullptr));
    if (!result.ok()) raise_file_status(result.status(), paths_, prefix_);
    return *std::move(result);
  }

 private:
  std::vector<std::string> paths_;
  std::string prefix_;
  std::mutex mutex_;
  std::exception_ptr interrupt_;
};

}  // namespace numera::python
