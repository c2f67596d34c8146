#include "numera/extras/parallel/in_order.h"

#include <algorithm>
#include <exception>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "numera/extras/parallel/handout.h"

namespace numera::extras::parallel {
namespace {

using Before = std::function<void(size_t)>;
using Work = std::function<::arrow::Status(size_t)>;

/// Takes pieces and does them until there are none left. No exception leaves the thread.
void work_off(Handout& handout, const Work& work) noexcept {
  while (const auto piece = handout.take()) {
    try {
      ::arrow::Status status = work(*piece);
      if (!status.ok()) handout.fail(*piece, {std::move(status), nullptr});
    } catch (...) {
      handout.fail(*piece, {::arrow::Status::OK(), std::current_exception()});
    }
  }
}

/// Threads that take from a handout. They end when it is closed; the destructor closes it.
class Workers {
 public:
  Workers(size_t count, Handout& handout, const Work& work) : handout_(handout) {
    threads_.reserve(count);
    try {
      while (threads_.size() < count) {
        threads_.emplace_back([&handout, &work] { work_off(handout, work); });
      }
    } catch (const std::system_error&) {  // no more threads available: continue with those that run
    } catch (...) {
      join();
      throw;
    }
  }
  ~Workers() { join(); }
  Workers(const Workers&) = delete;
  Workers& operator=(const Workers&) = delete;

  bool none() const { return threads_.empty(); }

 private:
  void join() noexcept {
    handout_.close();
    for (std::thread& thread : threads_) thread.join();
  }

  Handout& handout_;
  std::vector<std::thread> threads_;
};

::arrow::Status alone(size_t count, const Before& before, const Work& work) {
  for (size_t i = 0; i < count; ++i) {
    before(i);
    ARROW_RETURN_NOT_OK(work(i));
  }
  return ::arrow::Status::OK();
}

void hand_out(size_t count, const Before& before, Handout& handout) {
  size_t next = 0;
  try {
    for (; next < count && handout.wait_for_room(); ++next) {
      before(next);
      handout.give();
    }
  } catch (...) {
    handout.fail(next, {::arrow::Status::OK(), std::current_exception()});
  }
}

}  // namespace

size_t thread_count(size_t threads) {
  return threads > 0 ? threads : std::max<size_t>(std::thread::hardware_concurrency(), 1);
}

::arrow::Status in_order(size_t count, size_t threads, size_t ahead, const Before& before,
                         const Work& work) {
  threads = std::min(threads, count);
  if (threads <= 1) return alone(count, before, work);
  Handout handout(ahead);
  {
    const Workers workers(threads, handout, work);
    if (workers.none()) return alone(count, before, work);
    hand_out(count, before, handout);
  }
  return handout.outcome();
}

}  // namespace numera::extras::parallel
