#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "tests/host_conformance/claims.h"

namespace numera::host_conformance {
namespace {

struct Fields : Claim {};

struct Container {
  const char* name;
  hxArrayPtr array;
};

/// A struct, and an object if the host makes objects. Both are read like structs.
std::vector<Container> containers() {
  std::vector<Container> made;
  made.push_back({"struct", two_points()});
  if (const auto make = host_under_test().object_array) {
    made.push_back({"object", make("point", Dims{2, 1}, Names{"x", "y"})});
  }
  return made;
}

TEST_F(Fields, FindsAFieldByItsWholeName) {
  const hxArrayPtr array = two_points();
  EXPECT_EQ(hxGetFieldNumber(array.get(), "x"), 0);
  EXPECT_EQ(hxGetFieldNumber(array.get(), "y"), 1);
  EXPECT_EQ(hxGetFieldNumber(array.get(), "X"), -1);
  EXPECT_EQ(hxGetFieldNumber(array.get(), "xy"), -1);
  EXPECT_EQ(hxGetFieldNumber(array.get(), ""), -1);
}

TEST_F(Fields, FindsTheFirstOfEqualNamesAmongFewAndMany) {
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

TEST_F(Fields, NamesNoFieldOutsideOfTheirNumber) {
  const hxArrayPtr array = two_points();
  EXPECT_EQ(hxGetFieldName(array.get(), -1), nullptr);
  EXPECT_EQ(hxGetFieldName(array.get(), 2), nullptr);
}

TEST_F(Fields, HaveNoneInArraysThatAreNoStructs) {
  const hxArrayPtr array = zeros({1, 1});
  EXPECT_EQ(hxGetNumberOfFields(array.get()), 0);
  EXPECT_EQ(hxGetFieldNumber(array.get(), "x"), -1);
  EXPECT_EQ(hxGetField(array.get(), 0, "x"), nullptr);
}

TEST_F(Fields, StoreAndReturnTheVeryArray) {
  for (const Container& row : containers()) {
    SCOPED_TRACE(row.name);
    const hxArrayPtr& array = row.array;
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

TEST_F(Fields, LieElementByElement) {
  const hxArrayPtr array = two_points();
  hxSetCell(array.get(), 2, number(20));
  hxSetCell(array.get(), 1, number(1));
  EXPECT_EQ(number_in(hxGetField(array.get(), 1, "x")), 20);
  EXPECT_EQ(number_in(hxGetField(array.get(), 0, "y")), 1);
}

TEST_F(Fields, AreNullOutsideOfTheArrayAndWhereEmpty) {
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

TEST_F(Fields, CheckTheClassThenTheNameThenTheIndex) {
  for (const Container& row : containers()) {
    SCOPED_TRACE(row.name);
    const hxArrayPtr& array = row.array;
    expect_refused<std::invalid_argument>(array.get(), 0, "z", "Wrong field name.");
    expect_refused<std::invalid_argument>(array.get(), 2, "z", "Wrong field name.");
    expect_refused<std::out_of_range>(array.get(), 2, "x", "Struct index is out of range.");
  }
  const hxArrayPtr cell = hxCreateCellArray(Dims{1, 1});
  expect_refused<std::invalid_argument>(cell.get(), 9, "z", "Array is not struct array.");
  expect_refused<std::invalid_argument>(nullptr, 9, "z", "Array is not struct array.");
}

TEST_F(Fields, DestroyWhatTheyHeldBefore) {
  const hxArrayPtr array = two_points();
  hxSetField(array.get(), 0, "x", number(1));
  const size_t before = live_arrays();
  hxSetField(array.get(), 0, "x", number(2));
  EXPECT_EQ(live_arrays(), before);
  EXPECT_EQ(number_in(hxGetField(array.get(), 0, "x")), 2);
  hxSetField(array.get(), 0, "x", nullptr);
  expect_live_arrays(before - 1);
  EXPECT_EQ(hxGetField(array.get(), 0, "x"), nullptr);
}

}  // namespace
}  // namespace numera::host_conformance
