#include <optional>
#include <stdexcept>
#include <utility>
#include <vector>

#include "numera/host/string_array.h"
#include "tests/host_conformance/claims.h"

namespace numera::host_conformance {
namespace {

struct SharedCopies : Claim {};

/// Writes a field of a shared struct. Returns false if the host refuses that, which it may.
bool write_unless_refused(const hxArrayPtr& record, const char* name, double value) {
  try {
    hxSetField(record.get(), 0, name, number(value));
    return true;
  } catch (const std::invalid_argument& refusal) {
    EXPECT_STREQ(refusal.what(), "Struct array is not writable.");
    return false;
  }
}

TEST_F(SharedCopies, HasTheSameContentsAndShares) {
  const hxArrayPtr array = number(5);
  const hxArrayPtr copy = hxSharedCopy(array.get());
  EXPECT_NE(copy.get(), array.get());
  EXPECT_EQ(read(copy), read(array));
  EXPECT_EQ(dims_of(copy), Dims({1, 1}));
  EXPECT_EQ(hxGetClassID(copy.get()), hxClassID::Double);
  EXPECT_TRUE(hxIsDataShared(array.get()));
  EXPECT_TRUE(hxIsDataShared(copy.get()));
}

TEST_F(SharedCopies, OfNullAreRefused) {
  EXPECT_THROW(hxSharedCopy(nullptr), std::invalid_argument);
}

TEST_F(SharedCopies, StopsSharingWhenTheOtherGoes) {
  for (const size_t length : {size_t{1}, size_t{100000}}) {
    SCOPED_TRACE(length);
    hxArrayPtr array = zeros({length, 1});
    hxArrayPtr copy = hxSharedCopy(array.get());
    const void* const block = read(copy);
    array.reset();
    EXPECT_FALSE(hxIsDataShared(copy.get()));
    EXPECT_EQ(hxGetData(copy.get()), block);
    EXPECT_EQ(dims_of(copy), Dims({length, 1}));
  }
}

TEST_F(SharedCopies, TakesABlockOfItsOwnWhenWritten) {
  for (const bool write_copy : {false, true}) {
    SCOPED_TRACE(write_copy);
    hxArrayPtr array = number(5);
    hxArrayPtr copy = hxSharedCopy(array.get());
    hxArrayPtr& written = write_copy ? copy : array;
    hxArrayPtr& other = write_copy ? array : copy;
    const void* const block = read(other);
    *static_cast<double*>(hxGetData(written.get())) = 6;
    EXPECT_EQ(number_in(written.get()), 6);
    EXPECT_EQ(number_in(other.get()), 5);
    EXPECT_EQ(read(other), block);
    EXPECT_FALSE(hxIsDataShared(array.get()));
    EXPECT_FALSE(hxIsDataShared(copy.get()));
  }
}

TEST_F(SharedCopies, KeepsDimensionsAndNamesHandedOutWhileTheArrayLives) {
  hxArrayPtr array = hxCreateStructArray(Dims{1, 1}, Names{"field"});
  const hxArrayPtr copy = hxSharedCopy(array.get());
  const auto dims = hxGetDimensions(copy.get());
  const char* const name = hxGetFieldName(copy.get(), 0);
  write_unless_refused(copy, "field", 1);
  array.reset();
  EXPECT_EQ(Dims(dims.begin(), dims.end()), Dims({1, 1}));
  EXPECT_STREQ(name, "field");
}

TEST_F(SharedCopies, OfAContainerIsGivenItsOwnSlotsWhenWritten) {
  const hxArrayPtr cell = hxCreateCellArray(Dims{1, 2});
  hxSetCell(cell.get(), 0, number(1));
  hxSetCell(cell.get(), 1, number(2));
  const hxArray* const first = hxGetCell(cell.get(), 0);
  const hxArray* const second = hxGetCell(cell.get(), 1);
  const hxArrayPtr copy = hxSharedCopy(cell.get());
  EXPECT_EQ(hxGetCell(copy.get(), 0), first);

  hxReplaceCell(copy.get(), 1, number(3));
  EXPECT_EQ(hxGetCell(cell.get(), 0), first);
  EXPECT_EQ(hxGetCell(cell.get(), 1), second);
  EXPECT_EQ(number_in(second), 2);
  EXPECT_NE(hxGetCell(copy.get(), 0), first);
  EXPECT_EQ(number_in(hxGetCell(copy.get(), 0)), 1);
  EXPECT_EQ(number_in(hxGetCell(copy.get(), 1)), 3);
  EXPECT_FALSE(hxIsDataShared(cell.get()));
}

TEST_F(SharedCopies, OfAStructKeepItsFieldsWhenItIsWritten) {
  const hxArrayPtr point = hxCreateStructArray(Dims{1, 1}, Names{"x"});
  hxSetField(point.get(), 0, "x", number(1));
  const hxArrayPtr copy = hxSharedCopy(point.get());
  const bool written = write_unless_refused(point, "x", 2);
  EXPECT_EQ(number_in(hxGetField(point.get(), 0, "x")), written ? 2 : 1);
  EXPECT_EQ(number_in(hxGetField(copy.get(), 0, "x")), 1);
}

TEST_F(SharedCopies, OfAnArrayMayBeStoredIntoIt) {
  const hxArrayPtr cell = hxCreateCellArray(Dims{1, 1});
  hxSetCell(cell.get(), 0, hxSharedCopy(cell.get()));
  EXPECT_EQ(hxGetCell(hxGetCell(cell.get(), 0), 0), nullptr);
}

TEST_F(SharedCopies, OfAStringArrayReadsTheSameTexts) {
  auto strings = hxMakeStringArray(Dims{1, 1});
  strings->set(0, u"text");
  hxArrayPtr array = hxCreateStringArrayFrom(std::move(strings));
  const hxArrayPtr copy = hxSharedCopy(array.get());
  EXPECT_TRUE(hxIsDataShared(copy.get()));
  EXPECT_TRUE(hxIsStringArray(copy.get()));
  array.reset();
  EXPECT_EQ(hxGetStringArray(copy.get()).element(0), u"text");
}

/// Asks for the data of a shared array for writing.
void expect_no_data_and_shared(const hxArrayPtr& array) {
  EXPECT_EQ(hxGetData(array.get()), nullptr);
  EXPECT_TRUE(hxIsDataShared(array.get()));
}

TEST_F(SharedCopies, OfAStringArrayStayAsTheyAreWhenDataIsAskedFor) {
  auto strings = hxMakeStringArray(Dims{2, 1});
  strings->set(0, u"text");
  strings->set_missing(1);
  const hxArrayPtr texts = hxCreateStringArrayFrom(std::move(strings));
  for (const bool of_copy : {false, true}) {
    const hxArrayPtr copy = hxSharedCopy(texts.get());
    expect_no_data_and_shared(of_copy ? copy : texts);
    for (const hxArrayPtr* array : {&texts, &copy}) {
      EXPECT_EQ(texts_of(hxGetStringArray(array->get())), Texts({u"text", std::nullopt}));
    }
  }
}

TEST_F(SharedCopies, OfACellStayAsTheyAreWhenDataIsAskedFor) {
  const hxArrayPtr cell = hxCreateCellArray(Dims{1, 2});
  hxSetCell(cell.get(), 0, number(1));
  const hxArray* const value = hxGetCell(cell.get(), 0);
  for (const bool of_copy : {false, true}) {
    const hxArrayPtr copy = hxSharedCopy(cell.get());
    expect_no_data_and_shared(of_copy ? copy : cell);
    for (const hxArrayPtr* array : {&cell, &copy}) {
      EXPECT_EQ(hxGetCell(array->get(), 0), value);
      EXPECT_EQ(number_in(hxGetCell(array->get(), 0)), 1);
      EXPECT_EQ(hxGetCell(array->get(), 1), nullptr);
    }
  }
}

TEST_F(SharedCopies, OfStructsAndObjectsStayAsTheyAreWhenDataIsAskedFor) {
  std::vector<hxArrayPtr> arrays;
  arrays.push_back(two_points());
  if (const auto make = host_under_test().object_array) {
    arrays.push_back(make("point", Dims{2, 1}, Names{"x", "y"}));
  }
  for (const hxArrayPtr& array : arrays) {
    SCOPED_TRACE(hxGetClassName(array.get()));
    hxSetField(array.get(), 1, "y", number(2));
    const hxArray* const value = hxGetField(array.get(), 1, "y");
    for (const bool of_copy : {false, true}) {
      const hxArrayPtr copy = hxSharedCopy(array.get());
      expect_no_data_and_shared(of_copy ? copy : array);
      for (const hxArrayPtr* each : {&array, &copy}) {
        EXPECT_EQ(hxGetField(each->get(), 1, "y"), value);
        EXPECT_EQ(number_in(hxGetField(each->get(), 1, "y")), 2);
        EXPECT_EQ(hxGetField(each->get(), 0, "x"), nullptr);
      }
    }
  }
}

}  // namespace
}  // namespace numera::host_conformance
