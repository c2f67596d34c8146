#include "tests/host_conformance/claims.h"

namespace numera::host_conformance {
namespace {

struct Interrupts : Claim {
  void SetUp() override {
    if (host_under_test().request_interrupt == nullptr) {
      GTEST_SKIP() << "the host gives no way to ask for an interrupt";
    }
  }
  ~Interrupts() override {
    if (host_under_test().clear_interrupt != nullptr) host_under_test().clear_interrupt();
  }
};

struct Uninterrupted : Claim {};

TEST_F(Uninterrupted, ComputationsGoOn) { EXPECT_NO_THROW(hxThrowIfInterruptPending()); }

TEST_F(Interrupts, AreThrownUntilTheyAreCleared) {
  host_under_test().request_interrupt();
  EXPECT_ANY_THROW(hxThrowIfInterruptPending());
  EXPECT_ANY_THROW(hxThrowIfInterruptPending());
  host_under_test().clear_interrupt();
  EXPECT_NO_THROW(hxThrowIfInterruptPending());
}

}  // namespace
}  // namespace numera::host_conformance
