#include <initializer_list>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "numera/host/string_array.h"
#include "tests/host/host_test_support.h"

namespace numera::host::memory {
namespace {

hxArrayPtr two_points() { return hxCreateStructArray(Dims{2, 1}, Names{"x", "y"}); }

struct Container {
  const char* name;
  hxArrayPtr (*make)();
};

const Container kStructs[] = {
    {"struct", two_points},
    {"object", [] { return CreateObjectArray("point", Dims{2, 1}, Names{"x", "y"}); }},
};

TEST(Fields, FindsAFieldByItsWholeName) {
  const hxArrayPtr array = two_points();
  EXPECT_EQ(hxGetFieldNumber(array.get(), "x"), 0);
  EXPECT_EQ(hxGetFieldNumber(array.get(), "y"), 1);
  EXPECT_EQ(hxGetFieldNumber(array.get(), "X"), -1);
  EXPECT_EQ(hxGetFieldNumber(array.get(), "xy"), -1);
  EXPECT_EQ(hxGetFieldNumber(array.get(), ""), -1);
  EXPECT_EQ(hxGetFieldNumber(array.get(), nullptr), -1);
}

TEST(Fields, FindsTheFirstOfEqualNamesAmongFewAndMany) {
  for (const size_t count : {size_t{3}, size_t{300}}) {
    SCOPED_TRACE(count);
    std::vector<std::string> texts;
    for (size_t i = 0; i + 1 < count; ++i) texts.push_back("field" + std::to_string(i));
    texts.push_back("field1");
    Names names;
    for (const std::string& text : texts) names.push_back(text.c_str());
    const hxArrayPtr array = hxCreateStructArray(Dims{1, 1}, names);
    for (size_t i = 0; i + 1 < count; ++i) {
      EXPECT_EQ(hxGetFieldNumber(array.get(), names[i]), static_cast<int>(i));
    }
    EXPECT_EQ(hxGetFieldNumber(array.get(), "fiel"), -1);
    EXPECT_EQ(hxGetFieldNumber(array.get(), "zebra"), -1);
  }
}

TEST(Fields, NamesNoFieldOutsideOfTheirNumber) {
  const hxArrayPtr array = two_points();
  EXPECT_EQ(hxGetFieldName(array.get(), -1), nullptr);
  EXPECT_EQ(hxGetFieldName(array.get(), 2), nullptr);
}

TEST(Fields, HaveNoneInArraysThatAreNoStructs) {
  const hxArrayPtr array = zeros({1, 1});
  EXPECT_EQ(hxGetNumberOfFields(array.get()), 0);
  EXPECT_EQ(hxGetFieldNumber(array.get(), "x"), -1);
  EXPECT_EQ(hxGetField(array.get(), 0, "x"), nullptr);
}

TEST(Fields, StoreAndReturnTheVeryArray) {
  for (const Container& row : kStructs) {
    SCOPED_TRACE(row.name);
    const hxArrayPtr array = row.make();
    hxArrayPtr value = number(7);
    hxArray* const address = value.get();
    hxSetField(array.get(), 1, "x", std::move(value));
    EXPECT_EQ(hxGetField(array.get(), 1, "x"), address);
    EXPECT_EQ(hxGetFieldChecked(array.get(), 1, "x"), address);
    EXPECT_EQ(hxGetField(array.get(), 0, "x"), nullptr);
    *static_cast<double*>(hxGetData(address)) = 8;
    EXPECT_EQ(number_in(hxGetField(array.get(), 1, "x")), 8);
  }
}

TEST(Fields, LieElementByElement) {
  const hxArrayPtr array = two_points();
  hxSetCell(array.get(), 2, number(20));
  hxSetCell(array.get(), 1, number(1));
  EXPECT_EQ(number_in(hxGetField(array.get(), 1, "x")), 20);
  EXPECT_EQ(number_in(hxGetField(array.get(), 0, "y")), 1);
}

TEST(Fields, AreNullOutsideOfTheArrayAndWhereEmpty) {
  const hxArrayPtr array = two_points();
  EXPECT_EQ(hxGetField(array.get(), 0, "x"), nullptr);
  EXPECT_EQ(hxGetField(array.get(), 2, "x"), nullptr);
  EXPECT_EQ(hxGetField(array.get(), 0, "z"), nullptr);
  EXPECT_EQ(hxGetFieldChecked(array.get(), 0, "x"), nullptr);
}

template <class Error>
void expect_refused(hxArray* array, size_t index, const char* name, const std::string& text) {
  EXPECT_EQ(thrown<Error>([&] { hxGetFieldChecked(array, index, name); }), text);
  EXPECT_EQ(thrown<Error>([&] { hxSetField(array, index, name, number(1)); }), text);
}

TEST(Fields, CheckTheClassThenTheNameThenTheIndex) {
  const size_t before = LiveArrays();
  for (const Container& row : kStructs) {
    SCOPED_TRACE(row.name);
    const hxArrayPtr array = row.make();
    expect_refused<std::invalid_argument>(array.get(), 0, "z", "Wrong field name.");
    expect_refused<std::invalid_argument>(array.get(), 2, "z", "Wrong field name.");
    expect_refused<std::invalid_argument>(array.get(), 0, nullptr, "Wrong field name.");
    expect_refused<std::out_of_range>(array.get(), 2, "x", "Struct index is out of range.");
  }
  const hxArrayPtr cell = hxCreateCellArray(Dims{1, 1});
  expect_refused<std::invalid_argument>(cell.get(), 9, "z", "Array is not struct array.");
  expect_refused<std::invalid_argument>(nullptr, 9, "z", "Array is not struct array.");
  EXPECT_EQ(LiveArrays(), before + 1);
}

TEST(Fields, DestroyWhatTheyHeldBefore) {
  const hxArrayPtr array = two_points();
  hxSetField(array.get(), 0, "x", number(1));
  const size_t before = LiveArrays();
  hxSetField(array.get(), 0, "x", number(2));
  EXPECT_EQ(LiveArrays(), before);
  EXPECT_EQ(number_in(hxGetField(array.get(), 0, "x")), 2);
  hxSetField(array.get(), 0, "x", nullptr);
  EXPECT_EQ(LiveArrays(), before - 1);
  EXPECT_EQ(hxGetField(array.get(), 0, "x"), nullptr);
}

using Store = void (*)(hxArray*, size_t, hxArrayPtr);
const Store kStores[] = {hxSetCell, hxReplaceCell};

TEST(Cells, StoreAndReturnTheVeryArray) {
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

TEST(Cells, DestroyWhatTheyHeldBeforeAndAreEmptiedByNull) {
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

TEST(Cells, AreNullOutsideOfTheArrayAndInOtherClasses) {
  EXPECT_EQ(hxGetCell(hxCreateCellArray(Dims{1, 1}).get(), 1), nullptr);
  EXPECT_EQ(hxGetCell(zeros({1, 1}).get(), 0), nullptr);
  EXPECT_EQ(hxGetCell(two_points().get(), 0), nullptr);
}

TEST(Cells, CheckTheClassThenTheIndex) {
  const hxArrayPtr cell = hxCreateCellArray(Dims{2, 1});
  EXPECT_EQ(thrown<std::out_of_range>([&] { hxGetCellChecked(cell.get(), 2); }),
            "Cell index is out of range.");
  for (const hxArrayPtr& other : {zeros({1, 1}), two_points(), hxArrayPtr()}) {
    EXPECT_EQ(thrown<std::invalid_argument>([&] { hxGetCellChecked(other.get(), 9); }),
              "Array is not cell array.");
  }
}

TEST(Cells, RefuseToStoreIntoOtherClassesAndBeyondTheEnd) {
  const size_t before = LiveArrays();
  for (const Store store : kStores) {
    const hxArrayPtr cell = hxCreateCellArray(Dims{2, 1});
    const hxArrayPtr points = two_points();
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
  EXPECT_EQ(LiveArrays(), before);
}

}  // namespace
}  // namespace numera::host::memory
