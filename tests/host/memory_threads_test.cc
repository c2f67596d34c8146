// Memory that is allocated on one thread and freed on another.

#include <condition_variable>
#include <cstdint>
#include <cstring>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>

#include "tests/host/host_test_support.h"

namespace numera::host::memory {
namespace {

constexpr size_t kThreads = 4;

hxArrayPtr filled(size_t count, std::uint8_t value) {
  hxArrayPtr array =
      hxCreateUninitNumericArray(Dims{count, 1}, hxClassID::UInt8, hxComplexity::Real);
  std::memset(hxGetData(array.get()), value, count);
  return array;
}

/// Checks about twenty elements, including the first and the last.
bool holds_only(const hxArrayPtr& array, std::uint8_t value) {
  const size_t count = hxGetNumberOfElements(array.get());
  const auto* const values = static_cast<const std::uint8_t*>(read(array));
  for (size_t i = 0; i < count; i += count / 20 + 1) {
    if (values[i] != value) return false;
  }
  return count == 0 || values[count - 1] == value;
}

/// Sizes that lead to small blocks, heap blocks and mapped blocks.
size_t size_of(size_t i) {
  constexpr size_t kSizes[] = {0, 16, 100, 900, 3000, 50'000, 200'000};
  return kSizes[i % std::size(kSizes)];
}

template <class Work>
void run_on_threads(Work work) {
  std::vector<std::thread> threads;
  for (size_t i = 0; i < kThreads; ++i) threads.emplace_back([=] { work(i); });
  for (std::thread& thread : threads) thread.join();
}

class MemoryOfThreads : public ::testing::Test {
 protected:
  ~MemoryOfThreads() override {
    EXPECT_EQ(LiveArrays(), arrays_);
    EXPECT_EQ(LiveBytes(), bytes_);
    ReleaseUnused();
    EXPECT_EQ(KeptBytes(), 0u);
  }

 private:
  size_t arrays_ = LiveArrays();
  size_t bytes_ = LiveBytes();
};

TEST_F(MemoryOfThreads, IsFreedOnAnotherThreadThanItWasMadeOn) {
  std::vector<hxArrayPtr> arrays;
  std::thread([&arrays] {
    for (size_t i = 0; i < 20'000; ++i) {
      arrays.push_back(filled(i % 2000, static_cast<std::uint8_t>(i)));
    }
  }).join();
  for (size_t i = 0; i < arrays.size(); ++i) {
    ASSERT_TRUE(holds_only(arrays[i], static_cast<std::uint8_t>(i)));
  }
  std::thread([&arrays] { arrays.clear(); }).join();
}

TEST_F(MemoryOfThreads, OutlivesTheThreadThatMadeIt) {
  hxArrayPtr copy;
  std::thread([&copy] {
    const hxArrayPtr array = filled(16, 7);
    copy = hxSharedCopy(array.get());
  }).join();
  EXPECT_TRUE(holds_only(copy, 7));
  EXPECT_EQ(dims_of(copy), (Dims{16, 1}));
  EXPECT_FALSE(hxIsDataShared(copy.get()));
}

TEST_F(MemoryOfThreads, IsReusedByOneThreadAfterAnother) {
  for (int round = 0; round < 200; ++round) {
    std::thread([] {
      std::vector<hxArrayPtr> arrays;
      for (size_t i = 0; i < 300; ++i) arrays.push_back(filled(size_of(i % 4), 1));
    }).join();
  }
}

TEST_F(MemoryOfThreads, IsMadeAndFreedByManyAtOnce) {
  run_on_threads([](size_t thread) {
    std::vector<hxArrayPtr> arrays(50);
    for (size_t i = 0; i < 2000; ++i) {
      hxArrayPtr& array = arrays[i * 7 % arrays.size()];
      const auto value = static_cast<std::uint8_t>(thread * 50 + i * 7 % arrays.size());
      ASSERT_TRUE(array == nullptr || holds_only(array, value));
      array = filled(size_of(i), value);
      if (i % 500 == thread) ReleaseUnused();
    }
  });
}

TEST_F(MemoryOfThreads, IsPassedOnByManyAtOnce) {
  struct Queue {
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<hxArrayPtr> arrays;
  };
  Queue queues[kThreads];
  run_on_threads([&queues](size_t thread) {
    Queue& mine = queues[thread];
    Queue& next = queues[(thread + 1) % kThreads];
    for (size_t i = 0; i < 2000; ++i) {
      hxArrayPtr made = filled(size_of(i), static_cast<std::uint8_t>(i));
      {
        const std::lock_guard lock(next.mutex);
        next.arrays.push_back(std::move(made));
      }
      next.changed.notify_one();
      std::unique_lock lock(mine.mutex);
      mine.changed.wait(lock, [&mine] { return !mine.arrays.empty(); });
      const hxArrayPtr got = std::move(mine.arrays.front());
      mine.arrays.pop_front();
      lock.unlock();
      ASSERT_TRUE(holds_only(got, static_cast<std::uint8_t>(i)));
    }
  });
}

TEST_F(MemoryOfThreads, OfACellIsSharedByManyThatWriteTheirCopies) {
  hxArrayPtr cell = hxCreateCellArray(Dims{100, 1});
  for (size_t i = 0; i < 100; ++i) hxSetCell(cell.get(), i, filled(16, 3));
  std::vector<hxArrayPtr> copies;
  for (size_t i = 0; i < kThreads; ++i) copies.push_back(hxSharedCopy(cell.get()));
  cell.reset();
  run_on_threads([&copies](size_t thread) {
    const hxArrayPtr mine = std::move(copies[thread]);
    for (size_t i = 0; i < 100; ++i) {
      hxReplaceCell(mine.get(), i, filled(16, static_cast<std::uint8_t>(thread)));
    }
  });
}

/// Destroys its array when its thread ends.
struct Keeper {
  hxArrayPtr array;
};

TEST_F(MemoryOfThreads, IsFreedAtTheVeryEndOfAThread) {
  for (const size_t size : {16u, 900u, 50'000u, 200'000u}) {
    SCOPED_TRACE(size);
    std::thread([size] {
      // Constructed before the thread's first array, so it is destroyed after the thread-local
      // memory of the host.
      thread_local Keeper keeper;
      keeper.array = filled(size, 1);
    }).join();
  }
}

}  // namespace
}  // namespace numera::host::memory
