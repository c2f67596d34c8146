#include <utility>

#include "tests/host_conformance/claims.h"

namespace numera::host_conformance {
namespace {

struct DeepNesting : Claim {};

constexpr size_t kDepth = 1000000;

hxArrayPtr nested_cells(bool through_copies) {
  hxArrayPtr inner = number(1);
  for (size_t i = 0; i < kDepth; ++i) {
    hxArrayPtr outer = hxCreateCellArray(Dims{1, 1});
    hxSetCell(outer.get(), 0, through_copies ? hxSharedCopy(inner.get()) : std::move(inner));
    inner = std::move(outer);
  }
  return inner;
}

TEST_F(DeepNesting, IsDestroyedWithoutRecursionOrAllocation) {
  const HostUnderTest& host = host_under_test();
  for (const bool through_copies : {false, true}) {
    SCOPED_TRACE(through_copies);
    hxArrayPtr array = nested_cells(through_copies);
    if (host.fail_allocation_after != nullptr) host.fail_allocation_after(0);
    array.reset();
    if (host.clear_allocation_failure != nullptr) host.clear_allocation_failure();
  }
}

TEST_F(DeepNesting, SurvivesInASharedCopy) {
  hxArrayPtr array = nested_cells(false);
  hxArrayPtr copy = hxSharedCopy(array.get());
  array.reset();
  const hxArray* inner = copy.get();
  for (size_t i = 0; i < kDepth; ++i) inner = hxGetCell(inner, 0);
  EXPECT_EQ(number_in(inner), 1);
}

}  // namespace
}  // namespace numera::host_conformance
