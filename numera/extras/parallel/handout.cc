#include "numera/extras/parallel/handout.h"

#include <utility>

namespace numera::extras::parallel {

bool Handout::wait_for_room() {
  std::unique_lock lock(mutex_);
  if (waiting() >= most_waiting_) {
    room_.wait(lock, [this] { return failed_ != kNone || waiting() <= most_waiting_ / 2; });
  }
  return failed_ == kNone;
}

void Handout::give() {
  {
    const std::lock_guard lock(mutex_);
    ++given_;
  }
  given_or_closed_.notify_one();
}

void Handout::close() noexcept {
  {
    const std::lock_guard lock(mutex_);
    closed_ = true;
  }
  given_or_closed_.notify_all();
}

std::optional<size_t> Handout::take() {
  size_t piece = 0;
  bool has_room = false;
  {
    std::unique_lock lock(mutex_);
    given_or_closed_.wait(lock, [this] { return closed_ || taken_ < given_ || failed_ <= taken_; });
    if (taken_ == given_ || failed_ <= taken_) return std::nullopt;
    piece = taken_++;
    has_room = waiting() == most_waiting_ / 2;
  }
  if (has_room) room_.notify_one();
  return piece;
}

void Handout::fail(size_t piece, Failure failure) {
  {
    const std::lock_guard lock(mutex_);
    if (piece < failed_) {
      failed_ = piece;
      failure_ = std::move(failure);
    }
  }
  room_.notify_one();
  given_or_closed_.notify_all();
}

::arrow::Status Handout::outcome() {
  const std::lock_guard lock(mutex_);
  if (failure_.exception != nullptr) std::rethrow_exception(failure_.exception);
  return failure_.status;
}

}  // namespace numera::extras::parallel
