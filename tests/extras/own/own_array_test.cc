#include <arrow/array.h>
#include <arrow/buffer.h>
#include <arrow/c/bridge.h>
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <thread>
#include <utility>

#include "numera/core/to_arrow.h"
#include "numera/extras/own/own.h"
#include "numera/host/memory.h"
#include "tests/support/arrow_values.h"
#include "tests/support/envelopes.h"
#include "tests/support/faults.h"
#include "tests/support/host_builder.h"

namespace numera::testing {
namespace {

using ::arrow::Array;
using ::arrow::Buffer;
using extras::own_to_arrow;
using host::memory::LiveArrays;

hxArrayPtr doubles() { return Numbers<double>({1, 2, 3, 4}, {0b1011}); }

hxArrayPtr categories() {
  return Envelope("categorical", CategoricalData(TextData("abb", {0, 1, 3}),
                                                 Column<std::int8_t>({0, 1, 0}), Logical({false})));
}

/// Lists of structs with the fields "number" and "category".
hxArrayPtr nested() {
  return ListEnvelope(
      StructEnvelope({"number", "category"}, {Numbers<double>({1, 2, 3}), categories()}),
      Column<std::uint64_t>({0, 1, 3}));
}

std::shared_ptr<Array> owned(hxArrayPtr encoded) {
  return own_to_arrow<Array>(std::move(encoded)).ValueOrDie();
}

class OwnArray : public ::testing::Test {
 protected:
  ~OwnArray() override { EXPECT_EQ(LiveArrays(), before_) << "host arrays left"; }

 private:
  size_t before_ = LiveArrays();
};

TEST_F(OwnArray, IsTheArrayOfToArrow) {
  const hxArrayPtr value = nested();
  const auto borrowed = io::arrow::core::to_arrow<Array>(value.get()).ValueOrDie();
  EXPECT_TRUE(SameArray(*owned(nested()), *borrowed));
}

TEST_F(OwnArray, OutlivesTheHandleThatWasGivenAway) {
  const auto array = owned(nested());
  EXPECT_TRUE(array->ValidateFull().ok());
  EXPECT_TRUE(SameArray(
      *array,
      *ArrowArray(::arrow::large_list(::arrow::struct_(
                      {::arrow::field("number", ::arrow::float64()),
                       ::arrow::field("category", ::arrow::dictionary(::arrow::int8(),
                                                                      ::arrow::large_utf8()))})),
                  R"([[{"number": 1, "category": "a"}],
                      [{"number": 2, "category": "bb"}, {"number": 3, "category": "a"}]])")));
}

TEST_F(OwnArray, CopiesNoByte) {
  hxArrayPtr value = doubles();
  const hxArray* valid = hxGetField(value.get(), 0, "Valid");
  const void* bits = hxGetData(hxGetField(valid, 0, "Values"));
  const void* values = hxGetData(hxGetField(value.get(), 0, "Data"));
  const auto array = owned(std::move(value));
  EXPECT_EQ(array->data()->buffers[0]->data(), bits);
  EXPECT_EQ(array->data()->buffers[1]->data(), values);
}

TEST_F(OwnArray, FreesTheHostValueWithItsLastBuffer) {
  const size_t before = LiveArrays();
  auto array = owned(doubles());
  auto buffer = array->data()->buffers[1];
  array.reset();
  EXPECT_GT(LiveArrays(), before);
  EXPECT_EQ(buffer->ToString(), Buffer::FromVector(std::vector<double>{1, 2, 3, 4})->ToString());
  buffer.reset();
  EXPECT_EQ(LiveArrays(), before);
}

TEST_F(OwnArray, LivesThroughSlices) {
  const auto slice = owned(doubles())->Slice(1)->Slice(1, 2);
  EXPECT_TRUE(SameArray(*slice, *ArrowArray(::arrow::float64(), "[null, 4]")));
  const auto bytes = ::arrow::SliceBuffer(owned(doubles())->data()->buffers[1], 8, 8);
  EXPECT_EQ(*bytes->data_as<double>(), 2.0);
}

TEST_F(OwnArray, LivesThroughItsChildren) {
  const auto list = std::static_pointer_cast<::arrow::LargeListArray>(owned(nested()));
  auto number = std::static_pointer_cast<::arrow::StructArray>(list->values())->field(0);
  EXPECT_TRUE(SameArray(*number, *ArrowArray(::arrow::float64(), "[1, 2, 3]")));
}

TEST_F(OwnArray, LivesThroughItsDictionary) {
  const auto dictionary =
      std::static_pointer_cast<::arrow::DictionaryArray>(owned(categories()))->dictionary();
  EXPECT_TRUE(SameArray(*dictionary, *ArrowArray(::arrow::large_utf8(), R"(["a", "bb"])")));
}

TEST_F(OwnArray, LivesThroughTheCDataInterface) {
  ::ArrowArray exported;
  ::ArrowSchema schema;
  ASSERT_TRUE(::arrow::ExportArray(*owned(nested()), &exported, &schema).ok());
  const auto imported = ::arrow::ImportArray(&exported, &schema).ValueOrDie();
  EXPECT_TRUE(SameArray(*imported, *owned(nested())));
}

TEST_F(OwnArray, IsReleasedByTheCDataInterface) {
  const size_t before = LiveArrays();
  ::ArrowArray exported;
  ASSERT_TRUE(::arrow::ExportArray(*owned(nested()), &exported).ok());
  EXPECT_GT(LiveArrays(), before);
  exported.release(&exported);
  EXPECT_EQ(LiveArrays(), before);
}

TEST_F(OwnArray, MayBeReleasedOnAnotherThread) {
  const size_t before = LiveArrays();
  auto array = owned(nested());
  std::thread([moved = std::move(array)]() mutable { moved.reset(); }).join();
  EXPECT_EQ(LiveArrays(), before);
}

TEST_F(OwnArray, LeavesASharedCopyToItsOwner) {
  const hxArrayPtr kept = doubles();
  const auto array = owned(hxSharedCopy(kept.get()));
  EXPECT_TRUE(SameArray(*array, *ArrowArray(::arrow::float64(), "[1, 2, null, 4]")));
}

TEST_F(OwnArray, PassesAStatusOnAndDestroysTheValue) {
  const size_t before = LiveArrays();
  const auto result = own_to_arrow<Array>(Envelope("nonsense", Struct({})));
  EXPECT_EQ(result.status(),
            ::arrow::Status::Invalid("Invalid type for NUMERA to Arrow conversion."));
  EXPECT_EQ(own_to_arrow<Array>(nullptr).status(),
            ::arrow::Status::TypeError("Struct array required for input"));
  EXPECT_EQ(LiveArrays(), before);
}

TEST_F(OwnArray, PassesAnExceptionOnAndDestroysTheValue) {
  const size_t before = LiveArrays();
  EXPECT_THROW(static_cast<void>(own_to_arrow<Array>(Struct({{"Data", Scalar(1.0)}}))),
               std::invalid_argument);
  EXPECT_EQ(LiveArrays(), before);
}

TEST_F(OwnArray, SurvivesEveryFailureWithoutALeak) {
  const hxArrayPtr value = nested();
  const FaultSites sites =
      FailEverywhere([&value] { return own_to_arrow<Array>(hxSharedCopy(value.get())).status(); });
  ExpectAtLeast(sites, SitesOfReading(value));
}

TEST_F(OwnArray, BuffersOwnTheirValueToo) {
  hxArrayPtr value = BufferEnvelope({1, 2, 3});
  const void* bytes = hxGetData(hxGetField(value.get(), 0, "Values"));
  const auto buffer = own_to_arrow<Buffer>(std::move(value)).ValueOrDie();
  EXPECT_EQ(buffer->data(), bytes);
  EXPECT_EQ(buffer->ToString(), std::string("\1\2\3"));
}

TEST_F(OwnArray, BuffersPassAStatusOn) {
  hxArrayPtr value = BufferOf(Char("array"), Column<std::uint8_t>({1}));
  EXPECT_EQ(own_to_arrow<Buffer>(std::move(value)).status(),
            ::arrow::Status::TypeError("Expected 'buffer' input type, received 'array' instead."));
}

}  // namespace
}  // namespace numera::testing
