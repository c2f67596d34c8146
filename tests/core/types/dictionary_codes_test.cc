#include "numera/core/types/dictionary_codes.h"

#include <arrow/array/array_binary.h>
#include <arrow/array/data.h>
#include <arrow/type.h>
#include <arrow/type_traits.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/arrow_values.h"
#include "tests/support/offset_arrays.h"
#include "tests/support/other_device.h"
#include "tests/support/results.h"

namespace numera::io::arrow::core {
namespace {

using namespace numera::testing;

std::shared_ptr<::arrow::ArrayData> dictionary_of(std::int64_t length) {
  std::string json = "[";
  for (std::int64_t i = 0; i < length; ++i) json += (i == 0 ? "\"\"" : ", \"\"");
  return ArrowArray(::arrow::utf8(), json + "]")->data();
}

template <class Code>
std::shared_ptr<::arrow::DictionaryArray> array_of(
    const std::vector<Code>& codes, const std::shared_ptr<::arrow::ArrayData>& dictionary) {
  const auto index_type = ::arrow::CTypeTraits<Code>::type_singleton();
  auto data = ::arrow::ArrayData::Make(::arrow::dictionary(index_type, ::arrow::utf8()),
                                       static_cast<std::int64_t>(codes.size()),
                                       {nullptr, ExactBuffer(codes)}, 0);
  data->dictionary = dictionary;
  return std::make_shared<::arrow::DictionaryArray>(data);
}

template <class Code>
class CodesWithinDictionary : public ::testing::Test {};
using CodeTypes = ::testing::Types<std::int8_t, std::uint8_t, std::int16_t, std::uint16_t,
                                   std::int32_t, std::uint32_t, std::int64_t, std::uint64_t>;
TYPED_TEST_SUITE(CodesWithinDictionary, CodeTypes);

TYPED_TEST(CodesWithinDictionary, FindsOneStrayCodeInEveryPlace) {
  using Code = TypeParam;
  using Limits = std::numeric_limits<Code>;
  constexpr size_t kCodes = 40;
  for (const std::int64_t length : {1, 2, 100, 127, 128, 129, 255, 256, 257, 40'000}) {
    const auto dictionary = dictionary_of(length);
    const auto last = static_cast<Code>(
        std::cmp_less(length - 1, Limits::max()) ? static_cast<Code>(length - 1) : Limits::max());
    for (const Code code :
         {Code{0}, last, static_cast<Code>(last + 1), Limits::min(), Limits::max(),
          static_cast<Code>(Limits::max() / 2 + 1), static_cast<Code>(-1)}) {
      const bool within = std::cmp_greater_equal(code, 0) && std::cmp_less(code, length);
      for (size_t place = 0; place < kCodes; ++place) {
        std::vector<Code> codes(kCodes, last);
        codes[place] = code;
        const auto array = array_of(codes, dictionary);
        const auto result = codes_within_dictionary(*array);
        ASSERT_EQ(result.ok(), within)
            << "code " << +code << " at " << place << " of a dictionary of " << length;
        if (within) {
          ASSERT_EQ((*result)->data()->buffers[1], array->data()->buffers[1]);
        }
      }
    }
  }
}

TYPED_TEST(CodesWithinDictionary, TakesNoCodesOfAnyDictionaryAsTheyAre) {
  const std::vector<TypeParam> none;
  for (const std::int64_t length : {0, 1, 300}) {
    SCOPED_TRACE(length);
    const auto array = array_of(none, dictionary_of(length));
    EXPECT_EQ(ValueOf(codes_within_dictionary(*array))->data()->buffers, array->data()->buffers);
  }
}

/// Arrow would ask for their address.
TEST(CodesOfADevice, AreLeftOutWhereThereAreNoElements) {
  const auto array = array_of<std::int8_t>({}, dictionary_of(1));
  array->data()->buffers[1] = BufferOfOtherDevice(8);
  EXPECT_EQ(ValueOf(codes_within_dictionary(*array))->data()->buffers[1], nullptr);
}

TYPED_TEST(CodesWithinDictionary, RefusesEveryCodeOfADictionaryWithoutElements) {
  const std::vector<TypeParam> zero{0};
  const auto negative = dictionary_of(0)->Copy();
  negative->length = -1;
  EXPECT_EQ(codes_within_dictionary(*array_of(zero, dictionary_of(0))).status(),
            ::arrow::Status::Invalid("Dictionary code: found 0 at slot 0, expected an index into a "
                                     "dictionary of 0 values."));
  EXPECT_EQ(codes_within_dictionary(*array_of(zero, negative)).status(),
            ::arrow::Status::Invalid("Dictionary code: found 0 at slot 0, expected an index into a "
                                     "dictionary of -1 values."));
}

/// `length` null codes from `offset` on, with a bitmap of `bytes` bytes. `covers`: the bitmap is
/// long enough.
struct BitmapCase {
  std::int64_t offset;
  std::int64_t length;
  size_t bytes;
  bool covers;
};
constexpr BitmapCase kBitmaps[] = {{0, 8, 1, true},  {0, 9, 2, true},  {0, 16, 2, true},
                                   {1, 7, 1, true},  {8, 8, 2, true},  {3, 8, 2, true},
                                   {0, 9, 1, false}, {1, 8, 1, false}, {0, 17, 2, false}};

TYPED_TEST(CodesWithinDictionary, AreCopiedWhereTheirBitmapEndsEarlyAndOnlyThere) {
  for (const BitmapCase& one : kBitmaps) {
    SCOPED_TRACE(std::to_string(one.length) + " from " + std::to_string(one.offset) + " on, " +
                 std::to_string(one.bytes) + " bytes");
    const std::vector<TypeParam> codes(static_cast<size_t>(one.offset + one.length), TypeParam{1});
    auto data = array_of(codes, dictionary_of(2))->data()->Copy();
    data->buffers[0] = ExactBuffer(std::vector<std::uint8_t>(one.bytes));
    data->null_count = ::arrow::kUnknownNullCount;
    data->offset = one.offset;
    data->length = one.length;
    const ::arrow::DictionaryArray array(data);

    const auto within = ValueOf(codes_within_dictionary(array))->data();

    EXPECT_EQ(within->buffers[1] == data->buffers[1], one.covers);
    EXPECT_EQ(within->length, one.length);
    EXPECT_EQ(within->null_count.load(), one.length - (one.covers ? 0 : 1));
  }
}

TEST(CopyOfCodes, HasTheExtentAndTheNullsOfTheView) {
  const auto array = array_of<std::int8_t>({0, 0, 0, 0}, dictionary_of(1))->data();
  array->buffers = {ArrowBuffer({0b0110})};
  array->null_count = ::arrow::kUnknownNullCount;
  ArrayView slice(*array);
  slice.offset = 2;
  slice.length = 2;

  const auto copy = copy_of_codes(slice);

  EXPECT_EQ(copy->offset, 2);
  EXPECT_EQ(copy->length, 2);
  EXPECT_EQ(copy->null_count.load(), 1);
  EXPECT_EQ(copy->buffers[0], array->buffers[0]);
  EXPECT_EQ(copy->buffers.at(1), nullptr) << "the buffer that is missing";
  EXPECT_EQ(array->null_count.load(), ::arrow::kUnknownNullCount);
}

}  // namespace
}  // namespace numera::io::arrow::core
