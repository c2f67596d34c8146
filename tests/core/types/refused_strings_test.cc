#include <arrow/array/data.h>
#include <arrow/array/util.h>
#include <arrow/chunked_array.h>
#include <arrow/status.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "numera/core/to_numera.h"
#include "tests/core/only_read.h"
#include "tests/core/types/string_columns.h"
#include "tests/support/arrow_values.h"
#include "tests/support/offset_arrays.h"
#include "tests/support/other_device.h"

namespace numera::io::arrow::core {
namespace {

using namespace numera::testing;
using ::arrow::Status;

TEST(TextToHost, RefusesInvalidUtf8ByRow) {
  struct Case {
    const char* trace;
    std::string bytes;
    std::vector<std::int32_t> offsets;
    int row;
  };
  const Case cases[] = {{"invalid byte", "ab\xFF", {0, 1, 2, 3}, 2},
                        {"lone continuation", "\x80z", {0, 1, 2}, 0},
                        {"overlong", "a\xC0\xAF", {0, 1, 3}, 1},
                        {"surrogate", "a\xED\xA0\x80z", {0, 1, 4, 5}, 1},
                        {"above U+10FFFF", "\xF4\x90\x80\x80", {0, 4}, 0},
                        {"truncated", "a\xE6\xBC", {0, 1, 3}, 1},
                        {"invalid within a row", "é漢a\xFFz", {0, 5, 8}, 1},
                        {"the first of two", "a\xFF\xFE", {0, 1, 2, 3}, 1},
                        {"valid only across a border", "a\xC3\xA9", {0, 1, 2, 3}, 1},
                        {"sequence cut by the next text", "\xE6\xBC\xA2", {0, 2, 3}, 0}};
  for (const auto& type : kTextTypes) {
    for (const Case& c : cases) {
      SCOPED_TRACE(type->ToString() + ": " + c.trace);
      EXPECT_EQ(ToNumeraOnlyReads(Texts(type, c.bytes, c.offsets)).status(), RowFailure(c.row));
    }
  }
}

TEST(TextToHost, CountsTheRowWithinItsChunk) {
  for (const auto& type : kTextTypes) {
    SCOPED_TRACE(type->ToString());
    const auto column = std::make_shared<::arrow::ChunkedArray>(
        ::arrow::ArrayVector{Texts(type, "abc", {0, 1, 2, 3}), Texts(type, "\xFFz", {0, 1, 2})});
    EXPECT_EQ(ToNumeraOnlyReads(column).status(), RowFailure(0));
  }
}

TEST(TextToHost, CountsTheRowWithinASlice) {
  for (const auto& type : kTextTypes) {
    SCOPED_TRACE(type->ToString());
    EXPECT_EQ(ToNumeraOnlyReads(Texts(type, "abc\xFF", {0, 1, 2, 3, 4})->Slice(2)).status(),
              RowFailure(1));
  }
}

TEST(TextToHost, RefusesInvalidUtf8UnderANull) {
  auto data = Texts(::arrow::utf8(), "a\xFF", {0, 1, 2})->data()->Copy();
  data->buffers[0] = ArrowBuffer({0b01});
  data->null_count = 1;

  EXPECT_EQ(ToNumeraOnlyReads(::arrow::MakeArray(data)).status(), RowFailure(1));
}

TEST(TextToHost, RefusesOffsetsThatLeaveTheirBuffers) {
  struct Case {
    const char* trace;
    std::shared_ptr<::arrow::Array> array;
    std::string message;
  };
  const auto type = ::arrow::utf8();
  const auto offsets = [](std::vector<std::int32_t> values) { return ExactBuffer(values); };
  const auto bytes = ExactBuffer(BytesOf("abcd"));
  const Case cases[] = {
      {"falling", Texts(type, "abcd", {0, 3, 1, 4}),
       "Element 1: found offsets 3 and 1, expected a range that rises within 4 bytes."},
      {"negative", Texts(type, "abcd", {-1, 3}),
       "Element 0: found offsets -1 and 3, expected a range that rises within 4 bytes."},
      {"behind the bytes", Texts(type, "abcd", {0, 3, 5}),
       "Element 1: found offsets 3 and 5, expected a range that rises within 4 bytes."},
      {"out and back", Texts(type, "abcd", {0, 900, 4}),
       "Element 0: found offsets 0 and 900, expected a range that rises within 4 bytes."},
      {"no bytes", ArrayOfOffsets(type, 1, offsets({0, 1}), nullptr),
       "Element 0: found offsets 0 and 1, expected a range that rises within 0 bytes."},
      {"bytes of another device", ArrayOfOffsets(type, 1, offsets({0, 1}), BufferOfOtherDevice(4)),
       "Buffer: found bytes that cannot be read here, expected main memory."},
      {"one offset short", ArrayOfOffsets(type, 2, offsets({0, 1}), bytes),
       "Offsets buffer: found 8 bytes, expected enough for 2 elements."},
      {"short behind an offset", ArrayOfOffsets(type, 1, offsets({0, 1, 2}), bytes, 2),
       "Offsets buffer: found 12 bytes, expected enough for 3 elements."},
      {"no offsets", ArrayOfOffsets(type, 1, nullptr, bytes),
       "Offsets buffer: found 0 bytes, expected enough for 1 elements."},
      {"offsets of another device", ArrayOfOffsets(type, 1, BufferOfOtherDevice(8), bytes),
       "Buffer: found bytes that cannot be read here, expected main memory."},
      {"longer than memory", ArrayOfOffsets(type, std::int64_t{1} << 62, offsets({0, 1}), bytes),
       "Offsets buffer: found 8 bytes, expected enough for 4611686018427387904 elements."}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.trace);
    EXPECT_EQ(ToNumeraOnlyReads(c.array).status(), Status::Invalid(c.message));
  }
}

TEST(TextToHost, RefusesLargeOffsetsThatLeaveTheirBuffers) {
  const std::pair<std::vector<std::int64_t>, std::string> cases[] = {
      {{0, 3, 1, 4},
       "Element 1: found offsets 3 and 1, expected a range that rises within 4 bytes."},
      {{-1, 3}, "Element 0: found offsets -1 and 3, expected a range that rises within 4 bytes."},
      {{0, std::int64_t{1} << 62},
       "Element 0: found offsets 0 and 4611686018427387904, expected a range that rises within 4 "
       "bytes."}};
  for (const auto& [offsets, message] : cases) {
    EXPECT_EQ(ToNumeraOnlyReads(LargeArray(::arrow::large_utf8(), "abcd", offsets)).status(),
              Status::Invalid(message));
  }
}

}  // namespace
}  // namespace numera::io::arrow::core
