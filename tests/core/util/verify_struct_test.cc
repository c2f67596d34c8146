#include "numera/core/util/verify_struct.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "numera/host/array.h"
#include "tests/support/host_builder.h"
#include "tests/support/thrown.h"

namespace numera::io::arrow::core::util {
namespace {

using namespace numera::testing;

::arrow::Status type_error(const char* message) { return ::arrow::Status::TypeError(message); }

TEST(VerifyHxStructContains, RefusesWhatIsNoStruct) {
  const hxArrayPtr others[] = {Column<double>({1}), Char("text"), Cell({Scalar(1.0)}),
                               Logical({true})};
  const ::arrow::Status expected = type_error("Struct array required for input");
  for (const hxArrayPtr& other : others) {
    SCOPED_TRACE(hxGetClassName(other.get()));
    EXPECT_EQ(VerifyHxStructContains(other.get(), "Data", hxClassID::Unknown, true), expected);
  }
}

TEST(VerifyHxStructContains, RefusesNull) {
  EXPECT_EQ(VerifyHxStructContains(nullptr, "Data", hxClassID::Unknown, true),
            type_error("Struct array required for input"));
}

TEST(VerifyHxStructContains, AcceptsAnyFieldOfAStructWithoutElements) {
  const hxArrayPtr empty[] = {StructArray({0, 0}, {}, {}), StructArray({0, 1}, {"Other"}, {}),
                              ObjectArray("table", {3, 0}, {}, {})};
  for (const hxArrayPtr& value : empty) {
    EXPECT_EQ(VerifyHxStructContains(value.get(), "Data", hxClassID::Double, true),
              ::arrow::Status::OK());
  }
}

TEST(VerifyHxStructContains, ThrowsForAFieldThatTheStructLacks) {
  const hxArrayPtr value = Struct({{"data", Scalar(1.0)}});
  EXPECT_EQ(
      MessageThrown<std::invalid_argument>([&value] {
        static_cast<void>(VerifyHxStructContains(value.get(), "Data", hxClassID::Unknown, true));
      }),
      "Wrong field name.");
}

TEST(VerifyHxStructContains, RefusesAnEmptySlotWhateverTheClass) {
  const hxArrayPtr value = Struct({{"Data", Empty()}});
  for (const hxClassID class_id : {hxClassID::Unknown, hxClassID::Double}) {
    EXPECT_EQ(VerifyHxStructContains(value.get(), "Data", class_id, true),
              type_error("Missing field 'Data' in input struct array"));
  }
}

TEST(VerifyHxStructContains, AcceptsEveryClassForUnknown) {
  const hxArrayPtr value = Struct({{"Data", Cell({Scalar(1.0)})}});
  EXPECT_EQ(VerifyHxStructContains(value.get(), "Data", hxClassID::Unknown, true),
            ::arrow::Status::OK());
}

TEST(VerifyHxStructContains, AcceptsTheSameClass) {
  const hxArrayPtr value = Struct({{"Type", Char("double")}});
  EXPECT_EQ(VerifyHxStructContains(value.get(), "Type", hxClassID::Char, false),
            ::arrow::Status::OK());
}

TEST(VerifyHxStructContains, AcceptsAnObjectAsTheStruct) {
  const hxArrayPtr value = ObjectArray("column", {1, 1}, {"Type"}, {{Char("double")}});
  EXPECT_EQ(VerifyHxStructContains(value.get(), "Type", hxClassID::Char, false),
            ::arrow::Status::OK());
}

TEST(VerifyHxStructContains, NamesTheClassThatItRefuses) {
  struct Case {
    hxArrayPtr value;
    hxClassID wanted;
    const char* message;
  };
  const Case cases[] = {
      {Column<double>({1}), hxClassID::Struct,
       "Incorrect type 'double' for struct array field 'Valid'"},
      {Column<std::uint8_t>({1}), hxClassID::Struct,
       "Incorrect type 'uint8' for struct array field 'Valid'"},
      {Strings({u"a"}), hxClassID::Char, "Incorrect type 'string' for struct array field 'Valid'"},
      {Struct({}), hxClassID::Cell, "Incorrect type 'struct' for struct array field 'Valid'"},
      {ObjectArray("bitmap", {1, 1}, {}, {{}}), hxClassID::Struct,
       "Incorrect type 'bitmap' for struct array field 'Valid'"},
  };
  for (const Case& one : cases) {
    SCOPED_TRACE(one.message);
    const hxArrayPtr value = Struct({{"Valid", hxSharedCopy(one.value.get())}});
    EXPECT_EQ(VerifyHxStructContains(value.get(), "Valid", one.wanted, true),
              type_error(one.message));
  }
}

TEST(VerifyHxStructContains, LooksAtTheFirstElementOnly) {
  const hxArrayPtr value =
      StructArray({3, 1}, {"Type"}, {{Char("double")}, {Scalar(1.0)}, {Empty()}});
  EXPECT_EQ(VerifyHxStructContains(value.get(), "Type", hxClassID::Char, false),
            ::arrow::Status::OK());
}

TEST(VerifyHxStructContains, GivesTheSameResultWhateverTheFlag) {
  const hxArrayPtr value = Struct({{"Type", Char("double")}, {"Data", Empty()}});
  for (const bool flag : {false, true}) {
    EXPECT_EQ(VerifyHxStructContains(value.get(), "Type", hxClassID::Char, flag),
              ::arrow::Status::OK());
    EXPECT_EQ(VerifyHxStructContains(value.get(), "Data", hxClassID::Char, flag),
              type_error("Missing field 'Data' in input struct array"));
  }
}

}  // namespace
}  // namespace numera::io::arrow::core::util
