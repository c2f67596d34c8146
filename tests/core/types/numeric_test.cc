#include "numera/core/types/numeric.h"

#include <arrow/array/array_primitive.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "numera/core/to_arrow.h"
#include "numera/core/to_numera.h"
#include "numera/host/memory.h"
#include "tests/core/data_of.h"
#include "tests/core/fail_conversions.h"
#include "tests/core/reading.h"
#include "tests/support/arrow_values.h"
#include "tests/support/envelopes.h"
#include "tests/support/host_builder.h"
#include "tests/support/host_matchers.h"
#include "tests/support/other_device.h"

namespace numera::io::arrow::core {
namespace {

using namespace numera::testing;
using ::arrow::ArrayData;
using ::arrow::Status;

/// A numeric class, with values at its limits.
struct NumericClass {
  const char* name;
  std::shared_ptr<::arrow::DataType> type;
  hxArrayPtr (*host)();
  const char* json;
};

const NumericClass kClasses[] = {
    {"double", ::arrow::float64(),
     [] { return Column<double>({0, -1.5, std::numeric_limits<double>::max()}); },
     "[0, -1.5, 1.7976931348623157e308]"},
    {"single", ::arrow::float32(), [] { return Column<float>({0, -1.5F, 16777216.0F}); },
     "[0, -1.5, 16777216]"},
    {"int8", ::arrow::int8(), [] { return Column<std::int8_t>({0, -128, 127}); }, "[0, -128, 127]"},
    {"uint8", ::arrow::uint8(), [] { return Column<std::uint8_t>({0, 1, 255}); }, "[0, 1, 255]"},
    {"int16", ::arrow::int16(), [] { return Column<std::int16_t>({0, -32768, 32767}); },
     "[0, -32768, 32767]"},
    {"uint16", ::arrow::uint16(), [] { return Column<std::uint16_t>({0, 1, 65535}); },
     "[0, 1, 65535]"},
    {"int32", ::arrow::int32(),
     [] { return Column<std::int32_t>({0, -2147483647 - 1, 2147483647}); },
     "[0, -2147483648, 2147483647]"},
    {"uint32", ::arrow::uint32(), [] { return Column<std::uint32_t>({0, 1, 4294967295U}); },
     "[0, 1, 4294967295]"},
    {"int64", ::arrow::int64(),
     [] {
       return Column<std::int64_t>(
           {0, std::numeric_limits<std::int64_t>::min(), std::numeric_limits<std::int64_t>::max()});
     },
     "[0, -9223372036854775808, 9223372036854775807]"},
    {"uint64", ::arrow::uint64(),
     [] { return Column<std::uint64_t>({0, 1, std::numeric_limits<std::uint64_t>::max()}); },
     "[0, 1, 18446744073709551615]"},
};

TEST(NumericToArrow, GivesEveryClassItsType) {
  for (const NumericClass& one : kClasses) {
    SCOPED_TRACE(one.name);
    const hxArrayPtr encoded = Envelope(one.name, one.host());
    EXPECT_TRUE(SameArray(*Reading(encoded).ValueOrDie(), *ArrowArray(one.type, one.json)));
  }
}

TEST(NumericToArrow, BorrowsTheMemoryOfTheHost) {
  for (const NumericClass& one : kClasses) {
    SCOPED_TRACE(one.name);
    const hxArrayPtr encoded = Envelope(one.name, one.host());
    const auto array = Reading(encoded).ValueOrDie();
    const auto& buffer = array->data()->buffers[1];
    const hxArray* values = hxGetField(encoded.get(), 0, "Data");
    EXPECT_EQ(buffer->data(), hxGetData(values));
    EXPECT_EQ(buffer->size(), static_cast<std::int64_t>(3 * hxGetElementSize(values)));
    EXPECT_FALSE(hxIsDataShared(values));
  }
}

TEST(NumericToArrow, SeesLaterChangesOfTheHostArray) {
  hxArrayPtr values = Column<double>({1, 2});
  auto* const data = static_cast<double*>(hxGetData(values.get()));
  const hxArrayPtr encoded = Envelope("double", std::move(values));
  const auto array = Reading(encoded).ValueOrDie();
  data[1] = 7;
  EXPECT_TRUE(SameArray(*array, *ArrowArray(::arrow::float64(), "[1, 7]")));
}

TEST(NumericToArrow, LeavesTheNullsUncounted) {
  const hxArrayPtr encoded = Numbers<double>({1, 2, 3}, {0x05});
  const auto array = Reading(encoded).ValueOrDie();
  const hxArray* valid = hxGetField(encoded.get(), 0, "Valid");
  EXPECT_EQ(array->data()->null_count.load(), -1);
  EXPECT_EQ(array->offset(), 0);
  EXPECT_EQ(array->data()->buffers[0]->data(), hxGetData(hxGetField(valid, 0, "Values")));
  EXPECT_TRUE(SameArray(*array, *ArrowArray(::arrow::float64(), "[1, null, 3]")));
}

TEST(NumericToArrow, ReadsEveryShapeInStorageOrder) {
  const hxArrayPtr shapes[] = {
      Envelope("int16", Matrix<std::int16_t>({2, 3}, {1, 2, 3, 4, 5, 6})),
      Envelope("int16", Row<std::int16_t>({1, 2, 3, 4, 5, 6})),
      Numbers<std::int16_t>({1, 2, 3, 4, 5, 6}),
      Envelope("int16", Matrix<std::int16_t>({1, 3, 2}, {1, 2, 3, 4, 5, 6}))};
  const auto expected = ArrowArray(::arrow::int16(), "[1, 2, 3, 4, 5, 6]");
  for (const hxArrayPtr& encoded : shapes)
    EXPECT_TRUE(SameArray(*Reading(encoded).ValueOrDie(), *expected));
}

TEST(NumericToArrow, GivesAnEmptyArrayOverAnEmptyBuffer) {
  for (const Dims& dims : {Dims{0, 0}, Dims{0, 1}, Dims{1, 0}, Dims{3, 0, 2}}) {
    const hxArrayPtr encoded = Envelope("double", Matrix<double>(dims, {}));
    const auto array = Reading(encoded).ValueOrDie();
    EXPECT_TRUE(SameArray(*array, *ArrowArray(::arrow::float64(), "[]")));
    ASSERT_NE(array->data()->buffers[1], nullptr);
    EXPECT_EQ(array->data()->buffers[1]->size(), 0);
  }
}

TEST(NumericToArrow, RefusesOtherClasses) {
  const hxArrayPtr others[] = {Logical({true}), Char("1"), Cell({Scalar(1.0)}),
                               Struct({{"a", Scalar(1.0)}}), Strings({u"1"})};
  for (const hxArrayPtr& other : others) {
    SCOPED_TRACE(hxGetClassName(other.get()));
    EXPECT_EQ(numeric_to_arrow(other.get(), nullptr).status(),
              Status::Invalid("Invalid type for numeric NUMERA to Arrow conversion."));
  }
}

TEST(NumericToArrow, NamesTheFieldThatIsComplexOrSparse) {
  const hxArrayPtr complex = Complex<float>({1, 2}, {{1, 2}, {3, 4}});
  EXPECT_EQ(numeric_to_arrow(complex.get(), nullptr).status(),
            Status::TypeError("Field 'Data': found a complex 1-by-2 single array, expected a real "
                              "array that is not sparse."));
  const hxArrayPtr sparse = host::memory::CreateSparseArray(Dims{3, 2}, hxClassID::Double);
  EXPECT_EQ(numeric_to_arrow(sparse.get(), nullptr, "Codes").status(),
            Status::TypeError("Field 'Codes': found a sparse 3-by-2 double array, expected a real "
                              "array that is not sparse."));
}

TEST(NumericToNumera, GivesEveryTypeItsClass) {
  for (const NumericClass& one : kClasses) {
    SCOPED_TRACE(one.name);
    const auto envelope = to_numera(ArrowArray(one.type, one.json)).ValueOrDie();
    const hxArrayPtr expected = WrittenArray(one.name, 3, one.host());
    EXPECT_TRUE(SameHostValue(envelope.get(), expected.get()));
  }
}

TEST(NumericToNumera, JoinsChunksInOrder) {
  const auto chunks = ArrowChunks(::arrow::float64(), {"[1, 2, 3]", "[]", "[4, 5]"});
  EXPECT_TRUE(SameHostValue(DataOf(chunks).get(), Column<double>({1, 2, 3, 4, 5}).get()));
}

TEST(NumericToNumera, HonoursTheOffsetOfASlice) {
  const auto whole = ArrowArray(::arrow::int32(), "[0, 1, 2, 3, 4, 5, 6, 7]");
  const auto chunks = std::make_shared<::arrow::ChunkedArray>(
      ::arrow::ArrayVector{whole->Slice(4), whole->Slice(1, 2)->Slice(1)});
  EXPECT_TRUE(SameHostValue(DataOf(chunks).get(), Column<std::int32_t>({4, 5, 6, 7, 2}).get()));
}

TEST(NumericToNumera, CopiesWhatLiesUnderNulls) {
  const auto array =
      std::make_shared<::arrow::UInt8Array>(3, ArrowBuffer({10, 20, 30}), ArrowBuffer({0x05}));
  EXPECT_TRUE(SameHostValue(DataOf(array).get(), Column<std::uint8_t>({10, 20, 30}).get()));
}

TEST(NumericToNumera, KeepsTheBitsOfEveryNan) {
  const std::vector<std::uint64_t> bits = {0x7FF0'0000'0000'0001, 0xFFF8'0000'0000'1234,
                                           0x8000'0000'0000'0000};
  const auto array = std::make_shared<::arrow::DoubleArray>(3, ::arrow::Buffer::Wrap(bits));
  const hxArrayPtr values = DataOf(array);
  const auto* data =
      static_cast<const std::uint64_t*>(hxGetData(static_cast<const hxArray*>(values.get())));
  EXPECT_EQ(std::vector<std::uint64_t>(data, data + 3), bits);
}

TEST(NumericToNumera, GivesAnEmptyColumnForNoElements) {
  const hxArrayPtr expected = Column<double>({});
  EXPECT_TRUE(SameHostValue(DataOf(ArrowChunks(::arrow::float64(), {})).get(), expected.get()));
  const auto no_buffer = std::make_shared<::arrow::DoubleArray>(0, nullptr);
  EXPECT_TRUE(SameHostValue(DataOf(no_buffer).get(), expected.get()));
}

TEST(NumericToNumera, OwnsItsData) {
  const auto array = ArrowArray(::arrow::float64(), "[1, 2]");
  const hxArrayPtr values = DataOf(array);
  EXPECT_NE(hxGetData(static_cast<const hxArray*>(values.get())),
            array->data()->buffers[1]->data());
}

TEST(NumericToNumera, RefusesABufferThatEndsEarly) {
  const auto short_status = [](std::int64_t bytes, std::int64_t elements) {
    return Status::Invalid("Values buffer: found " + std::to_string(bytes) +
                           " bytes, expected enough for " + std::to_string(elements) +
                           " elements.");
  };
  const std::vector<std::int32_t> data = {1, 2, 3};
  const auto buffer = ::arrow::Buffer::Wrap(data);
  const auto odd = std::make_shared<::arrow::Buffer>(buffer->data(), 11);
  const auto other = BufferOfOtherDevice(12);
  struct Case {
    std::shared_ptr<::arrow::Buffer> values;
    std::int64_t length;
    std::int64_t offset;
    Status expected;
  };
  const Case cases[] = {
      {buffer, 4, 0, short_status(12, 4)},
      {buffer, 2, 2, short_status(12, 4)},
      {buffer, 1, 3, short_status(12, 4)},
      {odd, 3, 0, short_status(11, 3)},
      {nullptr, 1, 0, short_status(0, 1)},
      {other, 3, 0,
       Status::Invalid("Buffer: found bytes that cannot be read here, expected main memory.")},
      {buffer, std::int64_t{1} << 62, 0, short_status(12, std::int64_t{1} << 62)},
  };
  for (const Case& one : cases) {
    SCOPED_TRACE(::testing::Message() << one.length << " from " << one.offset);
    const auto array =
        std::make_shared<::arrow::Int32Array>(one.length, one.values, nullptr, 0, one.offset);
    EXPECT_EQ(to_numera(array).status(), one.expected);
  }
}

TEST(NumericChunkCopy, WritesFromTheStartAndReturnsTheEnd) {
  const auto chunks = ArrowChunks(::arrow::int8(), {"[1, 2]", "[3]"});
  std::vector<std::int8_t> target(6, 9);
  EXPECT_EQ(numeric_chunk_copy<std::int8_t>(*chunks, target, 2), 5);
  EXPECT_EQ(target, (std::vector<std::int8_t>{9, 9, 1, 2, 3, 9}));
}

TEST(Numeric, ConversionsLeaveNothingBehindWhereverTheyFail) {
  const auto chunks = ArrowChunks(::arrow::float64(), {"[1, null, 3]", "[4]"});
  FailWriting(chunks);

  const hxArrayPtr encoded = Numbers<double>({1, 2, 3}, {0x05});
  FailReading(encoded);
}

}  // namespace
}  // namespace numera::io::arrow::core
