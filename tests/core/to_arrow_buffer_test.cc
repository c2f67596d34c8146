#include <gtest/gtest.h>

#include <stdexcept>

#include "numera/core/to_arrow.h"
#include "numera/host/memory.h"
#include "tests/support/arrow_values.h"
#include "tests/support/envelopes.h"
#include "tests/support/faults.h"
#include "tests/support/host_builder.h"
#include "tests/support/thrown.h"

namespace numera::io::arrow::core {
namespace {

using namespace numera::testing;
using ::arrow::Buffer;
using ::arrow::Status;

Status buffer_of(const hxArrayPtr& encoded) { return to_arrow<Buffer>(encoded.get()).status(); }

TEST(ToArrowBuffer, RefusesWhatIsNoStruct) {
  const hxArrayPtr others[] = {Column<std::uint8_t>({1}), Char("buffer"), Cell({}), nullptr};
  for (const hxArrayPtr& other : others) {
    EXPECT_EQ(buffer_of(other), Status::TypeError("Struct array required for input"));
  }
}

TEST(ToArrowBuffer, CoversTheBytesOfTheHost) {
  const hxArrayPtr encoded = BufferEnvelope({1, 2, 255});
  const auto buffer = to_arrow<Buffer>(encoded.get()).ValueOrDie();
  EXPECT_TRUE(buffer->Equals(*ArrowBuffer({1, 2, 255})));
  EXPECT_EQ(buffer->data(), hxGetData(hxGetField(encoded.get(), 0, "Values")));
}

TEST(ToArrowBuffer, TakesEveryShapeAndDoesNotReadTheLength) {
  const hxArrayPtr encoded =
      BitmapOf(Matrix<std::uint8_t>({2, 2}, {1, 2, 3, 4}), Char("not a number"));
  EXPECT_TRUE(to_arrow<Buffer>(encoded.get()).ValueOrDie()->Equals(*ArrowBuffer({1, 2, 3, 4})));
}

TEST(ToArrowBuffer, GivesAnEmptyBufferForNoBytes) {
  EXPECT_EQ(to_arrow<Buffer>(BufferEnvelope({}).get()).ValueOrDie()->size(), 0);
}

TEST(ToArrowBuffer, ReportsTheFirstFailingField) {
  struct Case {
    hxArrayPtr encoded;
    const char* message;
  };
  const Case cases[] = {
      {BufferOf(Empty(), Empty()), "Missing field 'ArrowType' in input struct array"},
      {BufferOf(Scalar(1.0), Empty()),
       "Incorrect type 'double' for struct array field 'ArrowType'"},
      {BufferOf(Char("bits"), Empty()), "Missing field 'Values' in input struct array"},
      {BufferOf(Char("bits"), Scalar<std::int8_t>(1)),
       "Incorrect type 'int8' for struct array field 'Values'"},
      {BufferOf(Char("buffer"), Logical({true})),
       "Incorrect type 'logical' for struct array field 'Values'"},
      {BufferOf(Char("Buffer"), Scalar<std::uint8_t>(1)),
       "Expected 'buffer' input type, received 'Buffer' instead."},
      {BufferOf(Char("array"), Scalar<std::uint8_t>(1)),
       "Expected 'buffer' input type, received 'array' instead."},
      {BufferOf(Char("buffer"), Complex<std::uint8_t>({1, 1}, {{1, 2}})),
       "Field 'Values': found a complex 1-by-1 uint8 array, expected a real array that is not "
       "sparse."},
      {BufferOf(Char("buffer"), host::memory::CreateSparseArray(Dims{1, 1}, hxClassID::UInt8)),
       "Field 'Values': found a sparse 1-by-1 uint8 array, expected a real array that is not "
       "sparse."},
  };
  for (const Case& one : cases) {
    SCOPED_TRACE(one.message);
    EXPECT_EQ(buffer_of(one.encoded), Status::TypeError(one.message));
  }
}

TEST(ToArrowBuffer, ThrowsWhereTheHostDoes) {
  const hxArrayPtr without_values = Struct({{"ArrowType", Char("buffer")}});
  EXPECT_EQ(MessageThrown<std::invalid_argument>(
                [&without_values] { static_cast<void>(buffer_of(without_values)); }),
            "Wrong field name.");
  const hxArrayPtr without_elements = StructArray({1, 0}, {"ArrowType", "Values"}, {});
  EXPECT_EQ(MessageThrown<std::out_of_range>(
                [&without_elements] { static_cast<void>(buffer_of(without_elements)); }),
            "Struct index is out of range.");
}

TEST(ToArrowBuffer, LeavesNothingBehindWhereverItFails) {
  const hxArrayPtr encoded = BufferEnvelope({1, 2});
  ExpectAtLeast(FailEverywhere([&] { return buffer_of(encoded); }), SitesOfReading(encoded));
}

}  // namespace
}  // namespace numera::io::arrow::core
