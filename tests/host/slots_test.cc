// Checks of the in-memory host that go beyond the contract of every host.

#include <initializer_list>
#include <stdexcept>

#include "tests/host/host_test_support.h"

namespace numera::host::memory {
namespace {

using Store = void (*)(hxArray*, size_t, hxArrayPtr);
const Store kStores[] = {hxSetCell, hxReplaceCell};

TEST(Slots, RefuseToBeStoredToInOtherClassesAndBeyondTheEnd) {
  for (const Store store : kStores) {
    const hxArrayPtr cell = hxCreateCellArray(Dims{2, 1});
    const hxArrayPtr points = hxCreateStructArray(Dims{2, 1}, Names{"x", "y"});
    EXPECT_EQ(thrown<std::out_of_range>([&] { store(cell.get(), 2, number(1)); }),
              "Cell index is out of range.");
    EXPECT_EQ(thrown<std::out_of_range>([&] { store(points.get(), 4, number(1)); }),
              "Cell index is out of range.");
    const hxArrayPtr strings = hxCreateStringArrayFrom(hxMakeStringArray(Dims{1, 1}));
    const hxArrayPtr numbers = zeros({1, 1});
    const std::initializer_list<hxArray*> others = {numbers.get(), strings.get(), nullptr};
    for (hxArray* const other : others) {
      EXPECT_EQ(thrown<std::invalid_argument>([&] { store(other, 0, number(1)); }),
                "Array is not cell array.");
    }
  }
}

TEST(Slots, DestroyWhatTheyHeldHoweverTheyAreStoredTo) {
  for (const Store store : kStores) {
    const hxArrayPtr array = hxCreateCellArray(Dims{1, 1});
    store(array.get(), 0, number(1));
    const size_t before = LiveArrays();
    store(array.get(), 0, number(2));
    EXPECT_EQ(LiveArrays(), before);
    EXPECT_EQ(number_in(hxGetCell(array.get(), 0)), 2);
    store(array.get(), 0, nullptr);
    EXPECT_EQ(LiveArrays(), before - 1);
    EXPECT_EQ(hxGetCell(array.get(), 0), nullptr);
  }
}

TEST(Slots, AreNotFoundByANullName) {
  const hxArrayPtr point = hxCreateStructArray(Dims{1, 1}, Names{"x"});
  EXPECT_EQ(hxGetFieldNumber(point.get(), nullptr), -1);
  EXPECT_EQ(thrown<std::invalid_argument>([&] { hxGetFieldChecked(point.get(), 0, nullptr); }),
            "Wrong field name.");
  EXPECT_EQ(thrown<std::invalid_argument>([&] { hxSetField(point.get(), 0, nullptr, number(1)); }),
            "Wrong field name.");
}

TEST(Slots, OfASharedStructAreWritable) {
  const hxArrayPtr point = hxCreateStructArray(Dims{1, 1}, Names{"x"});
  hxSetField(point.get(), 0, "x", number(1));
  const hxArrayPtr copy = hxSharedCopy(point.get());
  hxSetField(point.get(), 0, "x", number(2));
  EXPECT_EQ(number_in(hxGetField(point.get(), 0, "x")), 2);
  EXPECT_EQ(number_in(hxGetField(copy.get(), 0, "x")), 1);
}

TEST(Slots, ShareTheirValuesWhenTheirContainerNoLongerDoes) {
  const hxArrayPtr cell = hxCreateCellArray(Dims{1, 2});
  hxSetCell(cell.get(), 0, number(1));
  const hxArrayPtr copy = hxSharedCopy(cell.get());
  hxSetCell(copy.get(), 1, number(2));
  EXPECT_NE(hxGetCell(copy.get(), 0), hxGetCell(cell.get(), 0));
  EXPECT_EQ(hxGetData(hxGetCell(copy.get(), 0)), hxGetData(hxGetCell(cell.get(), 0)));
}

}  // namespace
}  // namespace numera::host::memory
