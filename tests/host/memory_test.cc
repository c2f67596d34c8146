#include <cstdint>
#include <functional>
#include <new>
#include <utility>

#include "numera/host/memory/blocks.h"
#include "numera/host/string_array.h"
#include "numera/host/text_codec.h"
#include "tests/host/host_test_support.h"

namespace numera::host::memory {
namespace {

TEST(Memory, AlignsElementBlocksTo64Bytes) {
  std::vector<hxArrayPtr> arrays;
  for (const size_t length : {0u, 1u, 7u, 127u, 128u, 129u, 5000u, 300000u}) {
    SCOPED_TRACE(length);
    arrays.push_back(zeros({length, 1}));
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(read(arrays.back())) % 64, 0u);
    arrays.push_back(
        hxCreateUninitNumericArray(Dims{length, 1}, hxClassID::UInt8, hxComplexity::Real));
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(read(arrays.back())) % 64, 0u);
  }
}

TEST(Memory, IsRefusedWhereTheElementsOverflow) {
  const Names two_fields = {"a", "b"};
  const std::vector<std::pair<const char*, std::function<void()>>> rows = {
      {"product", [] { zeros({SIZE_MAX, 2}, hxClassID::UInt8); }},
      {"long product", [] { zeros({1u << 31, 1u << 31, 1u << 31}, hxClassID::UInt8); }},
      {"width", [] { zeros({SIZE_MAX / 4, 1}); }},
      {"wrapping width", [] { zeros({(SIZE_MAX >> 3) + 2, 1}); }},
      {"complex width",
       [] {
         hxCreateNumericArray(Dims{SIZE_MAX / 16, 1}, hxClassID::Double, hxComplexity::Complex);
       }},
      {"more than a pointer difference", [] { zeros({SIZE_MAX / 2 + 1, 1}, hxClassID::UInt8); }},
      {"slots", [] { hxCreateCellArray(Dims{SIZE_MAX / 8, 1}); }},
      {"fields", [&] { hxCreateStructArray(Dims{SIZE_MAX / 24, 1}, two_fields); }},
      {"characters", [] { hxCreateCharArray(u"a", SIZE_MAX / 2); }},
      {"texts", [] { hxMakeStringArray(Dims{SIZE_MAX, 2}); }},
  };
  const size_t before = LiveArrays();
  for (const auto& [name, create] : rows) {
    SCOPED_TRACE(name);
    EXPECT_THROW(create(), std::bad_alloc);
  }
  EXPECT_EQ(LiveArrays(), before);
}

TEST(Memory, TakesOneAllocationForASmallArray) {
  if (kSeparateBlocks) GTEST_SKIP() << "a memory checker sees each part of an array";
  const Names names = {"first", "second"};
  const std::vector<std::function<void()>> creations = {
      [] { zeros({10, 2}); },
      [] { hxCreateCharArray("text", 4); },
      [] { hxCreateCellArray(Dims{3, 1}); },
      [&] { hxCreateStructArray(Dims{2, 1}, names); },
  };
  for (const auto& create : creations) {
    FailAllocationAfter(1);
    EXPECT_NO_THROW(create());
    FailAllocationAfter(0);
    EXPECT_THROW(create(), std::bad_alloc);
  }
}

TEST(Memory, FailsOnceAfterTheAllocationsItWasAskedToLetPass) {
  auto strings = hxMakeStringArray(Dims{1, 1});
  const hxUTF8ToUTF16 codec("UTF-8");
  FailAllocationAfter(2);
  EXPECT_EQ(codec.convert("a"), u"a");
  EXPECT_EQ(codec.convert("b"), u"b");
  EXPECT_THROW(codec.convert("c"), std::bad_alloc);
  EXPECT_EQ(codec.convert("d"), u"d");
}

TEST(Memory, FailsNoMoreOnceTheFailureIsCleared) {
  FailAllocationAfter(0);
  ClearAllocationFailure();
  EXPECT_NO_THROW(zeros({1, 1}));
}

/// The fewest allocations of `build_everything`: 16 arrays, shared copies and stores of texts,
/// three arrays that are unshared when they are written, and the texts themselves.
constexpr size_t kFewestAllocations = 20;

void build_everything() {
  const hxArrayPtr point = hxCreateStructArray(Dims{1, 1}, Names{"x", "y"});
  hxSetField(point.get(), 0, "x", zeros({100000, 1}));
  const hxArrayPtr copy = hxSharedCopy(point.get());
  hxSetField(copy.get(), 0, "y", hxCreateCharArray("text", 4));
  const hxArrayPtr cell = hxCreateCellArray(Dims{400, 1});
  for (size_t i = 0; i < 3; ++i) hxSetCell(cell.get(), i, hxSharedCopy(copy.get()));
  const hxArrayPtr cells = hxSharedCopy(cell.get());
  hxReplaceCell(cells.get(), 1, CreateObjectArray("thing", Dims{1, 1}, Names{"z"}));
  auto strings = hxMakeStringArray(Dims{3, 1});
  strings->set(1, u"one");
  strings->set(0, u"zero");
  strings->set_missing(2);
  const hxArrayPtr texts = hxCreateStringArrayFrom(std::move(strings));
  const hxArrayPtr shared_texts = hxSharedCopy(texts.get());
  hxGetString(hxCreateCharArray(u"\u20AC", 1).get());
  const hxArrayPtr numbers = zeros({5, 1});
  const hxArrayPtr numbers_copy = hxSharedCopy(numbers.get());
  hxGetData(numbers.get());
}

TEST(Memory, LosesNothingWhicheverAllocationFails) {
  const size_t before = LiveArrays();
  size_t failures = 0;
  for (bool done = false; !done;) {
    FailAllocationAfter(failures);
    try {
      build_everything();
      done = true;
    } catch (const std::bad_alloc&) {
      ++failures;
    }
    ASSERT_EQ(LiveArrays(), before) << "after failing allocation " << failures;
  }
  ClearAllocationFailure();
  EXPECT_GE(failures, kFewestAllocations);
}

TEST(Memory, LeavesAContainerAsItWasWhenUnsharingFails) {
  const hxArrayPtr cell = hxCreateCellArray(Dims{1, 2});
  hxSetCell(cell.get(), 0, number(1));
  hxSetCell(cell.get(), 1, number(2));
  const hxArrayPtr copy = hxSharedCopy(cell.get());
  const hxArray* const first = hxGetCell(copy.get(), 0);
  hxArrayPtr value = number(3);
  FailAllocationAfter(2);
  EXPECT_THROW(hxSetCell(copy.get(), 0, std::move(value)), std::bad_alloc);
  EXPECT_EQ(hxGetCell(copy.get(), 0), first);
  EXPECT_TRUE(hxIsDataShared(copy.get()));
}

#ifdef NUMERA_HOST_CHECKED_MEMORY
volatile char sink;

TEST(MemoryCheckerDeathTest, CatchesAReadPastTheElements) {
  ::testing::FLAGS_gtest_death_test_style = "threadsafe";
  for (const size_t length : {0u, 1u, 63u, 64u, 100000u}) {
    SCOPED_TRACE(length);
    const hxArrayPtr array = zeros({length, 1}, hxClassID::UInt8);
    const auto* const bytes = static_cast<const char*>(read(array));
    EXPECT_DEATH(sink = bytes[length], "AddressSanitizer");
  }
}

TEST(MemoryCheckerDeathTest, CatchesAReadPastTheDimensions) {
  ::testing::FLAGS_gtest_death_test_style = "threadsafe";
  const hxArrayPtr array = zeros({1, 1});
  const size_t* const dims = hxGetDimensions(array.get()).data();
  EXPECT_DEATH(sink = static_cast<char>(dims[2]), "AddressSanitizer");
}

TEST(MemoryCheckerDeathTest, CatchesAReadAfterDestruction) {
  ::testing::FLAGS_gtest_death_test_style = "threadsafe";
  hxArrayPtr array = number(1);
  const hxArrayPtr copy = hxSharedCopy(array.get());
  hxArrayPtr other = number(2);
  const hxArray* const dead = array.get();
  const auto* const dead_bytes = static_cast<const char*>(read(other));
  array.reset();
  other.reset();
  EXPECT_DEATH(hxGetClassID(dead), "AddressSanitizer");
  EXPECT_DEATH(sink = *dead_bytes, "AddressSanitizer");
}
#endif

}  // namespace
}  // namespace numera::host::memory
