#include <gmock/gmock.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "numera/host/string_array.h"
#include "tests/host/host_test_support.h"

namespace numera::host::memory {
namespace {

using ::testing::ElementsAre;

TEST(Create, MakesEmptyArraysWithDataToPointAt) {
  const hxArrayPtr array = zeros({0, 4});
  EXPECT_TRUE(hxIsEmpty(array.get()));
  EXPECT_EQ(hxGetNumberOfElements(array.get()), 0u);
  EXPECT_NE(read(array), nullptr);
}

TEST(Create, CountsNoElementsWhereADimensionIsZeroHoweverLargeTheOthers) {
  EXPECT_EQ(hxGetNumberOfElements(zeros({SIZE_MAX, SIZE_MAX, 0}).get()), 0u);
}

TEST(Create, MakesSparseArraysThatAreNumericAndZero) {
  const hxArrayPtr array = CreateSparseArray(Dims{3, 1}, hxClassID::Double);
  EXPECT_TRUE(hxIsSparse(array.get()));
  EXPECT_TRUE(hxIsNumeric(array.get()));
  const auto* values = static_cast<const double*>(read(array));
  EXPECT_THAT(std::vector<double>(values, values + 3), ElementsAre(0, 0, 0));
}

TEST(Create, RefusesFewerThanTwoDimensions) {
  const std::string expected = "Array has fewer than two dimensions.";
  for (const Dims& dims : {Dims{}, Dims{3}}) {
    EXPECT_EQ(thrown<std::invalid_argument>([&] { zeros(dims); }), expected);
    EXPECT_EQ(thrown<std::invalid_argument>([&] { hxCreateCellArray(dims); }), expected);
    EXPECT_EQ(thrown<std::invalid_argument>([&] { hxCreateStructArray(dims, Names{"a"}); }),
              expected);
    EXPECT_EQ(thrown<std::invalid_argument>([&] { CreateCharArray(dims, u"abc"); }), expected);
    EXPECT_EQ(thrown<std::invalid_argument>([&] { hxMakeStringArray(dims); }), expected);
  }
}

TEST(Create, RefusesClassesThatAreNotNumericOrLogical) {
  for (const hxClassID id :
       {hxClassID::Unknown, hxClassID::Cell, hxClassID::Struct, hxClassID::Char, hxClassID::Void,
        hxClassID::Function, hxClassID::Object, static_cast<hxClassID>(17)}) {
    SCOPED_TRACE(static_cast<int>(id));
    const std::string expected = "Class is neither numeric nor logical.";
    EXPECT_EQ(thrown<std::invalid_argument>([&] { zeros({1, 1}, id); }), expected);
    EXPECT_EQ(thrown<std::invalid_argument>(
                  [&] { hxCreateUninitNumericArray(Dims{1, 1}, id, hxComplexity::Real); }),
              expected);
  }
}

TEST(Create, RefusesComplexLogicalArrays) {
  EXPECT_EQ(thrown<std::invalid_argument>([] {
              hxCreateNumericArray(Dims{1, 1}, hxClassID::Logical, hxComplexity::Complex);
            }),
            "Logical array cannot be complex.");
}

TEST(Create, RefusesNullNamesAndNullText) {
  EXPECT_EQ(
      thrown<std::invalid_argument>([] { hxCreateStructArray(Dims{1, 1}, Names{"a", nullptr}); }),
      "Field name is null.");
  EXPECT_EQ(thrown<std::invalid_argument>(
                [] { hxCreateCharArray(static_cast<const char*>(nullptr), 1); }),
            "Text is null.");
}

}  // namespace
}  // namespace numera::host::memory
