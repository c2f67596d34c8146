#include <array>
#include <complex>
#include <cstring>
#include <new>

#include "numera/host/text_codec.h"
#include "tests/host_conformance/claims.h"

namespace numera::host_conformance {
namespace {

struct Arrays : Claim {};

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

TEST_F(Arrays, OfEachPlainClassHaveItsNumberNameAndWidth) {
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

TEST_F(Arrays, OfNumbersAreZeroWhateverTheirSize) {
  for (const size_t length : {size_t{1}, size_t{200}, size_t{5000}, size_t{200000}}) {
    SCOPED_TRACE(length);
    // Old contents of reused memory must not be visible.
    std::memset(hxGetData(zeros({length, 1}).get()), 0xFF, length * sizeof(double));
    const hxArrayPtr array = zeros({length, 1});
    const auto* values = static_cast<const double*>(read(array));
    EXPECT_EQ(std::vector<double>(values, values + length), std::vector<double>(length, 0.0));
  }
}

TEST_F(Arrays, KeepAnyNumberOfDimensions) {
  EXPECT_EQ(dims_of(zeros({2, 1, 3, 1})), Dims({2, 1, 3, 1}));
  EXPECT_EQ(hxGetNumberOfElements(zeros({2, 1, 3, 1}).get()), 6u);
}

TEST_F(Arrays, MayHaveNoElements) {
  const hxArrayPtr array = zeros({0, 4});
  EXPECT_TRUE(hxIsEmpty(array.get()));
  EXPECT_EQ(hxGetNumberOfElements(array.get()), 0u);
  EXPECT_EQ(dims_of(array), Dims({0, 4}));
}

TEST_F(Arrays, OfMoreElementsThanMemoryHoldsAreRefused) {
  EXPECT_THROW(zeros({SIZE_MAX, SIZE_MAX}), std::bad_alloc);
  for (const Dims& dims : {Dims{SIZE_MAX, SIZE_MAX}, Dims{SIZE_MAX / 2 + 2, 2}}) {
    for (const hxComplexity complexity : {hxComplexity::Real, hxComplexity::Complex}) {
      EXPECT_THROW(hxCreateNumericArray(dims, hxClassID::Double, complexity), std::bad_alloc);
      EXPECT_THROW(hxCreateUninitNumericArray(dims, hxClassID::Single, complexity), std::bad_alloc);
    }
    EXPECT_THROW(hxCreateCellArray(dims), std::bad_alloc);
    EXPECT_THROW(hxCreateStructArray(dims, Names{"a", "b"}), std::bad_alloc);
    EXPECT_THROW(hxMakeStringArray(dims), std::bad_alloc);
  }
  // The number of elements fits into size_t, the number of bytes does not.
  EXPECT_THROW(zeros({SIZE_MAX / 4, 1}), std::bad_alloc);
  EXPECT_THROW(hxCreateStructArray(Dims{SIZE_MAX / 2, 1}, Names{"a", "b", "c"}), std::bad_alloc);
}

TEST_F(Arrays, AreWritableInPlace) {
  const hxArrayPtr array = zeros({3, 1}, hxClassID::Int32);
  const void* const block = read(array);
  auto* const values = static_cast<std::int32_t*>(hxGetData(array.get()));
  EXPECT_EQ(values, block);
  values[2] = 7;
  EXPECT_EQ(static_cast<const std::int32_t*>(read(array))[2], 7);
}

TEST_F(Arrays, ThatAreComplexHoldBothPartsInOneElement) {
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

TEST_F(Arrays, ThatAreSparseSaySoAndAreNumeric) {
  const auto make = host_under_test().sparse_array;
  if (make == nullptr) GTEST_SKIP() << "the host gives no way to make a sparse array";
  const hxArrayPtr array = make(Dims{3, 1}, hxClassID::Double);
  EXPECT_TRUE(hxIsSparse(array.get()));
  EXPECT_TRUE(hxIsNumeric(array.get()));
}

TEST_F(Arrays, OfNarrowTextHoldOneCharacterAByte) {
  const hxArrayPtr array = hxCreateCharArray("a\0\xE9", 3);
  EXPECT_EQ(dims_of(array), Dims({1, 3}));
  EXPECT_EQ(hxGetClassID(array.get()), hxClassID::Char);
  EXPECT_STREQ(hxGetClassName(array.get()), "char");
  EXPECT_EQ(hxGetElementSize(array.get()), 2u);
  EXPECT_FALSE(hxIsNumeric(array.get()));
  const auto* units = static_cast<const char16_t*>(read(array));
  EXPECT_EQ(std::u16string(units, 3), std::u16string(u"a\0\u00E9", 3));
}

TEST_F(Arrays, OfWideTextHoldItsCodeUnits) {
  const hxArrayPtr array = hxCreateCharArray(u"\u20AC5", 2);
  EXPECT_EQ(dims_of(array), Dims({1, 2}));
  const auto* units = static_cast<const char16_t*>(read(array));
  EXPECT_EQ(std::u16string(units, 2), u"\u20AC5");
}

TEST_F(Arrays, OfNoTextAreARowWithoutColumns) {
  EXPECT_EQ(dims_of(hxCreateCharArray(static_cast<const char*>(nullptr), 0)), Dims({1, 0}));
  EXPECT_EQ(dims_of(hxCreateCharArray(static_cast<const char16_t*>(nullptr), 0)), Dims({1, 0}));
}

TEST_F(Arrays, OfCharsGiveTheirText) {
  EXPECT_EQ(hxGetString(hxCreateCharArray(u"z\u00FCrich\0", 7).get()),
            std::string("z\xC3\xBCrich\0", 8));
  EXPECT_EQ(hxGetString(hxCreateCharArray("", 0).get()), "");
}

TEST_F(Arrays, OfCharMatricesGiveTheirTextColumnAfterColumn) {
  const auto make = host_under_test().char_array;
  if (make == nullptr) GTEST_SKIP() << "the host gives no way to make a char matrix";
  EXPECT_EQ(hxGetString(make(Dims{2, 3}, u"adbec ").get()), "adbec ");
}

TEST_F(Arrays, OfCharsThatAreNoTextAreRefusedAsText) {
  const hxArrayPtr array = hxCreateCharArray(u"a\xD800", 2);
  EXPECT_NE(thrown<hxCodecError>([&] { hxGetString(array.get()); }), "");
}

TEST_F(Arrays, OfOtherClassesHaveNoText) {
  for (const hxArrayPtr& array : {zeros({1, 1}), hxCreateCellArray(Dims{1, 1}), hxArrayPtr()}) {
    EXPECT_EQ(thrown<std::invalid_argument>([&] { hxGetString(array.get()); }),
              "Array is not char array.");
  }
}

TEST_F(Arrays, OfCellsHaveEmptySlotsAndNoData) {
  const hxArrayPtr array = hxCreateCellArray(Dims{2, 2});
  EXPECT_EQ(static_cast<int>(hxGetClassID(array.get())), 1);
  EXPECT_STREQ(hxGetClassName(array.get()), "cell");
  EXPECT_FALSE(hxIsNumeric(array.get()));
  EXPECT_EQ(read(array), nullptr);
  for (size_t i = 0; i < 4; ++i) EXPECT_EQ(hxGetCellChecked(array.get(), i), nullptr);
}

TEST_F(Arrays, OfStructsHaveTheirFieldsInOrderAndEmptySlots) {
  const hxArrayPtr array = hxCreateStructArray(Dims{1, 2}, Names{"b", "a"});
  EXPECT_EQ(static_cast<int>(hxGetClassID(array.get())), 2);
  EXPECT_STREQ(hxGetClassName(array.get()), "struct");
  EXPECT_EQ(hxGetNumberOfFields(array.get()), 2);
  EXPECT_STREQ(hxGetFieldName(array.get(), 0), "b");
  EXPECT_STREQ(hxGetFieldName(array.get(), 1), "a");
  EXPECT_EQ(hxGetFieldChecked(array.get(), 1, "a"), nullptr);
  EXPECT_EQ(read(array), nullptr);
}

TEST_F(Arrays, OfObjectsAreOfClass18AndHaveAClassName) {
  const auto make = host_under_test().object_array;
  if (make == nullptr) GTEST_SKIP() << "the host gives no way to make an object";
  const hxArrayPtr array = make("geo.point", Dims{1, 1}, Names{"x"});
  EXPECT_EQ(static_cast<int>(hxGetClassID(array.get())), 18);
  EXPECT_STREQ(hxGetClassName(array.get()), "geo.point");
  EXPECT_EQ(hxGetFieldNumber(array.get(), "x"), 0);
  EXPECT_FALSE(hxIsStringArray(array.get()));
}

TEST_F(Arrays, CopyTheNamesOfTheirFields) {
  std::string name = "temporary field name";
  const Names names = {name.c_str()};
  const hxArrayPtr array = hxCreateStructArray(Dims{1, 1}, names);
  name.assign(name.size(), 'x');
  EXPECT_STREQ(hxGetFieldName(array.get(), 0), "temporary field name");
}

TEST_F(Arrays, ThatAreNullMayBeDestroyed) { hxDestroyArray(nullptr); }

}  // namespace
}  // namespace numera::host_conformance
