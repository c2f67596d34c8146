#include "numera/extras/parallel/in_order.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <algorithm>
#include <latch>
#include <mutex>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/thrown.h"

namespace numera::extras::parallel {
namespace {

using ::arrow::Status;
using numera::testing::MessageThrown;

constexpr size_t kThreadCounts[] = {1, 2, 3, 8};

void nothing(size_t) {}
Status ok(size_t) { return Status::OK(); }

TEST(InOrder, DoesEveryPieceOnce) {
  for (const size_t threads : kThreadCounts) {
    for (const size_t count : {0U, 1U, 2U, 3U, 100U}) {
      SCOPED_TRACE(std::to_string(count) + " pieces on " + std::to_string(threads) + " threads");
      std::vector<int> done(count, 0);
      EXPECT_TRUE(in_order(count, threads, threads, nothing, [&done](size_t i) {
                    ++done[i];
                    return Status::OK();
                  }).ok());
      EXPECT_EQ(done, std::vector<int>(count, 1));
    }
  }
}

TEST(InOrder, CallsWhatComesBeforeInOrderOnTheCallingThread) {
  for (const size_t threads : kThreadCounts) {
    std::vector<size_t> order;
    const auto caller = std::this_thread::get_id();
    ASSERT_TRUE(in_order(
                    4, threads, threads,
                    [&](size_t i) {
                      EXPECT_EQ(std::this_thread::get_id(), caller);
                      order.push_back(i);
                    },
                    ok)
                    .ok());
    EXPECT_EQ(order, (std::vector<size_t>{0, 1, 2, 3}));
  }
}

TEST(InOrder, CallsWhatComesBeforeEarlierThanTheWork) {
  for (const size_t threads : kThreadCounts) {
    std::mutex mutex;
    std::set<size_t> begun;
    EXPECT_TRUE(in_order(
                    50, threads, threads,
                    [&](size_t i) {
                      const std::lock_guard lock(mutex);
                      begun.insert(i);
                    },
                    [&](size_t i) {
                      const std::lock_guard lock(mutex);
                      return begun.contains(i) ? Status::OK() : Status::Invalid("too early");
                    })
                    .ok());
  }
}

/// The threads on which `pieces` pieces run.
std::set<std::thread::id> threads_of(size_t pieces, size_t threads) {
  std::mutex mutex;
  std::set<std::thread::id> workers;
  EXPECT_TRUE(in_order(pieces, threads, threads, nothing, [&](size_t) {
                const std::lock_guard lock(mutex);
                workers.insert(std::this_thread::get_id());
                return Status::OK();
              }).ok());
  return workers;
}

TEST(InOrder, WorksOnTheCallingThreadWhereThereIsNothingToShare) {
  const std::set<std::thread::id> caller{std::this_thread::get_id()};
  EXPECT_EQ(threads_of(5, 1), caller);
  EXPECT_EQ(threads_of(1, 5), caller);
}

TEST(InOrder, WorksOnAsManyThreadsAtATimeAsWereAskedFor) {
  std::latch all_at_work(3);  // each waits for the others
  std::mutex mutex;
  std::set<std::thread::id> workers;
  ASSERT_TRUE(in_order(6, 3, 3, nothing, [&](size_t i) {
                if (i < 3) all_at_work.arrive_and_wait();
                const std::lock_guard lock(mutex);
                workers.insert(std::this_thread::get_id());
                return Status::OK();
              }).ok());
  EXPECT_EQ(workers.size(), 3U);
  EXPECT_FALSE(workers.contains(std::this_thread::get_id()));
}

TEST(InOrder, NeedsNoThreadsFromTheSystem) {
  pthread_attr_t usual;
  pthread_attr_t too_large;
  ASSERT_EQ(pthread_getattr_default_np(&usual), 0);
  ASSERT_EQ(pthread_getattr_default_np(&too_large), 0);
  ASSERT_EQ(pthread_attr_setstacksize(&too_large, size_t{1} << 50), 0);
  ASSERT_EQ(pthread_setattr_default_np(&too_large), 0);
  const auto workers = threads_of(5, 3);
  ASSERT_EQ(pthread_setattr_default_np(&usual), 0);
  EXPECT_EQ(workers, std::set<std::thread::id>{std::this_thread::get_id()});
}

TEST(InOrder, ReportsTheLowestFailureThoughItComesLast) {
  std::latch later_failed(1);
  const Status status = in_order(2, 2, 2, nothing, [&later_failed](size_t i) {
    if (i == 0) later_failed.wait();
    if (i == 1) later_failed.count_down();
    return Status::Invalid(std::to_string(i));
  });
  EXPECT_EQ(status, Status::Invalid("0"));
}

TEST(InOrder, ThrowsTheLowestFailureThoughItComesLast) {
  std::latch later_failed(1);
  const auto work = [&later_failed](size_t i) -> Status {
    if (i == 0) later_failed.wait();
    if (i == 1) later_failed.count_down();
    throw std::runtime_error(std::to_string(i));
  };
  EXPECT_EQ(MessageThrown<std::runtime_error>(
                [&] { static_cast<void>(in_order(2, 2, 2, nothing, work)); }),
            "0");
}

TEST(InOrder, PrefersAFailureOfWorkToALaterOneOfWhatComesBefore) {
  std::latch refused(1);
  const auto before = [&refused](size_t i) {
    if (i != 1) return;
    refused.count_down();
    throw std::runtime_error("refused");
  };
  const Status status = in_order(2, 2, 2, before, [&refused](size_t) {
    refused.wait();
    return Status::Invalid("0");
  });
  EXPECT_EQ(status, Status::Invalid("0"));
}

TEST(InOrder, ThrowsWhatComesBeforeThrowsAfterTheWorkThatWasHandedOut) {
  for (const size_t threads : kThreadCounts) {
    for (const size_t stop : {0U, 1U, 2U}) {
      SCOPED_TRACE(std::to_string(threads) + " threads, before " + std::to_string(stop));
      std::vector<int> done(3, 0);
      const auto before = [stop](size_t i) {
        if (i == stop) throw std::runtime_error("stopped before " + std::to_string(i));
      };
      const auto work = [&done](size_t i) {
        ++done[i];
        return Status::OK();
      };
      EXPECT_EQ(MessageThrown<std::runtime_error>(
                    [&] { static_cast<void>(in_order(3, threads, threads, before, work)); }),
                "stopped before " + std::to_string(stop));
      std::vector<int> expected(3, 0);
      std::fill_n(expected.begin(), stop, 1);
      EXPECT_EQ(done, expected);
    }
  }
}

TEST(InOrder, CarriesExceptionsOfAnyKind) {
  for (const size_t threads : kThreadCounts) {
    EXPECT_THROW(static_cast<void>(
                     in_order(3, threads, threads, nothing, [](size_t) -> Status { throw 42; })),
                 int);
  }
}

}  // namespace
}  // namespace numera::extras::parallel
