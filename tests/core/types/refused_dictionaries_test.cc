#include <arrow/array/array_dict.h>
#include <arrow/array/data.h>
#include <arrow/array/util.h>
#include <arrow/buffer.h>
#include <arrow/status.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "numera/core/to_numera.h"
#include "numera/core/types/categorical.h"
#include "tests/core/only_read.h"
#include "tests/core/types/dictionary_columns.h"
#include "tests/support/arrow_values.h"
#include "tests/support/dictionaries.h"
#include "tests/support/offset_arrays.h"
#include "tests/support/results.h"

namespace numera::io::arrow::core {
namespace {

using namespace numera::testing;
using ::arrow::Status;

TEST(DictionaryToHost, RefusesValuesThatAreNoText) {
  const std::pair<std::shared_ptr<::arrow::DataType>, const char*> cases[] = {
      {::arrow::int32(), "Invalid dictionary value type: int32"},
      {::arrow::binary(), "Invalid dictionary value type: binary"},
      {::arrow::timestamp(::arrow::TimeUnit::SECOND, "UTC"),
       "Invalid dictionary value type: timestamp[s, tz=UTC]"}};
  for (const auto& [value_type, message] : cases) {
    const auto type = ::arrow::dictionary(::arrow::int8(), value_type);
    EXPECT_EQ(ToNumeraOnlyReads(ArrowChunks(type, {})).status(), Status::Invalid(message));
    EXPECT_EQ(ToNumeraOnlyReads(Dictionary(type, "[]", "[]")).status(), Status::Invalid(message));
  }
}

TEST(DictionaryToHost, RefusesACodeOutsideOfTheDictionaryAmongSeveralChunks) {
  struct Case {
    std::shared_ptr<::arrow::DataType> index_type;
    const char* codes;
    const char* message;
  };
  const Case cases[] = {
      {::arrow::int8(), "[0, 1, 2]",
       "Dictionary code: found 2 at slot 2, expected an index into a dictionary of 2 values."},
      {::arrow::int8(), "[null, -1]",
       "Dictionary code: found -1 at slot 1, expected an index into a dictionary of 2 values."},
      {::arrow::uint8(), "[255, 254]",
       "Dictionary code: found 255 at slot 0, expected an index into a dictionary of 2 values."},
      {::arrow::int16(), "[-32768]",
       "Dictionary code: found -32768 at slot 0, expected an index into a dictionary of 2 values."},
      {::arrow::uint16(), "[65535]",
       "Dictionary code: found 65535 at slot 0, expected an index into a dictionary of 2 values."},
      {::arrow::int32(), "[2147483647]",
       "Dictionary code: found 2147483647 at slot 0, expected an index into a dictionary of 2 "
       "values."},
      {::arrow::uint32(), "[4294967295]",
       "Dictionary code: found 4294967295 at slot 0, expected an index into a dictionary of 2 "
       "values."},
      {::arrow::int64(), "[-9223372036854775808]",
       "Dictionary code: found -9223372036854775808 at slot 0, expected an index into a "
       "dictionary of 2 values."},
      {::arrow::uint64(), "[18446744073709551615]",
       "Dictionary code: found 18446744073709551615 at slot 0, expected an index into a "
       "dictionary of 2 values."}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.index_type->ToString() + " " + c.codes);
    const auto type = ::arrow::dictionary(c.index_type, ::arrow::utf8());
    const auto column =
        Chunks({Dictionary(type, "[0]", R"(["a"])"), Dictionary(type, c.codes, R"(["a", "b"])")});
    EXPECT_EQ(ToNumeraOnlyReads(column).status(), Status::Invalid(c.message));
  }
}

TEST(DictionaryToHost, DoesNotMergeDictionariesWithNulls) {
  const auto type = ::arrow::dictionary(::arrow::int8(), ::arrow::utf8());
  const auto column =
      Chunks({Dictionary(type, "[0]", R"(["a"])"), Dictionary(type, "[0]", R"(["a", null])")});

  EXPECT_EQ(ToNumeraOnlyReads(column).status(),
            Status::Invalid("Cannot yet unify dictionaries with nulls"));
}

TEST(DictionaryToHost, ReportsTheRowOfACategoryThatIsNoText) {
  const auto type = ::arrow::dictionary(::arrow::int8(), ::arrow::utf8());
  const auto chunk = std::make_shared<::arrow::DictionaryArray>(
      type, ArrowArray(::arrow::int8(), "[0]"), NarrowArray(::arrow::utf8(), "a\xFF", {0, 1, 2}));

  EXPECT_EQ(ToNumeraOnlyReads(std::shared_ptr<::arrow::Array>(chunk)).status(),
            Status::Invalid("Could not convert string in row 1 to UTF-16 string.\n"));
}

/// A chunk whose dictionary is replaced after the chunk was made.
std::shared_ptr<::arrow::Array> WithDictionary(std::shared_ptr<::arrow::ArrayData> dictionary) {
  const auto chunk =
      Dictionary(::arrow::dictionary(::arrow::int8(), ::arrow::utf8()), "[0]", R"(["a"])");
  chunk->data()->dictionary = std::move(dictionary);
  return chunk;
}

TEST(DictionaryToHost, RefusesADictionaryThatIsNotWhatItsTypeSays) {
  auto without_buffers = ArrowArray(::arrow::utf8(), R"(["a"])")->data()->Copy();
  without_buffers->buffers.resize(1);
  auto falling = NarrowArray(::arrow::utf8(), "ab", {2, 1})->data();
  auto short_offsets = NarrowArray(::arrow::utf8(), "ab", {0, 1})->data()->Copy();
  short_offsets->length = 5;
  auto without_type = ArrowArray(::arrow::utf8(), R"(["a"])")->data()->Copy();
  without_type->type = nullptr;
  auto negative = NarrowArray(::arrow::utf8(), "ab", {0, 1})->data()->Copy();
  negative->length = -1;
  const std::pair<std::shared_ptr<::arrow::ArrayData>, const char*> cases[] = {
      {nullptr, "Dictionary: found none, expected an array of type string."},
      {ArrowArray(::arrow::int32(), "[1]")->data(),
       "Dictionary: found int32, expected an array of type string."},
      {ArrowArray(::arrow::large_utf8(), R"(["a"])")->data(),
       "Dictionary: found large_utf8, expected an array of type string."},
      {without_type,
       "Dictionary: found an array without a type, expected an array of type string."},
      {without_buffers,
       "Dictionary: found an array without its buffers, expected an array of type string."},
      {falling, "Element 0: found offsets 2 and 1, expected a range that rises within 2 bytes."},
      {short_offsets, "Offsets buffer: found 8 bytes, expected enough for 5 elements."},
      {negative,
       "Array: found offset 0 and length -1, expected neither negative and their sum within 64 "
       "bits."}};
  for (const auto& [dictionary, message] : cases) {
    SCOPED_TRACE(message);
    const auto chunk = WithDictionary(dictionary);
    const auto good =
        Dictionary(::arrow::dictionary(::arrow::int8(), ::arrow::utf8()), "[0]", R"(["a"])");
    EXPECT_EQ(ToNumeraOnlyReads(chunk).status(), Status::Invalid(message));
    EXPECT_EQ(ToNumeraOnlyReads(Chunks({good, chunk})).status(), Status::Invalid(message));
  }
}

TEST(DictionaryToHost, RefusesShortCodes) {
  const auto type = ::arrow::dictionary(::arrow::int8(), ::arrow::utf8());
  const auto chunk = Dictionary(type, "[0, 0]", R"(["a"])");
  auto data = chunk->data()->Copy();
  data->buffers[1] = ExactBuffer(std::vector<std::int8_t>{0});
  const auto short_codes = ::arrow::MakeArray(data);
  const Status expected =
      Status::Invalid("Values buffer: found 1 bytes, expected enough for 2 elements.");

  EXPECT_EQ(ToNumeraOnlyReads(short_codes).status(), expected);
  EXPECT_EQ(ToNumeraOnlyReads(Chunks({chunk, short_codes})).status(), expected);
}

TEST(DictionaryToHost, ReadsNoFurtherThanAShortBitmapGoes) {
  const std::vector<std::int8_t> codes(12, 0);
  auto data = RawDictionary(codes, {0xFE, 0xFF}, R"(["a"])")->data()->Copy();
  data->buffers[0] = ExactBuffer(std::vector<std::uint8_t>{0xFE});
  data->null_count = 1;
  const auto short_bitmap = ::arrow::MakeArray(data);
  const auto column = Chunks({short_bitmap->Slice(3), short_bitmap});
  const auto type = ::arrow::dictionary(::arrow::int8(), ::arrow::utf8());

  const SingleDictionary single = ValueOf(UnifyDictionaryChunks(*column, type));

  EXPECT_TRUE(single.indices->Equals(ArrowChunks(
      ::arrow::int8(), {"[0, 0, 0, 0, 0, 0, 0, 0, 0]", "[null, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0]"})))
      << single.indices->ToString();
}

TEST(DictionaryToHost, CountsTheNullsOfADictionaryNoFurtherThanItsBitmapGoes) {
  static constexpr std::uint8_t kBits[] = {0xFF, 0x00};  // the bitmap has only the first byte
  auto entries =
      ArrowArray(::arrow::utf8(), R"(["0", "1", "2", "3", "4", "5", "6", "7", "8", "9"])")
          ->data()
          ->Copy();
  entries->buffers[0] = std::make_shared<::arrow::Buffer>(kBits, 1);
  entries->null_count = ::arrow::kUnknownNullCount;
  const auto type = ::arrow::dictionary(::arrow::int8(), ::arrow::utf8());
  auto data = Dictionary(type, "[9, 8]", R"(["0"])")->data()->Copy();
  data->dictionary = entries;
  const auto chunk = ::arrow::MakeArray(data);

  const SingleDictionary single = ValueOf(UnifyDictionaryChunks(*Chunks({chunk, chunk}), type));

  EXPECT_EQ(single.dictionary->length(), 10);
  EXPECT_TRUE(single.indices->Equals(ArrowChunks(::arrow::int8(), {"[9, 8]", "[9, 8]"})));
}

}  // namespace
}  // namespace numera::io::arrow::core
