#include "numera/core/to_numera.h"

#include <arrow/array/array_primitive.h>
#include <arrow/extension_type.h>
#include <arrow/memory_pool.h>
#include <gtest/gtest.h>

#include "numera/core/to_arrow.h"
#include "numera/host/memory.h"
#include "tests/core/fail_conversions.h"
#include "tests/core/only_read.h"
#include "tests/support/arrow_values.h"
#include "tests/support/envelopes.h"
#include "tests/support/host_builder.h"
#include "tests/support/host_matchers.h"
#include "tests/support/other_device.h"

namespace numera::io::arrow::core {
namespace {

using namespace numera::testing;
using ::arrow::Status;

/// An extension type without a storage type.
class WithoutStorage final : public ::arrow::ExtensionType {
 public:
  WithoutStorage() : ExtensionType(nullptr) {}
  std::string extension_name() const override { return "without storage"; }
  bool ExtensionEquals(const ExtensionType& other) const override { return this == &other; }
  std::shared_ptr<::arrow::Array> MakeArray(std::shared_ptr<::arrow::ArrayData>) const override {
    return nullptr;
  }
  ::arrow::Result<std::shared_ptr<::arrow::DataType>> Deserialize(
      std::shared_ptr<::arrow::DataType>, const std::string&) const override {
    return Status::NotImplemented("without storage");
  }
  std::string Serialize() const override { return ""; }
};

std::shared_ptr<::arrow::Array> uint8s(std::int64_t length, std::shared_ptr<::arrow::Buffer> bytes,
                                       std::shared_ptr<::arrow::Buffer> validity,
                                       std::int64_t null_count = -1, std::int64_t offset = 0) {
  return std::make_shared<::arrow::UInt8Array>(length, std::move(bytes), std::move(validity),
                                               null_count, offset);
}

TEST(ToNumera, WritesAnEnvelope) {
  const auto array = uint8s(3, ArrowBuffer({10, 20, 30}), ArrowBuffer({0x05}));
  const hxArrayPtr expected = WrittenNumbers<std::uint8_t>({10, 20, 30}, {0xFD});
  EXPECT_TRUE(SameHostValue(to_numera(array).ValueOrDie().get(), expected.get()));
}

TEST(ToNumera, OrdersTheFieldsOfAnEnvelope) {
  const hxArrayPtr envelope = to_numera(ArrowArray(::arrow::int8(), "[1]")).ValueOrDie();
  const char* expected[] = {"ArrowType", "Type", "Valid", "Data"};
  ASSERT_EQ(hxGetNumberOfFields(envelope.get()), 4);
  for (int i = 0; i < 4; ++i) EXPECT_STREQ(hxGetFieldName(envelope.get(), i), expected[i]);
}

TEST(ToNumera, TreatsAnArrayAsAColumnOfOneChunk) {
  const char* const json = "[1, null, 3]";
  const auto array = to_numera(ArrowArray(::arrow::int16(), json)).ValueOrDie();
  const auto column = to_numera(ArrowChunks(::arrow::int16(), {json})).ValueOrDie();
  EXPECT_TRUE(SameHostValue(array.get(), column.get()));
}

TEST(ToNumera, WritesTheLengthOfNullColumns) {
  EXPECT_TRUE(SameHostValue(
      to_numera(ArrowChunks(::arrow::null(), {"[null, null]", "[]", "[null, null, null]"}))
          .ValueOrDie()
          .get(),
      WrittenArray("null", 5, Scalar<std::int64_t>(5), {0xFF}).get()));
}

TEST(ToNumera, ReadsANullArrayWithoutBuffers) {
  const auto array = ::arrow::MakeArray(::arrow::ArrayData::Make(::arrow::null(), 2, {}, 2));
  EXPECT_TRUE(SameHostValue(ToNumeraOnlyReads(array).ValueOrDie().get(),
                            WrittenArray("null", 2, Scalar<std::int64_t>(2), {0xFF}).get()));
}

TEST(ToNumera, WritesAColumnWithoutChunks) {
  EXPECT_TRUE(SameHostValue(
      to_numera(ArrowChunks(::arrow::float64(), {})).ValueOrDie().get(),
      WrittenEnvelope("array", "double", StructArray({0, 1}, kBitmapFields, {}), Column<double>({}))
          .get()));
}

TEST(ToNumera, LeavesTheInputAsItIs) {
  const auto array = ArrowArray(::arrow::int32(), "[1, null, 3]");
  const std::string before = array->ToString();
  const std::int64_t bytes = ::arrow::default_memory_pool()->bytes_allocated();
  ASSERT_TRUE(ToNumeraOnlyReads(array).ok());
  EXPECT_EQ(array->ToString(), before);
  EXPECT_EQ(::arrow::default_memory_pool()->bytes_allocated(), bytes);
  EXPECT_EQ(array.use_count(), 1);
}

TEST(ToNumera, SharesNothingWithAnotherHostArray) {
  const hxArrayPtr envelope = to_numera(ArrowArray(::arrow::int32(), "[1, null]")).ValueOrDie();
  const hxArray* valid = hxGetField(envelope.get(), 0, "Valid");
  EXPECT_FALSE(hxIsDataShared(hxGetField(envelope.get(), 0, "Data")));
  EXPECT_FALSE(hxIsDataShared(hxGetField(valid, 0, "Values")));
}

TEST(ToNumera, RefusesNull) {
  EXPECT_EQ(to_numera(std::shared_ptr<::arrow::Array>()).status(),
            Status::Invalid("Received null pointer in arrow::Array conversion"));
  EXPECT_EQ(to_numera(std::shared_ptr<::arrow::ChunkedArray>()).status(),
            Status::Invalid("Received null pointer in arrow::Column conversion"));
}

TEST(ToNumera, CountsTheNullsOfABitmapThatIsTooShort) {
  const auto array =
      uint8s(20, ArrowBuffer(std::vector<std::uint8_t>(20, 7)), ArrowBuffer({0xFE, 0xFF}));
  EXPECT_TRUE(SameHostValue(
      ToNumeraOnlyReads(array).ValueOrDie().get(),
      WrittenNumbers<std::uint8_t>(std::vector<std::uint8_t>(20, 7), {0xFE, 0xFF, 0xFF}).get()));
}

TEST(ToNumera, FindsNoNullsInABitmapWithoutBits) {
  EXPECT_TRUE(
      SameHostValue(to_numera(uint8s(2, ArrowBuffer({1, 2}), ArrowBuffer({}))).ValueOrDie().get(),
                    WrittenNumbers<std::uint8_t>({1, 2}).get()));
}

TEST(ToNumera, RefusesAnExtentBelowZeroOrTooFar) {
  struct Case {
    std::int64_t length;
    std::int64_t offset;
    const char* message;
  };
  const Case cases[] = {
      {-1, 0, "offset 0 and length -1"},
      {1, -1, "offset -1 and length 1"},
      {0x7FFF'FFFF'FFFF'FFFF, 1, "offset 1 and length 9223372036854775807"},
  };
  for (const Case& one : cases) {
    SCOPED_TRACE(one.message);
    for (const auto& bitmap : {std::shared_ptr<::arrow::Buffer>(), ArrowBuffer({0})}) {
      const auto array = uint8s(one.length, ArrowBuffer({1}), bitmap, -1, one.offset);
      EXPECT_EQ(ToNumeraOnlyReads(array).status(),
                Status::Invalid("Array: found ", one.message,
                                ", expected neither negative and their sum within 64 bits."));
    }
  }
}

TEST(ToNumera, RefusesChunksThatDoNotAddUpToTheColumn) {
  const Status expected = Status::Invalid(
      "Chunked array: found length 8, expected the lengths of its chunks together.");
  const auto huge = [] {
    return std::make_shared<::arrow::BooleanArray>(std::int64_t{1} << 62, ArrowBuffer({1, 2, 3}));
  };
  const auto eight = std::make_shared<::arrow::BooleanArray>(8, ArrowBuffer({1}));
  EXPECT_EQ(ToNumeraOnlyReads(std::make_shared<::arrow::ChunkedArray>(
                                  ::arrow::ArrayVector{huge(), huge(), huge(), huge(), eight}))
                .status(),
            expected);
  for (const std::int64_t changed : {7, 16}) {
    const auto array = std::make_shared<::arrow::BooleanArray>(8, ArrowBuffer({1, 2, 3}));
    const auto column = std::make_shared<::arrow::ChunkedArray>(array);
    array->data()->length = changed;
    EXPECT_EQ(ToNumeraOnlyReads(column).status(), expected);
  }
}

TEST(ToNumera, RefusesAChunkOfAnotherType) {
  const auto column = std::make_shared<::arrow::ChunkedArray>(::arrow::ArrayVector{
      ArrowArray(::arrow::int8(), "[1]"), ArrowArray(::arrow::int64(), "[1]")});
  EXPECT_EQ(ToNumeraOnlyReads(column).status(),
            Status::Invalid("Chunk 1: found int64, expected int8, the type of the column."));
}

const char kNoType[] =
    "Type: found a null pointer, expected a type, with the types of all its fields and values.";

TEST(ToNumera, RefusesChunksAndChildrenWhoseTypesLackATypeWithin) {
  const auto list = ::arrow::list(::arrow::int8());
  const auto bad = ::arrow::list(std::shared_ptr<::arrow::DataType>());
  const auto column = std::make_shared<::arrow::ChunkedArray>(ArrowArray(list, "[[1]]"));
  column->chunk(0)->data()->type = bad;
  EXPECT_EQ(to_numera(column).status(), Status::Invalid(kNoType)) << "the chunk";
  const auto child = ArrowArray(list, "[[1]]")->data()->Copy();
  child->type = bad;
  const auto nested = ::arrow::MakeArray(::arrow::ArrayData::Make(
      ::arrow::struct_({::arrow::field("f", list)}), 1, {nullptr}, {child}, 0));
  EXPECT_EQ(to_numera(nested).status(), Status::Invalid(kNoType)) << "the child";
}

TEST(ToNumera, RefusesTypesThatLackATypeWithin) {
  const std::shared_ptr<::arrow::DataType> none;
  const std::shared_ptr<::arrow::DataType> types[] = {
      ::arrow::list(none),
      ::arrow::large_list(::arrow::list(none)),
      ::arrow::list(std::shared_ptr<::arrow::Field>()),
      ::arrow::struct_({::arrow::field("a", none)}),
      ::arrow::map(::arrow::utf8(), none),
      ::arrow::fixed_size_list(none, 2),
      ::arrow::dictionary(::arrow::int8(), none),
      ::arrow::list(std::make_shared<WithoutStorage>())};
  for (size_t i = 0; i < std::size(types); ++i) {
    const ::arrow::ArrayVector no_chunks;
    EXPECT_EQ(to_numera(std::make_shared<::arrow::ChunkedArray>(no_chunks, types[i])).status(),
              Status::Invalid(kNoType))
        << "type " << i;
  }
}

TEST(ToNumera, RefusesAValuesBufferThatEndsEarly) {
  EXPECT_EQ(ToNumeraOnlyReads(uint8s(4, ArrowBuffer({1, 2}), nullptr)).status(),
            Status::Invalid("Values buffer: found 2 bytes, expected enough for 4 elements."));
}

TEST(ToNumera, LeavesNothingBehindOfARefusedColumn) {
  const size_t live = host::memory::LiveArrays();
  ASSERT_FALSE(to_numera(uint8s(4, nullptr, nullptr)).ok());
  EXPECT_EQ(host::memory::LiveArrays(), live);
}

TEST(ToNumera, ReadsBackWhatToArrowMade) {
  const hxArrayPtr encoded[] = {
      WrittenNumbers<double>({1, 2, 3}, {0xFD}),
      WrittenNumbers<std::int8_t>({}),
      WrittenArray("logical", 9, WrittenBitmap(9, {0x55, 0x01}), {0xFE, 0xFF}),
  };
  for (const hxArrayPtr& value : encoded) {
    const auto array = to_arrow<::arrow::Array>(value.get()).ValueOrDie();
    EXPECT_TRUE(SameHostValue(to_numera(array).ValueOrDie().get(), value.get()));
  }
}

TEST(ToNumera, CallsThatPassThroughBothDoorsGiveAnEqualArray) {
  const std::pair<std::shared_ptr<::arrow::DataType>, const char*> cases[] = {
      {::arrow::float64(), "[1, null, -2.5]"},
      {::arrow::float32(), "[null]"},
      {::arrow::int8(), "[-128, 127, null]"},
      {::arrow::uint8(), "[255, null]"},
      {::arrow::int16(), "[]"},
      {::arrow::uint16(), "[1, 65535]"},
      {::arrow::int32(), "[null, null, 3]"},
      {::arrow::uint32(), "[4294967295]"},
      {::arrow::int64(), "[null, 5]"},
      {::arrow::uint64(), "[18446744073709551615]"},
      {::arrow::boolean(), "[true, null, false, true, true, true, true, true, null]"},
  };
  for (const auto& [type, json] : cases) {
    SCOPED_TRACE(type->ToString());
    const auto array = ArrowArray(type, json);
    const hxArrayPtr encoded = to_numera(array).ValueOrDie();
    EXPECT_TRUE(SameArray(*to_arrow<::arrow::Array>(encoded.get()).ValueOrDie(), *array));
  }
}

TEST(ToNumera, LeavesNothingBehindOfNullColumnsWhereverItFails) {
  const auto column = ArrowChunks(::arrow::null(), {"[null, null]"});
  FailWriting(column);
}

}  // namespace
}  // namespace numera::io::arrow::core
