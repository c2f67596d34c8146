// The host's memory and switches, used by many threads at once.

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "numera/core/to_numera.h"
#include "numera/host/memory.h"
#include "tests/support/arrow_values.h"
#include "tests/support/every_type.h"
#include "tests/support/host_builder.h"
#include "tests/threads/on_threads.h"

namespace numera::testing {
namespace {

using namespace host::memory;
using io::arrow::core::to_numera;

/// A column of `size` bytes, all equal to `value`.
hxArrayPtr filled(size_t size, std::uint8_t value) {
  hxArrayPtr array = hxCreateUninitNumericArray(Dims{size, 1}, hxClassID::UInt8, {});
  std::fill_n(static_cast<std::uint8_t*>(hxGetData(array.get())), size, value);
  return array;
}

bool is_filled(const hxArray* array, std::uint8_t value) {
  const auto* bytes = static_cast<const std::uint8_t*>(hxGetData(array));
  return std::all_of(bytes, bytes + hxGetNumberOfElements(array),
                     [value](std::uint8_t byte) { return byte == value; });
}

class Contention : public ::testing::Test {
 protected:
  ~Contention() override {
    ClearInterrupt();
    EXPECT_EQ(LiveArrays(), arrays_) << "host arrays left";
    EXPECT_EQ(LiveBytes(), bytes_) << "bytes of host arrays left";
  }

 private:
  size_t arrays_ = LiveArrays();
  size_t bytes_ = LiveBytes();
};

/// Every thread makes, fills, checks and destroys arrays of these sizes. It holds several at a
/// time.
void make_and_destroy(const std::vector<size_t>& sizes, int rounds) {
  on_threads([&](size_t thread) {
    const auto mark = static_cast<std::uint8_t>(thread + 1);
    std::vector<hxArrayPtr> held(7);
    for (int round = 0; round < rounds; ++round) {
      const auto turn = static_cast<size_t>(round);
      hxArrayPtr& place = held[turn % held.size()];
      EXPECT_TRUE(place == nullptr || is_filled(place.get(), mark));
      place = filled(sizes[turn % sizes.size()], mark);
    }
  });
}

TEST_F(Contention, SmallArraysOfDifferentThreadsNeverShareMemory) {
  make_and_destroy({0, 1, 16, 64, 100, 500, 2000}, 5000);
}

TEST_F(Contention, LargeArraysOfDifferentThreadsNeverShareMemory) {
  make_and_destroy({3'000, 70'000, 300'000, 1'000'000, 3'000'000}, 60);
}

TEST_F(Contention, ZeroedArraysAreZeroWhateverTheMemoryHeldBefore) {
  on_threads([](size_t) {
    for (int round = 0; round < 100; ++round) {
      for (const size_t size : {16U, 1000U, 100000U}) {
        const hxArrayPtr used = filled(size, 0xFF);
        const hxArrayPtr zeros = hxCreateNumericArray(Dims{size, 1}, hxClassID::UInt8, {});
        EXPECT_TRUE(is_filled(zeros.get(), 0));
      }
    }
  });
}

TEST_F(Contention, UnusedMemoryMayBeReleasedAtAnyTime) {
  std::atomic<bool> done = false;
  std::thread releasing([&done] {
    while (!done) {
      ReleaseUnused();
      EXPECT_LE(KeptBytes(), kMaxKeptBytes);
      static_cast<void>(LiveBytes() + LiveArrays());
      std::this_thread::yield();
    }
  });
  make_and_destroy({1, 16, 100'000, 500, 1'000'000}, 300);
  done = true;
  releasing.join();
}

TEST_F(Contention, AThreadThatFailsDisturbsNoOther) {
  const auto table = table_of({ArrowChunks(::arrow::utf8(), {R"(["a"])"}),
                               ArrowChunks(::arrow::list(::arrow::int8()), {"[[1, 2], null]"})});
  on_threads([&table](size_t thread) {
    for (size_t site = 0; site < 30; ++site) {
      if (thread % 2 == 0) {
        EXPECT_TRUE(to_numera(table).ok());
        continue;
      }
      FailAllocationAfter(site);
      try {
        static_cast<void>(to_numera(table));
      } catch (const std::bad_alloc&) {
      }
      ClearAllocationFailure();
    }
  });
}

TEST_F(Contention, AnInterruptStopsEveryThread) {
  const auto table = table_of({ArrowChunks(::arrow::int8(), {"[1]"})});
  on_threads([&table](size_t thread) {
    try {
      while (true) {
        EXPECT_TRUE(to_numera(table).ok());
        if (thread == 0) RequestInterrupt();
      }
    } catch (const InterruptException&) {
    }
  });
}

TEST_F(Contention, AnInterruptCheckBelongsToItsThread) {
  const auto table = table_of({ArrowChunks(::arrow::int8(), {"[1]"})});
  on_threads([&table](size_t thread) {
    SetInterruptCheck([thread] { throw thread; });
    try {
      static_cast<void>(to_numera(table));
      ADD_FAILURE() << "not interrupted";
    } catch (const size_t thrown) {
      EXPECT_EQ(thrown, thread);
    }
  });
}

}  // namespace
}  // namespace numera::testing
