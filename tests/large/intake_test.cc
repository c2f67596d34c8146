/// \file
/// Intake and conversion to the host of slices that start beyond 32 bits; lists of that size, both
/// ways.

#include <arrow/api.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "numera/core/to_arrow.h"
#include "numera/core/to_numera.h"
#include "numera/extras/encode/encode.h"
#include "numera/extras/intake/intake.h"
#include "tests/large/mapped.h"
#include "tests/support/arrow_values.h"
#include "tests/support/results.h"

namespace numera::extras {
namespace {

using namespace numera::testing;
using ::arrow::Buffer;
using ArrayPtr = std::shared_ptr<::arrow::Array>;

ArrayPtr TakenIn(const ArrayPtr& array) { return ValueOf(take_in(array)).value; }

TEST(LargeIntake, TakesNumbersBehindTwoToThe31) {
  const std::int64_t length = kTwoTo31 + 9;
  const auto bits = Zeros(length / 8 + 1, {{kTwoTo31 / 8, 0xB6}});
  const auto values = Zeros(length, {{kTwoTo31 + 2, 5}, {kTwoTo31 + 4, 7}});
  const ArrayPtr whole = Made(::arrow::uint8(), length, {bits, values});

  const ArrayPtr taken = TakenIn(whole->Slice(kTwoTo31 + 1, 4));

  EXPECT_EQ(taken->offset(), 0);
  EXPECT_TRUE(SameArray(*taken, *ArrowArray(::arrow::uint8(), "[0, 5, null, 7]")));
}

TEST(LargeIntake, TakesBitsBehindTwoToThe32) {
  const std::int64_t length = kTwoTo32 + 16;
  const auto values = Zeros(length / 8, {{kTwoTo32 / 8, 0xB1}, {kTwoTo32 / 8 + 1, 0x01}});
  const ArrayPtr whole = Made(::arrow::boolean(), length, {nullptr, values});

  const ArrayPtr taken = TakenIn(whole->Slice(kTwoTo32 + 3, 6));

  EXPECT_EQ(taken->offset(), 0);
  EXPECT_TRUE(
      SameArray(*taken, *ArrowArray(::arrow::boolean(), "[false, true, true, false, true, true]")));
}

TEST(LargeIntake, TakesTextsBehindFourGigabytes) {
  const std::vector<std::int64_t> offsets = {0, kTwoTo32 + 1, kTwoTo32 + 3, kTwoTo32 + 4};
  const auto bytes =
      Zeros(kTwoTo32 + 4, {{kTwoTo32 + 1, 'x'}, {kTwoTo32 + 2, 'y'}, {kTwoTo32 + 3, 'z'}});
  const ArrayPtr whole = Made(::arrow::large_utf8(), 3, {nullptr, Buffer::Wrap(offsets), bytes});

  const ArrayPtr taken = TakenIn(whole->Slice(1));

  EXPECT_TRUE(SameArray(*taken, *ArrowArray(::arrow::large_utf8(), R"(["xy", "z"])")));
}

TEST(LargeIntake, TakesListsBehindTwoToThe32Elements) {
  const std::vector<std::int64_t> offsets = {0, kTwoTo32 + 1, kTwoTo32 + 3, kTwoTo32 + 4};
  const ArrayPtr child = Made(::arrow::boolean(), kTwoTo32 + 8,
                              {nullptr, Zeros(kTwoTo32 / 8 + 1, {{kTwoTo32 / 8, 0x1A}})});
  const ArrayPtr whole = std::make_shared<::arrow::LargeListArray>(
      ::arrow::large_list(::arrow::boolean()), 3, Buffer::Wrap(offsets), child);

  const ArrayPtr taken = TakenIn(whole->Slice(1));

  EXPECT_TRUE(SameArray(
      *taken, *ArrowArray(::arrow::large_list(::arrow::boolean()), "[[true, false], [true]]")));
}

TEST(LargeRoundTrip, KeepsAListOfMoreThanTwoToThe32Elements) {
  const std::vector<std::int64_t> offsets = {0, kTwoTo32 + 1, kTwoTo32 + 5};
  const ArrayPtr child = Made(::arrow::boolean(), kTwoTo32 + 5,
                              {nullptr, Zeros(kTwoTo32 / 8 + 1, {{kTwoTo32 / 8, 0x13}})});
  const ArrayPtr lists = std::make_shared<::arrow::LargeListArray>(
      ::arrow::large_list(::arrow::boolean()), 2, Buffer::Wrap(offsets), child);

  const hxArrayPtr written = ValueOf(io::arrow::core::to_numera(lists));
  const hxArrayPtr readable = ValueOf(make_readable(written.get()));
  const ArrayPtr back = ValueOf(io::arrow::core::to_arrow<::arrow::Array>(readable.get()));

  ASSERT_EQ(back->length(), 2);
  const auto& found = static_cast<const ::arrow::LargeListArray&>(*back);
  EXPECT_EQ(found.value_length(0), 4294967297);
  EXPECT_TRUE(SameArray(*found.value_slice(1),
                        *ArrowArray(::arrow::boolean(), "[true, false, false, true]")));
  EXPECT_TRUE(static_cast<const ::arrow::BooleanArray&>(*found.values()).Value(4294967296));
}

}  // namespace
}  // namespace numera::extras
