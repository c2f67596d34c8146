// Memory of destroyed arrays is kept for reuse, up to a limit, until it is released.

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <set>
#include <utility>

#include "numera/host/memory/blocks.h"
#include "tests/host/host_test_support.h"

namespace numera::host::memory {
namespace {

constexpr size_t kMiB = size_t{1024} * 1024;

hxArrayPtr bytes(size_t count) {
  return hxCreateUninitNumericArray(Dims{count, 1}, hxClassID::UInt8, hxComplexity::Real);
}

class Reuse : public ::testing::Test {
 protected:
  void SetUp() override {
    if (kSeparateBlocks) GTEST_SKIP() << "nothing is kept under a memory checker";
    ReleaseUnused();
  }
  void TearDown() override { ReleaseUnused(); }
};

TEST_F(Reuse, KeepsADestroyedBlockForTheNextOfItsSize) {
  for (const size_t size : {4096u, 100'000u, 1'000'000u, 10'000'000u}) {
    SCOPED_TRACE(size);
    hxArrayPtr array = bytes(size);
    const void* const place = read(array);
    array.reset();
    EXPECT_GE(KeptBytes(), size);
    array = bytes(size);
    EXPECT_EQ(read(array), place);
    EXPECT_EQ(KeptBytes(), 0u);
    array.reset();
    ReleaseUnused();
  }
}

TEST_F(Reuse, GivesABlockToARequestThatIsALittleSmaller) {
  hxArrayPtr array = bytes(kMiB);
  const void* const place = read(array);
  array.reset();
  array = bytes(kMiB - kMiB / 100);
  EXPECT_EQ(read(array), place);
  array.reset();
  array = bytes(kMiB - kMiB / 10);
  EXPECT_NE(read(array), place);
}

TEST_F(Reuse, TakesAtMostOne32ndMoreThanWasAskedFor) {
  const size_t before = LiveBytes();
  for (size_t size = 2049; size < 64 * kMiB; size += size / 7) {
    SCOPED_TRACE(size);
    const hxArrayPtr array = bytes(size);
    const size_t taken = LiveBytes() - before;
    EXPECT_GE(taken, size);
    EXPECT_LE(taken, size + size / 32 + 64);
  }
}

TEST_F(Reuse, HandsOutZerosWhereTheyAreAskedFor) {
  for (const size_t size : {16u, 4096u, 1'000'000u, 10'000'000u}) {
    SCOPED_TRACE(size);
    hxArrayPtr array = bytes(size);
    const void* const place = read(array);
    std::memset(hxGetData(array.get()), 0xFF, size);
    array.reset();
    array = zeros({size, 1}, hxClassID::UInt8);
    ASSERT_EQ(read(array), place);
    const auto* const values = static_cast<const std::uint8_t*>(read(array));
    EXPECT_TRUE(std::all_of(values, values + size, [](std::uint8_t value) { return value == 0; }));
  }
}

TEST_F(Reuse, LeavesNoValueInTheSlotsOfANewContainer) {
  {
    const hxArrayPtr full = bytes(8000 * sizeof(void*));
  }
  const hxArrayPtr cell = hxCreateCellArray(Dims{8000, 1});
  for (size_t i = 0; i < 8000; ++i) ASSERT_EQ(hxGetCell(cell.get(), i), nullptr);
}

TEST_F(Reuse, GivesEachStructTheNamesItWasMadeWith) {
  const Dims dims{1, 1};
  const hxArrayPtr first = hxCreateStructArray(dims, Names{"type", "data"});
  const hxArrayPtr same_count = hxCreateStructArray(dims, Names{"type", "date"});
  const hxArrayPtr swapped = hxCreateStructArray(dims, Names{"data", "type"});
  const hxArrayPtr again = hxCreateStructArray(dims, Names{"type", "data"});
  for (const hxArray* const array : {first.get(), again.get()}) {
    EXPECT_STREQ(hxGetFieldName(array, 0), "type");
    EXPECT_STREQ(hxGetFieldName(array, 1), "data");
  }
  EXPECT_STREQ(hxGetFieldName(same_count.get(), 1), "date");
  EXPECT_STREQ(hxGetFieldName(swapped.get(), 0), "data");
}

TEST_F(Reuse, RefusesANullNameAfterAStructOfTheSameShape) {
  const hxArrayPtr named = hxCreateStructArray(Dims{1, 1}, Names{"type", "data"});
  EXPECT_EQ(thrown<std::invalid_argument>(
                [] { hxCreateStructArray(Dims{1, 1}, Names{"type", nullptr}); }),
            "Field name is null.");
}

TEST_F(Reuse, NeverKeepsMoreThanTheBound) {
  std::vector<hxArrayPtr> arrays;
  for (size_t taken = 0; taken <= kMaxKeptBytes + 100 * kMiB; taken += 20 * kMiB) {
    arrays.push_back(bytes(20 * kMiB));
  }
  while (!arrays.empty()) {
    arrays.pop_back();
    EXPECT_LE(KeptBytes(), kMaxKeptBytes);
  }
  EXPECT_GT(KeptBytes(), kMaxKeptBytes - 21 * kMiB);
}

TEST_F(Reuse, LetsTheBlocksKeptLongestGoFirst) {
  std::vector<hxArrayPtr> arrays;
  std::vector<const void*> places;
  for (int i = 0; i < 3; ++i) {
    arrays.push_back(bytes(100 * kMiB));
    places.push_back(read(arrays.back()));
  }
  for (hxArrayPtr& array : arrays) array.reset();
  const hxArrayPtr first = bytes(100 * kMiB);
  const hxArrayPtr second = bytes(100 * kMiB);
  EXPECT_EQ(read(first), places[2]);
  EXPECT_EQ(read(second), places[1]);
  EXPECT_EQ(KeptBytes(), 0u);
}

TEST_F(Reuse, KeepsNoBlockThatIsLargerThanTheBound) {
  bytes(kMaxKeptBytes + kMiB).reset();
  EXPECT_EQ(KeptBytes(), 0u);
}

TEST_F(Reuse, GivesBackWhatIsKept) {
  bytes(10 * kMiB).reset();
  const size_t kept = KeptBytes();
  EXPECT_EQ(ReleaseUnused(), kept);
  EXPECT_EQ(KeptBytes(), 0u);
  EXPECT_EQ(ReleaseUnused(), 0u);
}

TEST_F(Reuse, GivesBackTheChunksThatNoSmallArrayIsLeftIn) {
  constexpr size_t kCount = 200'000;
  const auto build = [] {
    hxArrayPtr cell = hxCreateCellArray(Dims{kCount, 1});
    for (size_t i = 0; i < kCount; ++i) hxSetCell(cell.get(), i, bytes(16));
    return cell;
  };
  hxArrayPtr cell = build();
  EXPECT_LE(LiveBytes(), 65 * kCount + kCount * sizeof(void*) + 2 * kMiB);
  cell.reset();
  const size_t kept = KeptBytes();
  EXPECT_GT(kept, kCount * 64 - 4 * kMiB);
  cell = build();
  EXPECT_LT(KeptBytes(), 4 * kMiB);
  cell.reset();
  EXPECT_GT(ReleaseUnused(), kept - 4 * kMiB);
  EXPECT_EQ(KeptBytes(), 0u);
}

TEST_F(Reuse, GivesSmallBlocksOutAgain) {
  const auto places_of = [](size_t count) {
    std::vector<hxArrayPtr> arrays;
    std::set<const void*> places;
    for (size_t i = 0; i < count; ++i) {
      arrays.push_back(bytes(16));
      places.insert(read(arrays.back()));
    }
    return places;
  };
  constexpr size_t kCount = 50;
  const std::set<const void*> first = places_of(kCount);
  EXPECT_EQ(first.size(), kCount);
  EXPECT_EQ(places_of(kCount), first);
}

TEST(Memory, CountsTheBytesThatArraysHold) {
  const size_t before = LiveBytes();
  hxArrayPtr large = bytes(10 * kMiB);
  EXPECT_GE(LiveBytes(), before + 10 * kMiB);
  EXPECT_LE(LiveBytes(), before + 10 * kMiB + kMiB / 2);
  const size_t one = LiveBytes();
  const hxArrayPtr copy = hxSharedCopy(large.get());
  EXPECT_LT(LiveBytes(), one + 1000);
  large.reset();
  EXPECT_GE(LiveBytes(), before + 10 * kMiB);
}

TEST(Memory, CountsNoByteOfWhatIsDestroyed) {
  const size_t before = LiveBytes();
  {
    const hxArrayPtr point = hxCreateStructArray(Dims{1, 1}, Names{"x", "y"});
    hxSetField(point.get(), 0, "x", zeros({100'000, 1}));
    hxSetField(point.get(), 0, "y", hxCreateCharArray("text", 4));
    const hxArrayPtr copy = hxSharedCopy(point.get());
    hxSetField(copy.get(), 0, "x", number(1));
    auto strings = hxMakeStringArray(Dims{1000, 1});
    for (size_t i = 0; i < 1000; ++i) strings->set(i, u"a text of some length");
    const hxArrayPtr texts = hxCreateStringArrayFrom(std::move(strings));
    EXPECT_GT(LiveBytes(), before + 100'000 * sizeof(double) + 1000 * 40);
  }
  EXPECT_EQ(LiveBytes(), before);
}

TEST(Memory, FailsAfterTheSameNumberOfAllocationsWithReuse) {
  const auto allocations = [] {
    size_t count = 0;
    for (;; ++count) {
      FailAllocationAfter(count);
      try {
        const hxArrayPtr cell = hxCreateCellArray(Dims{2, 1});
        hxSetCell(cell.get(), 0, bytes(16));
        hxSetCell(cell.get(), 1, bytes(kMiB));
        hxGetData(hxSharedCopy(hxGetCell(cell.get(), 1)).get());
        break;
      } catch (const std::bad_alloc&) {
      }
    }
    ClearAllocationFailure();
    return count;
  };
  ReleaseUnused();
  const size_t fresh = allocations();
  EXPECT_EQ(fresh, kSeparateBlocks ? 15u : 7u);
  EXPECT_EQ(allocations(), fresh);
}

}  // namespace
}  // namespace numera::host::memory
