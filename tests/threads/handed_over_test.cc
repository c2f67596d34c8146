// Host arrays and owned Arrow values that one thread makes and another thread releases.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <mutex>
#include <utility>
#include <vector>

#include "numera/core/to_numera.h"
#include "numera/extras/encode/encode.h"
#include "numera/extras/own/own.h"
#include "numera/host/memory.h"
#include "tests/support/envelopes.h"
#include "tests/support/every_type.h"
#include "tests/support/host_builder.h"
#include "tests/threads/on_threads.h"

namespace numera::testing {
namespace {

using host::memory::LiveArrays;
using io::arrow::core::to_numera;

constexpr int kRounds = 200;

/// Lets threads pass values to each other.
template <class T>
class Exchange {
 public:
  /// Stores a value and returns a value that was stored earlier, if there is one.
  T swap(T value) {
    const std::lock_guard lock(mutex_);
    std::swap(value, values_[next_]);
    next_ = (next_ + 1) % values_.size();
    return value;
  }

 private:
  std::mutex mutex_;
  std::array<T, 3 * kThreads + 1> values_;
  size_t next_ = 0;
};

class HandedOver : public ::testing::Test {
 protected:
  ~HandedOver() override { EXPECT_EQ(LiveArrays(), before_) << "host arrays left"; }

 private:
  size_t before_ = LiveArrays();
};

/// Small arrays from slabs, large arrays from blocks that are kept, and trees of both.
hxArrayPtr some_array(int round) {
  switch (round % 6) {
    case 0:
      return Scalar<double>(round);
    case 1:
      return Column<std::uint8_t>(std::vector<std::uint8_t>(16, 7));
    case 2:
      return Column<double>(std::vector<double>(40'000, 1.5));
    case 3:
      return Cell({Scalar<double>(1), Char("text"), Column<float>(std::vector<float>(1000))});
    case 4:
      return Strings({u"a", std::nullopt, u"a text that is longer than most"});
    default:
      return Numbers<std::int8_t>({1, 2, 3});
  }
}

TEST_F(HandedOver, ArraysMayBeDestroyedOnAnyThread) {
  Exchange<hxArrayPtr> exchange;
  on_threads([&exchange](size_t thread) {
    for (int round = 0; round < kRounds; ++round) {
      const hxArrayPtr foreign = exchange.swap(some_array(round + static_cast<int>(thread)));
    }
  });
}

TEST_F(HandedOver, ArraysOutliveTheThreadThatMadeThem) {
  std::array<std::vector<hxArrayPtr>, kThreads> made;
  on_threads([&made](size_t thread) {
    for (int round = 0; round < kRounds; ++round) made[thread].push_back(some_array(round));
  });
  EXPECT_EQ(*static_cast<const double*>(hxGetData(std::as_const(made[0][0]).get())), 0.0);
  on_threads([&made](size_t thread) { made[(thread + 1) % kThreads].clear(); });
}

TEST_F(HandedOver, SharedCopiesMayBeWrittenAndDestroyedOnAnyThread) {
  Exchange<hxArrayPtr> exchange;
  const hxArrayPtr original = Column<double>(std::vector<double>(10'000, 1.5));
  on_threads([&](size_t) {
    for (int round = 0; round < kRounds; ++round) {
      const hxArrayPtr foreign = exchange.swap(hxSharedCopy(original.get()));
      if (foreign == nullptr) continue;
      if (round % 3 == 0) *static_cast<double*>(hxGetData(foreign.get())) = round;
      const hxArrayPtr again = hxSharedCopy(foreign.get());
      EXPECT_EQ(static_cast<const double*>(hxGetData(std::as_const(again).get()))[1], 1.5);
    }
  });
  EXPECT_EQ(*static_cast<const double*>(hxGetData(std::as_const(original).get())), 1.5);
}

TEST_F(HandedOver, OwnedArrowValuesMayBeReleasedOnAnyThread) {
  Exchange<std::shared_ptr<::arrow::Array>> exchange;
  on_threads([&exchange](size_t) {
    for (int round = 0; round < kRounds; ++round) {
      auto owned =
          extras::own_to_arrow<::arrow::Array>(Numbers<double>({1, 2, 3}, {0b101})).ValueOrDie();
      const auto foreign = exchange.swap(std::move(owned));
      EXPECT_TRUE(foreign == nullptr || foreign->null_count() == 1);
    }
  });
}

TEST_F(HandedOver, AnOwnedTableLivesUntilTheLastThreadDropsItsSlice) {
  const hxArrayPtr written = to_numera(table_of_every_type()).ValueOrDie();
  const hxArrayPtr readable = extras::make_readable(written.get()).ValueOrDie();
  auto table = extras::own_to_arrow_table(hxSharedCopy(readable.get())).ValueOrDie();
  std::array<std::shared_ptr<::arrow::Table>, kThreads> slices;
  for (size_t i = 0; i < kThreads; ++i) slices[i] = table->Slice(static_cast<std::int64_t>(i % 2));
  table.reset();
  on_threads([&slices](size_t thread) {
    EXPECT_TRUE(columns_are_valid(*slices[thread]));
    slices[thread].reset();
  });
}

}  // namespace
}  // namespace numera::testing
