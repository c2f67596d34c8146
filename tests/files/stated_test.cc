// What files state about their tables, without their values being read.

#include <arrow/array/util.h>
#include <arrow/io/file.h>
#include <gtest/gtest.h>
#include <parquet/arrow/writer.h>
#include <parquet/properties.h>

#include <algorithm>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

#include "numera/files/read.h"
#include "tests/files/tables.h"

namespace numera::testing {
namespace {

using files::StatedCounts;

class Stated : public ::testing::Test {
 protected:
  StatedCounts stated(const files::ReadOptions& options = {}) const {
    return files::open_source(file_, options).ValueOrDie()->stated();
  }

  /// How many bytes of the file are read for what it states, beside those to open it.
  std::int64_t bytes_for_what_is_stated() const {
    const auto source = files::open_source(file_).ValueOrDie();
    const std::int64_t before = source->bytes_read();
    static_cast<void>(source->stated());
    return source->bytes_read() - before;
  }

  TemporaryFolder folder_;
  std::string file_ = folder_.path("table");
};

/// A column of each kind of nesting, with other numbers of nulls outside than inside.
std::shared_ptr<::arrow::Table> nested_table() {
  const auto inner = ::arrow::struct_(
      {::arrow::field("x", ::arrow::list(::arrow::int8())), ::arrow::field("y", ::arrow::utf8())});
  return table_of(
      {{"l", ::arrow::list(inner), R"([[{"x": [1, null], "y": null}], null, []])"},
       {"n", ::arrow::int16(), "[1, null, null]"},
       {"u", ::arrow::null(), "[null, null, null]"},
       {"m", ::arrow::map(::arrow::utf8(), ::arrow::int8()), R"([[["k", null]], [], []])"},
       {"d", ::arrow::dictionary(::arrow::int8(), ::arrow::utf8()), R"([null, "a", "a"])"}});
}

std::shared_ptr<::arrow::Table> two_chunks(const std::shared_ptr<::arrow::Table>& table) {
  return ::arrow::ConcatenateTables({table, table->Slice(1)}).ValueOrDie();
}

/// 100,000 different numbers, 800,000 bytes.
TEST_F(Stated, ByAParquetFileAreNullsOfColumnsThatAreNotNested) {
  write_parquet(file_, *nested_table(), 2);
  EXPECT_EQ(stated(), (StatedCounts{3, 2, {std::nullopt, 2, 3, std::nullopt, 1}}));
}

TEST_F(Stated, ByAParquetFileIsThatAColumnHasNoNulls) {
  const auto table =
      ::arrow::Table::Make(::arrow::schema({::arrow::field("n", ::arrow::int8(), false)}),
                           table_of({{"n", ::arrow::int8(), "[1, 2]"}})->columns());
  write_parquet(file_, *table);
  EXPECT_EQ(stated(), (StatedCounts{2, 1, {0}}));
}

TEST_F(Stated, AreTheColumnsAskedFor) {
  for (const auto write :
       {+[](const std::string& path, const ::arrow::Table& table) { write_parquet(path, table); },
        write_ipc, write_ipc_stream}) {
    write(file_, *nested_table());
    EXPECT_EQ(stated({.columns = {"d", "n"}}), (StatedCounts{3, 1, {1, 2}}));
  }
}

TEST_F(Stated, ByAParquetFileWithoutStatisticsAreNoNulls) {
  const auto file = ::arrow::io::FileOutputStream::Open(file_).ValueOrDie();
  const auto properties = parquet::WriterProperties::Builder().disable_statistics()->build();
  ASSERT_TRUE(parquet::arrow::WriteTable(*table_of({{"n", ::arrow::int8(), "[1, null]"}}),
                                         ::arrow::default_memory_pool(), file, 1024, properties)
                  .ok());
  ASSERT_TRUE(file->Close().ok());
  EXPECT_EQ(stated(), (StatedCounts{2, 1, {std::nullopt}}));
}

/// Replaces the number of nulls of the only column, which has nulls alone.
void restate_nulls(const std::string& path, std::string_view nulls, std::string_view others) {
  std::string content = read_text(path);
  std::uint32_t length = 0;  // of the footer; it is before the magic at the end
  std::memcpy(&length, content.data() + content.size() - 8, 4);
  const size_t at = content.find(nulls, content.size() - 8 - length);
  ASSERT_NE(at, std::string::npos);
  write_text(path, content.replace(at, others.size(), others));
}

TEST_F(Stated, ByAParquetFileAreNoNullsThatCannotBe) {
  const auto nulls = ::arrow::MakeArrayOfNull(::arrow::int8(), 1000).ValueOrDie();
  const auto table =
      ::arrow::Table::Make(::arrow::schema({::arrow::field("n", ::arrow::int8())}), {nulls});
  const std::string_view thousand = "\x36\xD0\x0F";  // the third field of the statistics
  const std::pair<const char*, std::string_view> cases[] = {{"negative", "\x36\xCF\x0F"},
                                                            {"more than rows", "\x36\xD2\x0F"}};
  write_parquet(file_, *table);
  EXPECT_EQ(stated(), (StatedCounts{1000, 1, {1000}}));
  for (const auto& [what, others] : cases) {
    SCOPED_TRACE(what);
    write_parquet(file_, *table);
    restate_nulls(file_, thousand, others);
    EXPECT_EQ(stated(), (StatedCounts{1000, 1, {std::nullopt}}));
  }
}

TEST_F(Stated, ByArrowIpcAreRowsAndNullsOfEachColumn) {
  for (const auto write : {write_ipc, write_ipc_stream}) {
    write(file_, *two_chunks(nested_table()));
    EXPECT_EQ(stated(), (StatedCounts{5, 2, {2, 4, 5, 0, 1}}));
  }
}

TEST_F(Stated, ByAStreamFromBeforeArrow015AreRowsAndNulls) {
  write_old_ipc_stream(file_, *two_chunks(nested_table()));
  EXPECT_EQ(stated(), (StatedCounts{5, 2, {2, 4, 5, 0, 1}}));
}

TEST_F(Stated, ByArrowIpcWithoutBatchesAreNoRows) {
  write_ipc_stream(file_, *nested_table()->Slice(0, 0));
  EXPECT_EQ(stated({.columns = {"n"}}), (StatedCounts{0, 0, {0}}));
}

TEST_F(Stated, ByAStreamWithoutItsEndIsNothing) {
  write_ipc_stream(file_, *nested_table());
  const std::string content = read_text(file_);
  write_text(file_, content.substr(0, content.size() - 8));
  EXPECT_EQ(stated({.columns = {"n"}}), (StatedCounts{{}, {}, {std::nullopt}}));
}

TEST_F(Stated, ByAFileWithADamagedMessageAreItsRecordBatchesAlone) {
  write_ipc(file_, *table_of({{"n", ::arrow::int16(), "[1, null]"}}));
  const std::string content = read_text(file_);
  const size_t second = content.find("\xFF\xFF\xFF\xFF", content.find("\xFF\xFF\xFF\xFF") + 4);
  flip_byte(file_, static_cast<std::int64_t>(second) + 4);  // the length of its metadata
  EXPECT_EQ(stated(), (StatedCounts{{}, 1, {std::nullopt}}));
}

bool can_be(const StatedCounts& counts) {
  const auto is_wrong = [&](const auto& nulls) {
    return nulls && (!counts.rows || *nulls < 0 || *nulls > *counts.rows);
  };
  return counts.rows.value_or(0) >= 0 && std::ranges::none_of(counts.nulls, is_wrong);
}

TEST_F(Stated, CanBeWhicheverByteIsDamaged) {
  for (const auto write :
       {+[](const std::string& path, const ::arrow::Table& table) { write_parquet(path, table); },
        write_ipc, write_ipc_stream}) {
    write(file_, *table_of({{"n", ::arrow::int16(), "[1, null, null]"},
                            {"l", ::arrow::list(::arrow::int8()), "[[1], null, []]"}}));
    const std::string content = read_text(file_);
    for (size_t i = 0; i < content.size(); ++i) {
      std::string changed = content;
      changed[i] = static_cast<char>(~changed[i]);
      write_text(file_, changed);
      const auto source = files::open_source(file_);
      EXPECT_TRUE(!source.ok() || can_be((*source)->stated())) << "byte " << i;
    }
  }
}

TEST_F(Stated, ByTextIsNothing) {
  for (const char* text : {"a,b\n1,2\n", "{\"a\": 1, \"b\": 2}\n"}) {
    write_text(file_, text);
    EXPECT_EQ(stated(), (StatedCounts{{}, {}, {std::nullopt, std::nullopt}}));
  }
}

TEST_F(Stated, TakesNoReadingOfValues) {
  const auto numbers = many_numbers();
  write_parquet(file_, *numbers);
  EXPECT_EQ(bytes_for_what_is_stated(), 0);
  for (const auto write : {write_ipc, write_ipc_stream}) {
    write(file_, *numbers);
    EXPECT_LT(bytes_for_what_is_stated(), 1'000);
  }
}

TEST_F(Stated, LeavesTheRowsToBeRead) {
  for (const auto write : {write_ipc, write_ipc_stream, write_old_ipc_stream}) {
    const auto table = table_of({{"n", ::arrow::int16(), "[1, null]"}});
    write(file_, *table);
    const auto source = files::open_source(file_).ValueOrDie();
    static_cast<void>(source->stated());
    EXPECT_TRUE(source->ToTable().ValueOrDie()->Equals(*table));
  }
}

TEST_F(Stated, IsTheSizeOfTheFile) {
  write_text(file_, "a,b\n1,2\n");
  EXPECT_EQ(files::open_source(file_).ValueOrDie()->bytes(), 8);
}

TEST_F(Stated, IsReachedByTheBytesThatWereReadOfText) {
  std::string text;
  for (int i = 0; i < 400'000; ++i) text += "{\"n\": 7}\n";
  write_text(file_, text);
  const auto source = files::open_source(file_).ValueOrDie();
  ASSERT_TRUE(source->Next().ok());
  EXPECT_LT(source->bytes_read(), 2'200'000);  // the second time; the first one is for the types
  ASSERT_TRUE(source->ToTable().ok());
  EXPECT_EQ(source->bytes_read(), 3'600'000);
}

TEST_F(Stated, IsReachedByTheBytesThatWereReadOfAStream) {
  write_ipc_stream(file_, *many_numbers());
  const auto source = files::open_source(file_).ValueOrDie();
  EXPECT_LT(source->bytes_read(), 1'000);
  ASSERT_TRUE(source->ToTable().ok());
  EXPECT_EQ(source->bytes_read(), source->bytes());
}

}  // namespace
}  // namespace numera::testing
