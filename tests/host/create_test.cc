#include <gmock/gmock.h>

#include <array>
#include <complex>
#include <stdexcept>
#include <tuple>

#include "numera/host/string_array.h"
#include "tests/host/host_test_support.h"

namespace numera::host::memory {
namespace {

using ::testing::ElementsAre;

struct PlainClass {
  hxClassID id;
  int number;
  const char* name;
  size_t bytes;
  bool numeric;
};

constexpr std::array<PlainClass, 11> kPlainClasses = {{
    {hxClassID::Logical, 3, "logical", 1, false},
    {hxClassID::Double, 6, "double", 8, true},
    {hxClassID::Single, 7, "single", 4, true},
    {hxClassID::Int8, 8, "int8", 1, true},
    {hxClassID::UInt8, 9, "uint8", 1, true},
    {hxClassID::Int16, 10, "int16", 2, true},
    {hxClassID::UInt16, 11, "uint16", 2, true},
    {hxClassID::Int32, 12, "int32", 4, true},
    {hxClassID::UInt32, 13, "uint32", 4, true},
    {hxClassID::Int64, 14, "int64", 8, true},
    {hxClassID::UInt64, 15, "uint64", 8, true},
}};

TEST(Create, GivesEachPlainClassItsNumberNameAndWidth) {
  for (const PlainClass& row : kPlainClasses) {
    SCOPED_TRACE(row.name);
    for (const hxArrayPtr& array :
         {zeros({2, 3}, row.id),
          hxCreateUninitNumericArray(Dims{2, 3}, row.id, hxComplexity::Real)}) {
      EXPECT_EQ(static_cast<int>(hxGetClassID(array.get())), row.number);
      EXPECT_STREQ(hxGetClassName(array.get()), row.name);
      EXPECT_EQ(hxGetElementSize(array.get()), row.bytes);
      EXPECT_EQ(hxIsNumeric(array.get()), row.numeric);
      EXPECT_FALSE(hxIsComplex(array.get()));
      EXPECT_FALSE(hxIsSparse(array.get()));
      EXPECT_FALSE(hxIsStringArray(array.get()));
      EXPECT_EQ(hxGetNumberOfElements(array.get()), 6u);
      EXPECT_EQ(dims_of(array), Dims({2, 3}));
      EXPECT_FALSE(hxIsEmpty(array.get()));
    }
  }
}

TEST(Create, ZeroesSmallAndLargeNumericArrays) {
  for (const size_t length : {size_t{1}, size_t{200}, size_t{5000}, size_t{200000}}) {
    SCOPED_TRACE(length);
    const hxArrayPtr array = zeros({length, 1});
    const auto* values = static_cast<const double*>(read(array));
    EXPECT_EQ(std::vector<double>(values, values + length), std::vector<double>(length, 0.0));
  }
}

TEST(Create, KeepsAnyNumberOfDimensions) {
  EXPECT_EQ(dims_of(zeros({2, 1, 3, 1})), Dims({2, 1, 3, 1}));
  EXPECT_EQ(hxGetNumberOfElements(zeros({2, 1, 3, 1}).get()), 6u);
}

TEST(Create, MakesEmptyArraysWithDataToPointAt) {
  const hxArrayPtr array = zeros({0, 4});
  EXPECT_TRUE(hxIsEmpty(array.get()));
  EXPECT_EQ(hxGetNumberOfElements(array.get()), 0u);
  EXPECT_NE(read(array), nullptr);
}

TEST(Create, CountsNoElementsWhereADimensionIsZeroHoweverLargeTheOthers) {
  EXPECT_EQ(hxGetNumberOfElements(zeros({SIZE_MAX, SIZE_MAX, 0}).get()), 0u);
}

TEST(Create, DoublesTheElementsOfComplexArrays) {
  const hxArrayPtr array =
      hxCreateNumericArray(Dims{2, 1}, hxClassID::Double, hxComplexity::Complex);
  EXPECT_TRUE(hxIsComplex(array.get()));
  EXPECT_TRUE(hxIsNumeric(array.get()));
  EXPECT_EQ(hxGetClassID(array.get()), hxClassID::Double);
  EXPECT_EQ(hxGetElementSize(array.get()), 16u);
  const auto* values = static_cast<const std::complex<double>*>(read(array));
  EXPECT_EQ(std::vector<std::complex<double>>(values, values + 2),
            std::vector<std::complex<double>>(2));
}

TEST(Create, MakesSparseArraysThatAreNumericAndZero) {
  const hxArrayPtr array = CreateSparseArray(Dims{3, 1}, hxClassID::Double);
  EXPECT_TRUE(hxIsSparse(array.get()));
  EXPECT_TRUE(hxIsNumeric(array.get()));
  const auto* values = static_cast<const double*>(read(array));
  EXPECT_THAT(std::vector<double>(values, values + 3), ElementsAre(0, 0, 0));
}

TEST(Create, WidensNarrowTextByteByByte) {
  const hxArrayPtr array = hxCreateCharArray("a\0\xE9", 3);
  EXPECT_EQ(dims_of(array), Dims({1, 3}));
  EXPECT_EQ(hxGetClassID(array.get()), hxClassID::Char);
  EXPECT_STREQ(hxGetClassName(array.get()), "char");
  EXPECT_EQ(hxGetElementSize(array.get()), 2u);
  EXPECT_FALSE(hxIsNumeric(array.get()));
  const auto* units = static_cast<const char16_t*>(read(array));
  EXPECT_EQ(std::u16string(units, 3), std::u16string(u"a\0\u00E9", 3));
}

TEST(Create, CopiesWideText) {
  const hxArrayPtr array = hxCreateCharArray(u"\u20AC5", 2);
  EXPECT_EQ(dims_of(array), Dims({1, 2}));
  EXPECT_EQ(hxGetString(array.get()),
            "\xE2\x82\xAC"
            "5");
}

TEST(Create, TakesNoTextForNoCharacters) {
  EXPECT_EQ(dims_of(hxCreateCharArray(static_cast<const char*>(nullptr), 0)), Dims({1, 0}));
  EXPECT_EQ(dims_of(hxCreateCharArray(static_cast<const char16_t*>(nullptr), 0)), Dims({1, 0}));
}

TEST(Create, MakesCharMatricesColumnAfterColumn) {
  const hxArrayPtr array = CreateCharArray(Dims{2, 3}, u"adbec ");
  EXPECT_EQ(dims_of(array), Dims({2, 3}));
  EXPECT_EQ(hxGetString(array.get()), "adbec ");
}

TEST(Create, MakesCellsWithEmptySlots) {
  const hxArrayPtr array = hxCreateCellArray(Dims{2, 2});
  EXPECT_EQ(hxGetClassID(array.get()), hxClassID::Cell);
  EXPECT_EQ(static_cast<int>(hxClassID::Cell), 1);
  EXPECT_STREQ(hxGetClassName(array.get()), "cell");
  EXPECT_FALSE(hxIsNumeric(array.get()));
  EXPECT_EQ(read(array), nullptr);
  EXPECT_EQ(hxGetData(array.get()), nullptr);
  for (size_t i = 0; i < 4; ++i) EXPECT_EQ(hxGetCellChecked(array.get(), i), nullptr);
}

TEST(Create, MakesStructsWithTheirFieldsInOrderAndEmptySlots) {
  const hxArrayPtr array = hxCreateStructArray(Dims{1, 2}, Names{"b", "a"});
  EXPECT_EQ(static_cast<int>(hxGetClassID(array.get())), 2);
  EXPECT_STREQ(hxGetClassName(array.get()), "struct");
  EXPECT_EQ(hxGetNumberOfFields(array.get()), 2);
  EXPECT_STREQ(hxGetFieldName(array.get(), 0), "b");
  EXPECT_STREQ(hxGetFieldName(array.get(), 1), "a");
  EXPECT_EQ(hxGetFieldChecked(array.get(), 1, "a"), nullptr);
  EXPECT_EQ(read(array), nullptr);
}

TEST(Create, MakesObjectsOfClass18UnderTheirClassName) {
  const hxArrayPtr array = CreateObjectArray("geo.point", Dims{1, 1}, Names{"x"});
  EXPECT_EQ(static_cast<int>(hxGetClassID(array.get())), 18);
  EXPECT_STREQ(hxGetClassName(array.get()), "geo.point");
  EXPECT_EQ(hxGetFieldNumber(array.get(), "x"), 0);
  EXPECT_FALSE(hxIsStringArray(array.get()));
}

TEST(Create, CopiesNamesThatItIsGiven) {
  std::string name = "temporary field name";
  const Names names = {name.c_str()};
  const hxArrayPtr array = hxCreateStructArray(Dims{1, 1}, names);
  name.assign(name.size(), 'x');
  EXPECT_STREQ(hxGetFieldName(array.get(), 0), "temporary field name");
}

TEST(Create, RefusesFewerThanTwoDimensions) {
  const std::string expected = "Array has fewer than two dimensions.";
  for (const Dims& dims : {Dims{}, Dims{3}}) {
    EXPECT_EQ(thrown<std::invalid_argument>([&] { zeros(dims); }), expected);
    EXPECT_EQ(thrown<std::invalid_argument>([&] { hxCreateCellArray(dims); }), expected);
    EXPECT_EQ(thrown<std::invalid_argument>([&] { hxCreateStructArray(dims, Names{"a"}); }),
              expected);
    EXPECT_EQ(thrown<std::invalid_argument>([&] { CreateCharArray(dims, u"abc"); }), expected);
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

TEST(Create, ReadsTheStringOfCharArraysOnly) {
  EXPECT_EQ(hxGetString(hxCreateCharArray(u"z\u00FCrich\0", 7).get()),
            std::string("z\xC3\xBCrich\0", 8));
  EXPECT_EQ(thrown<std::invalid_argument>([] { hxGetString(zeros({1, 1}).get()); }),
            "Array is not char array.");
  EXPECT_EQ(thrown<std::invalid_argument>([] { hxGetString(nullptr); }),
            "Array is not char array.");
}

}  // namespace
}  // namespace numera::host::memory
