#pragma once

/// \file
/// Numbered pieces of work on their way from the thread that hands them out to those that do them.

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

/// Pieces 0, 1, 2 and so on, given by one thread and taken by others, in this order. All members
/// may be called by all threads, but `give` by one.
class Handout {
 public:
  /// At most so many pieces wait to be taken; half of them taken, there is room again, so that the
  /// giving thread is not woken for each.
  explicit Handout(size_t most_waiting) : most_waiting_(most_waiting) {}

  /// Waits until another piece may be given. False where none is wanted, since one has failed.
  bool wait_for_room();
  /// Gives the next piece.
  void give();
  /// No more will come.
  void close() noexcept;

  /// Waits for the next piece. None where no more will come, or where one of a lower number has
  /// failed: only what comes before a failure can still change the outcome.
  std::optional<size_t> take();
  /// Notes that a piece has failed. Of several the lowest counts.
  void fail(size_t piece, Failure failure);

  /// The failure of the lowest piece: its status, or its exception thrown. OK where there is none.
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
