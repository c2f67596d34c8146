#include <utility>

#include "tests/host/host_test_support.h"

namespace numera::host::memory {
namespace {

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

TEST(DeepNesting, IsDestroyedWithoutRecursionOrAllocation) {
  for (const bool through_copies : {false, true}) {
    SCOPED_TRACE(through_copies);
    const size_t before = LiveArrays();
    hxArrayPtr array = nested_cells(through_copies);
    EXPECT_EQ(LiveArrays(), before + kDepth + 1);
    FailAllocationAfter(0);
    array.reset();
    EXPECT_EQ(LiveArrays(), before);
    EXPECT_THROW(zeros({1, 1}), std::bad_alloc) << "the failure was used up";
  }
}

TEST(DeepNesting, SurvivesInASharedCopy) {
  const size_t before = LiveArrays();
  hxArrayPtr array = nested_cells(false);
  hxArrayPtr copy = hxSharedCopy(array.get());
  array.reset();
  EXPECT_EQ(LiveArrays(), before + kDepth + 1);
  hxReplaceCell(copy.get(), 0, nullptr);
  EXPECT_EQ(LiveArrays(), before + 1);
}

}  // namespace
}  // namespace numera::host::memory
