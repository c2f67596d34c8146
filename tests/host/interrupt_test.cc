#include <csignal>
#include <stdexcept>
#include <thread>

#include "tests/host/host_test_support.h"

namespace numera::host::memory {
namespace {

struct Interrupt : ::testing::Test {
  ~Interrupt() override {
    ClearInterrupt();
    SetInterruptCheck({});
  }
};

TEST_F(Interrupt, DoesNotHappenUnasked) { EXPECT_NO_THROW(hxThrowIfInterruptPending()); }

TEST_F(Interrupt, IsThrownUntilItIsCleared) {
  RequestInterrupt();
  EXPECT_EQ(thrown<InterruptException>([] { hxThrowIfInterruptPending(); }),
            "The computation was interrupted.");
  EXPECT_THROW(hxThrowIfInterruptPending(), InterruptException);
  ClearInterrupt();
  EXPECT_NO_THROW(hxThrowIfInterruptPending());
}

TEST_F(Interrupt, ReachesEveryThread) {
  RequestInterrupt();
  std::thread([] { EXPECT_THROW(hxThrowIfInterruptPending(), InterruptException); }).join();
}

TEST_F(Interrupt, MayBeAskedForByASignalHandler) {
  const auto previous = std::signal(SIGUSR1, [](int) { RequestInterrupt(); });
  std::raise(SIGUSR1);
  std::signal(SIGUSR1, previous);
  EXPECT_THROW(hxThrowIfInterruptPending(), InterruptException);
}

TEST_F(Interrupt, RunsTheCheckOfItsThreadEveryTime) {
  int runs = 0;
  SetInterruptCheck([&runs] { ++runs; });
  hxThrowIfInterruptPending();
  hxThrowIfInterruptPending();
  std::thread([] { hxThrowIfInterruptPending(); }).join();
  EXPECT_EQ(runs, 2);
  SetInterruptCheck({});
  hxThrowIfInterruptPending();
  EXPECT_EQ(runs, 2);
}

TEST_F(Interrupt, PassesOnWhatTheCheckThrowsAndChecksFirst) {
  RequestInterrupt();
  SetInterruptCheck([] { throw std::runtime_error("stopped"); });
  EXPECT_EQ(thrown<std::runtime_error>([] { hxThrowIfInterruptPending(); }), "stopped");
}

TEST_F(Interrupt, LetsACheckRemoveItself) {
  int runs = 0;
  SetInterruptCheck([&runs] {
    SetInterruptCheck({});
    ++runs;
  });
  hxThrowIfInterruptPending();
  hxThrowIfInterruptPending();
  EXPECT_EQ(runs, 1);
}

}  // namespace
}  // namespace numera::host::memory
