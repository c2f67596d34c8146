#pragma once

/// \file
/// Passes numbered pieces of work from one thread to the threads that do them.

#include <arrow/status.h>

#include <condition_variable>
#include <cstddef>
#include <exception>
#include <limits>
#include <mutex>
#include <optional>

namespace numera::extras::parallel {

/// Why a piece of work failed: a status that is not OK, or an exception.
struct Failure {
  ::arrow::Status status;
  std::exception_ptr exception;
};

/// Pieces 0, 1, 2 and so on. One thread gives them, others take them, in this order. Any thread may
/// call any member, but only one thread may call `give`.
class Handout {
 public:
  /// At most `most_waiting` pieces wait to be taken. Once there are so many, the giving thread
  /// waits until half of them have been taken, so that it is not woken for every piece.
  explicit Handout(size_t most_waiting) : most_waiting_(most_waiting) {}

  /// Waits until another piece may be given. False if none is wanted because a piece has failed.
  bool wait_for_room();
  void give();
  /// Says that no more pieces will come.
  void close() noexcept;

  /// Waits for the next piece. None if no more will come, or if a piece with a lower number has
  /// failed: only pieces before a failure can still change the outcome.
  std::optional<size_t> take();
  /// Records that a piece has failed. The failure with the lowest number counts.
  void fail(size_t piece, Failure failure);

  /// Returns the status, or throws the exception, of the failed piece with the lowest number. OK if
  /// none failed.
  ::arrow::Status outcome();

 private:
  size_t waiting() const { return given_ - taken_; }

  static constexpr size_t kNone = std::numeric_limits<size_t>::max();

  std::mutex mutex_;
  std::condition_variable room_;
  std::condition_variable given_or_closed_;
  const size_t most_waiting_;
  size_t given_ = 0;
  size_t taken_ = 0;
  bool closed_ = false;
  size_t failed_ = kNone;
  Failure failure_;
};

}  // namespace numera::extras::parallel
