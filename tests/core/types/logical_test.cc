#include <arrow/array/array_primitive.h>
#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>

#include "numera/core/to_arrow.h"
#include "numera/core/to_numera.h"
#include "numera/core/types/numeric.h"
#include "numera/host/memory.h"
#include "tests/core/data_of.h"
#include "tests/core/fail_conversions.h"
#include "tests/core/reading.h"
#include "tests/support/arrow_values.h"
#include "tests/support/envelopes.h"
#include "tests/support/host_builder.h"
#include "tests/support/host_matchers.h"

namespace numera::io::arrow::core {
namespace {

using namespace numera::testing;
using ::arrow::Status;

hxArrayPtr of_length(hxArrayPtr length, const Bits& valid = {}) {
  return Envelope("logical", BitmapOf(Column<std::uint8_t>({0x15, 0x02}), std::move(length)),
                  valid);
}

TEST(LogicalToArrow, ReadsBitsLeastSignificantFirst) {
  const hxArrayPtr value = of_length(Scalar(10.0));
  const auto array = Reading(value).ValueOrDie();
  EXPECT_TRUE(SameArray(*array, *ArrowArray(::arrow::boolean(),
                                            "[true, false, true, false, true, false, false, false, "
                                            "false, true]")));
}

TEST(LogicalToArrow, BorrowsBothBitmaps) {
  const hxArrayPtr value = of_length(Scalar(3.0), {0x03});
  const auto array = Reading(value).ValueOrDie();
  const hxArray* data = hxGetField(value.get(), 0, "Data");
  const hxArray* valid = hxGetField(value.get(), 0, "Valid");
  EXPECT_EQ(array->data()->buffers[1]->data(), hxGetData(hxGetField(data, 0, "Values")));
  EXPECT_EQ(array->data()->buffers[1]->size(), 2);
  EXPECT_EQ(array->data()->buffers[0]->data(), hxGetData(hxGetField(valid, 0, "Values")));
  EXPECT_EQ(array->data()->null_count.load(), -1);
  EXPECT_EQ(array->offset(), 0);
  EXPECT_TRUE(SameArray(*array, *ArrowArray(::arrow::boolean(), "[true, false, null]")));
}

TEST(LogicalToArrow, TruncatesTheLengthTowardZero) {
  const std::pair<double, std::int64_t> cases[] = {
      {10.9, 10},
      {0.9, 0},
      {-0.9, 0},
      {-1.9, -1},
      {9223372036854774784.0, 9223372036854774784},
      {-9223372036854775808.0, std::numeric_limits<std::int64_t>::min()},
  };
  for (const auto& [length, expected] : cases) {
    SCOPED_TRACE(length);
    const hxArrayPtr value = of_length(Scalar(length));
    EXPECT_EQ(Reading(value).ValueOrDie()->length(), expected);
  }
}

TEST(LogicalToArrow, TakesFewerBitsThanTheLengthSays) {
  const hxArrayPtr value = of_length(Scalar(1000.0));
  const auto array = Reading(value).ValueOrDie();
  EXPECT_EQ(array->length(), 1000);
  EXPECT_EQ(array->data()->buffers[1]->size(), 2);
}

TEST(LogicalToArrow, RefusesALengthThatIsNoNumberOfElements) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  const std::pair<double, const char*> cases[] = {
      {std::numeric_limits<double>::quiet_NaN(), "nan"},
      {kInfinity, "inf"},
      {-kInfinity, "-inf"},
      {9223372036854775808.0, "9223372036854775808.000000"},
      {-9223372036854777856.0, "-9223372036854777856.000000"},
  };
  for (const auto& [length, text] : cases) {
    SCOPED_TRACE(text);
    const hxArrayPtr value = of_length(Scalar(length));
    EXPECT_EQ(Reading(value).status(),
              Status::TypeError("Field 'Length': found ", text,
                                ", expected a number of elements within 64 bits."));
  }
}

TEST(LogicalToArrow, RefusesALengthThatIsNotOneRealDouble) {
  struct Case {
    hxArrayPtr length;
    const char* message;
  };
  const Case cases[] = {
      {Column<double>({}),
       "Field 'Length': found a 0-by-1 double array, expected a double of one element."},
      {Row<double>({1, 2}),
       "Field 'Length': found a 1-by-2 double array, expected a double of one element."},
      {Complex<double>({1, 1}, {{1, 2}}),
       "Field 'Length': found a complex 1-by-1 double array, expected a real array that is not "
       "sparse."},
      {host::memory::CreateSparseArray(Dims{1, 1}, hxClassID::Double),
       "Field 'Length': found a sparse 1-by-1 double array, expected a real array that is not "
       "sparse."},
      {Scalar<std::int64_t>(2), "Incorrect type 'int64' for struct array field 'Length'"},
      {Char("2"), "Incorrect type 'char' for struct array field 'Length'"},
      {Empty(), "Missing field 'Length' in input struct array"},
  };
  for (const Case& one : cases) {
    SCOPED_TRACE(one.message);
    const hxArrayPtr value =
        of_length(one.length == nullptr ? Empty() : hxSharedCopy(one.length.get()));
    EXPECT_EQ(Reading(value).status(), Status::TypeError(one.message));
  }
}

TEST(LogicalToArrow, PassesOnWhatTheBufferReaderRefuses) {
  struct Case {
    hxArrayPtr value;
    const char* message;
  };
  const auto bytes = [] { return Column<std::uint8_t>({1}); };
  const Case cases[] = {
      {BitmapOf(bytes(), Scalar(1.0), Char("bits")),
       "Expected 'buffer' input type, received 'bits' instead."},
      {BitmapOf(bytes(), Scalar(1.0), Scalar(1.0)),
       "Incorrect type 'double' for struct array field 'ArrowType'"},
      {BitmapOf(bytes(), Scalar(1.0), Empty()), "Missing field 'ArrowType' in input struct array"},
      {BitmapOf(Logical({true}), Scalar(1.0), Char("buffer")),
       "Incorrect type 'logical' for struct array field 'Values'"},
      {BitmapOf(Empty(), Scalar(1.0), Char("buffer")),
       "Missing field 'Values' in input struct array"},
      {BitmapOf(Complex<std::uint8_t>({1, 1}, {{1, 2}}), Scalar(1.0), Char("buffer")),
       "Field 'Values': found a complex 1-by-1 uint8 array, expected a real array that is not "
       "sparse."},
      {BitmapOf(Empty(), Empty(), Empty()), "Missing field 'Length' in input struct array"},
  };
  for (const Case& one : cases) {
    SCOPED_TRACE(one.message);
    EXPECT_EQ(Reading(Envelope("logical", hxSharedCopy(one.value.get()))).status(),
              Status::TypeError(one.message));
  }
}

TEST(LogicalToArrow, ThrowsWhereTheHostDoes) {
  const hxArrayPtr without_length = Envelope("logical", BufferEnvelope({1}));
  EXPECT_THROW(static_cast<void>(Reading(without_length)), std::invalid_argument);
  const hxArrayPtr without_elements = Envelope("logical", StructArray({0, 1}, kBitmapFields, {}));
  EXPECT_THROW(static_cast<void>(Reading(without_elements)), std::out_of_range);
}

TEST(LogicalToArrow, RefusesWhatIsNoStruct) {
  const hxArrayPtr value = Logical({true});
  EXPECT_EQ(logical_to_arrow(value.get(), nullptr).status(),
            Status::TypeError("Struct array required for input"));
}

TEST(LogicalToNumera, PacksBitsLeastSignificantFirst) {
  const auto array =
      ArrowArray(::arrow::boolean(), "[true, false, true, false, true, false, false, false, true]");
  EXPECT_TRUE(SameHostValue(to_numera(array).ValueOrDie().get(),
                            WrittenArray("logical", 9, WrittenBitmap(9, {0x15, 0x01})).get()));
}

TEST(LogicalToNumera, GivesNoBytesForNoElements) {
  EXPECT_TRUE(
      SameHostValue(DataOf(ArrowChunks(::arrow::boolean(), {"[]"})).get(), WrittenBitmap(0).get()));
}

TEST(LogicalToNumera, JoinsChunks) {
  const auto chunks = ArrowChunks(::arrow::boolean(), {"[true, true, false]", "[]",
                                                       "[false, true, true, true, true, "
                                                       "true]"});
  EXPECT_TRUE(SameHostValue(DataOf(chunks).get(), WrittenBitmap(9, {0xF3, 0x01}).get()));
}

/// A boolean array over exactly these bytes.
std::shared_ptr<::arrow::Array> booleans(std::int64_t length, std::shared_ptr<::arrow::Buffer> bits,
                                         std::int64_t offset = 0) {
  return std::make_shared<::arrow::BooleanArray>(length, std::move(bits), nullptr, 0, offset);
}

TEST(LogicalToNumera, ReadsASliceFromTheStartOfItsBuffer) {
  const auto array = booleans(16, ArrowBuffer({0x0F, 0xF0}))->Slice(5, 4);
  EXPECT_TRUE(SameHostValue(DataOf(array).get(), WrittenBitmap(4, {0x0F}).get()));
}

TEST(LogicalToNumera, CarriesWholeBytesIntoTheUnusedBits) {
  const auto array = booleans(3, ArrowBuffer({0xFF, 0xFF}));
  EXPECT_TRUE(SameHostValue(DataOf(array).get(), WrittenBitmap(3, {0xFF}).get()));
  const auto last_byte = booleans(3, ArrowBuffer({0xFF}));
  EXPECT_TRUE(SameHostValue(DataOf(last_byte).get(), WrittenBitmap(3, {0x07}).get()));
}

TEST(LogicalToNumera, CarriesNothingIntoAnotherChunk) {
  const auto chunks = std::make_shared<::arrow::ChunkedArray>(
      ::arrow::ArrayVector{booleans(8, ArrowBuffer({0xAA, 0xFF, 0xFF})), booleans(5, nullptr)});
  EXPECT_TRUE(SameHostValue(DataOf(chunks).get(), WrittenBitmap(13, {0xAA, 0xE0}).get()));
}

TEST(LogicalToNumera, LeavesBitsThatNoBufferHoldsAtZero) {
  for (const auto& buffer : {std::shared_ptr<::arrow::Buffer>(), ArrowBuffer({})}) {
    EXPECT_TRUE(
        SameHostValue(DataOf(booleans(17, buffer)).get(), WrittenBitmap(17, {0, 0, 0}).get()));
  }
  EXPECT_TRUE(SameHostValue(DataOf(booleans(17, ArrowBuffer({0xFF}))).get(),
                            WrittenBitmap(17, {0xFF, 0, 0}).get()));
}

TEST(Logical, ConversionsLeaveNothingBehindWhereverTheyFail) {
  const auto chunks = ArrowChunks(::arrow::boolean(), {"[true, null, false]", "[true]"});
  FailWriting(chunks);

  const hxArrayPtr encoded = Envelope("logical", WrittenBitmap(9, {0x15, 0x01}), {0xFF, 0x00});
  FailReading(encoded);
}

}  // namespace
}  // namespace numera::io::arrow::core
