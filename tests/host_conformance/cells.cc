#include <stdexcept>
#include <utility>

#include "tests/host_conformance/claims.h"

namespace numera::host_conformance {
namespace {

struct Cells : Claim {};

using Store = void (*)(hxArray*, size_t, hxArrayPtr);
const Store kStores[] = {hxSetCell, hxReplaceCell};

TEST_F(Cells, StoreAndReturnTheVeryArray) {
  for (const Store store : kStores) {
    const hxArrayPtr array = hxCreateCellArray(Dims{1, 2});
    hxArrayPtr value = number(3);
    const hxArray* const address = value.get();
    store(array.get(), 1, std::move(value));
    EXPECT_EQ(hxGetCell(array.get(), 1), address);
    EXPECT_EQ(hxGetCellChecked(array.get(), 1), address);
    EXPECT_EQ(hxGetCell(array.get(), 0), nullptr);
  }
}

TEST_F(Cells, DestroyWhatTheyHeldWhereItIsReplacedAndAreEmptiedByNull) {
  const hxArrayPtr array = hxCreateCellArray(Dims{1, 1});
  hxReplaceCell(array.get(), 0, number(1));
  const size_t before = live_arrays();
  hxReplaceCell(array.get(), 0, number(2));
  EXPECT_EQ(live_arrays(), before);
  EXPECT_EQ(number_in(hxGetCell(array.get(), 0)), 2);
  hxReplaceCell(array.get(), 0, nullptr);
  expect_live_arrays(before - 1);
  EXPECT_EQ(hxGetCell(array.get(), 0), nullptr);
  hxSetCell(array.get(), 0, number(3));
  EXPECT_EQ(number_in(hxGetCell(array.get(), 0)), 3);
}

TEST_F(Cells, AreNullOutsideOfTheArrayAndInOtherClasses) {
  EXPECT_EQ(hxGetCell(hxCreateCellArray(Dims{1, 1}).get(), 1), nullptr);
  EXPECT_EQ(hxGetCell(zeros({1, 1}).get(), 0), nullptr);
  EXPECT_EQ(hxGetCell(two_points().get(), 0), nullptr);
}

TEST_F(Cells, CheckTheClassThenTheIndex) {
  const hxArrayPtr cell = hxCreateCellArray(Dims{2, 1});
  EXPECT_EQ(thrown<std::out_of_range>([&] { hxGetCellChecked(cell.get(), 2); }),
            "Cell index is out of range.");
  for (const hxArrayPtr& other : {zeros({1, 1}), two_points(), hxArrayPtr()}) {
    EXPECT_EQ(thrown<std::invalid_argument>([&] { hxGetCellChecked(other.get(), 9); }),
              "Array is not cell array.");
  }
}

}  // namespace
}  // namespace numera::host_conformance
