// ORC is read stripe by stripe. The rows that are read are as many as its footer states.

#include <arrow/util/config.h>
#ifdef ARROW_ORC
#include <arrow/adapters/orc/adapter.h>
#include <arrow/io/file.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <limits>
#include <optional>
#include <string>
#include <utility>

#include "tests/files/tables.h"

namespace numera::testing {
namespace {

namespace orc = ::arrow::adapters::orc;

::arrow::Status write_orc(const std::string& path, const ::arrow::Table& table,
                          const orc::WriteOptions& options = {}) {
  ARROW_ASSIGN_OR_RAISE(const auto file, ::arrow::io::FileOutputStream::Open(path));
  ARROW_ASSIGN_OR_RAISE(const auto writer, orc::ORCFileWriter::Open(file.get(), options));
  ARROW_RETURN_NOT_OK(writer->Write(table));
  ARROW_RETURN_NOT_OK(writer->Close());
  return file->Close();
}

std::string json_numbers(int count) {
  std::string json = "[0";
  for (int i = 1; i < count; ++i) json += "," + std::to_string(i * 7919 % 100003);
  return json + "]";
}

class OrcFiles : public ::testing::Test {
 protected:
  TemporaryFolder folder_;
  std::string file_ = folder_.path("rows");
};

TEST_F(OrcFiles, TypesThatOrcHasReturnEqual) {
  const auto table = table_of(
      {{"b", ::arrow::boolean(), "[true, null]"},
       {"i8", ::arrow::int8(), "[-128, null]"},
       {"i16", ::arrow::int16(), "[1, null]"},
       {"i32", ::arrow::int32(), "[2, null]"},
       {"i64", ::arrow::int64(), "[9223372036854775807, null]"},
       {"f", ::arrow::float32(), "[1.5, null]"},
       {"d", ::arrow::float64(), "[-0.0, null]"},
       {"t", ::arrow::utf8(), R"(["𝜆", null])"},
       {"x", ::arrow::binary(), R"(["a", null])"},
       {"day", ::arrow::date32(), "[-1, null]"},
       {"dec", ::arrow::decimal128(10, 2), R"(["1.50", null])"},
       {"m", ::arrow::timestamp(::arrow::TimeUnit::NANO), R"(["1960-01-01 00:00:00.5", null])"},
       {"z", ::arrow::timestamp(::arrow::TimeUnit::NANO, "UTC"), "[1, null]"},
       {"l", ::arrow::list(::arrow::int8()), "[[1, null], null]"},
       {"s", ::arrow::struct_({::arrow::field("a", ::arrow::utf8())}), R"([{"a": "x"}, null])"},
       {"map", ::arrow::map(::arrow::utf8(), ::arrow::int32()), R"([[["a", 1]], null])"}});
  ASSERT_EQ(write_orc(file_, *table).ToString(), "OK");
  expect_table(file_, *table);
}

TEST_F(OrcFiles, UnionsAreSparseAndLoseTheirNames) {
  const auto type = ::arrow::dense_union(
      {::arrow::field("a", ::arrow::int8()), ::arrow::field("b", ::arrow::utf8())});
  ASSERT_EQ(write_orc(file_, *table_of({{"u", type, R"([[0, 1], [1, "x"]])"}})).ToString(), "OK");
  const auto read = ::arrow::sparse_union(
      {::arrow::field("_union_0", ::arrow::int8()), ::arrow::field("_union_1", ::arrow::utf8())});
  expect_table(file_, *table_of({{"u", read, R"([[0, 1], [1, "x"]])"}}));
}

TEST_F(OrcFiles, ATimeThatNanosecondsDoNotReachIsRefused) {
  const auto seconds = ::arrow::timestamp(::arrow::TimeUnit::SECOND);
  ASSERT_EQ(write_orc(file_, *table_of({{"m", seconds, R"(["3000-01-01"])"}})).ToString(), "OK");
  expect_refused(file_,
                 "Invalid: ORC timestamp (32503680000s + 0ns) is out of range for nanosecond "
                 "resolution");
}

TEST_F(OrcFiles, StripesAreReadInOrderAndCounted) {
  const auto table = table_of({{"n", ::arrow::int64(), json_numbers(50000)}});
  orc::WriteOptions options;
  options.stripe_size = 16384;
  ASSERT_EQ(write_orc(file_, *table, options).ToString(), "OK");
  expect_table(file_, *table);
  expect_table(file_, *table, {.batch_rows = 777});
  const auto source = files::open_source(file_).ValueOrDie();
  EXPECT_EQ(source->rows(), 50000);
  EXPECT_EQ(source->chunks(), 0);
  ASSERT_TRUE(source->ToRecordBatches().ok());
  EXPECT_GT(source->chunks(), 5);
}

TEST_F(OrcFiles, BatchesMayBeLargerThanTheFile) {
  const auto table = table_of({{"n", ::arrow::int64(), "[1, null]"}});
  ASSERT_EQ(write_orc(file_, *table).ToString(), "OK");
  expect_table(file_, *table, {.batch_rows = std::numeric_limits<std::int64_t>::max()});
}

TEST_F(OrcFiles, ColumnsAreReadInTheOrderAskedFor) {
  const auto lists = ::arrow::list(::arrow::int8());
  ASSERT_EQ(write_orc(file_, *table_of({{"a", ::arrow::int64(), "[1, 2]"},
                                        {"l", lists, "[[1], []]"},
                                        {"c", ::arrow::utf8(), R"(["x", "y"])"}}))
                .ToString(),
            "OK");
  expect_table(file_,
               *table_of({{"c", ::arrow::utf8(), R"(["x", "y"])"}, {"l", lists, "[[1], []]"}}),
               {.columns = {"c", "l"}});
  expect_refused(file_, "Invalid: there is no column 'd'", {.columns = {"d"}});
}

TEST_F(OrcFiles, ColumnsAreFoundWhateverTheirNames) {
  const auto inner = ::arrow::struct_({::arrow::field("b", ::arrow::int64())});
  ASSERT_EQ(write_orc(file_, *table_of({{"a", inner, R"([{"b": 1}])"},
                                        {"a.b", ::arrow::int64(), "[2]"},
                                        {"c", ::arrow::int64(), "[3]"},
                                        {"", ::arrow::int64(), "[4]"}}))
                .ToString(),
            "OK");
  expect_table(file_, *table_of({{"", ::arrow::int64(), "[4]"}, {"a.b", ::arrow::int64(), "[2]"}}),
               {.columns = {"", "a.b"}});
}

TEST_F(OrcFiles, AnyChangedByteIsAnswered) {
  ASSERT_EQ(write_orc(file_, *table_of({{"n", ::arrow::int64(), "[1, null]"},
                                        {"t", ::arrow::utf8(), R"(["text", null])"},
                                        {"l", ::arrow::list(::arrow::int8()), "[[1, 2], [3]]"}}))
                .ToString(),
            "OK");
  const auto size = static_cast<std::int64_t>(std::filesystem::file_size(file_));
  for (std::int64_t at = 0; at < size; ++at) {
    SCOPED_TRACE(at);
    flip_byte(file_, at);
    const auto table = read_table(file_);
    EXPECT_TRUE(!table.ok() || (*table)->num_rows() == 2);
    flip_byte(file_, at);
  }
}

TEST_F(OrcFiles, AFileWithoutRowsHasItsColumns) {
  const auto table = table_of({{"n", ::arrow::int64(), "[]"}});
  ASSERT_EQ(write_orc(file_, *table).ToString(), "OK");
  expect_table(file_, *table);
  EXPECT_EQ(files::open_source(file_).ValueOrDie()->rows(), 0);
}

TEST_F(OrcFiles, ACutAnywhereIsRefused) {
  ASSERT_EQ(write_orc(file_, *table_of({{"n", ::arrow::int64(), json_numbers(1000)}})).ToString(),
            "OK");
  const std::string whole = read_text(file_);
  // The first bytes alone may be text.
  for (size_t size = 16; size < whole.size(); size += 1 + size / 20) {
    SCOPED_TRACE(size);
    write_text(file_, whole.substr(0, size));
    EXPECT_FALSE(read_table(file_).ok());
  }
  write_text(file_, whole.substr(0, whole.size() - 1));
  EXPECT_FALSE(read_table(file_).ok());
}

TEST_F(OrcFiles, TextMayStartWithTheLettersOfOrc) {
  write_text(file_, "ORC,n\na,1\n");
  expect_table(file_,
               *table_of({{"ORC", ::arrow::utf8(), R"(["a"])"}, {"n", ::arrow::int64(), "[1]"}}));
}

TEST_F(OrcFiles, StateTheirRowsAndStripesButNoNulls) {
  ASSERT_EQ(write_orc(file_, *table_of({{"n", ::arrow::int8(), "[1, null]"}})).ToString(), "OK");
  EXPECT_EQ(files::open_source(file_).ValueOrDie()->stated(),
            (files::StatedCounts{2, 1, {std::nullopt}}));
}

}  // namespace
}  // namespace numera::testing
#endif
