// The program detects the format of a file by its contents, whatever its name.

#include <gtest/gtest.h>

#include <cstring>

#include "tests/tools/program.h"

namespace numera::testing {
namespace {

class Formats : public ::testing::Test {
 protected:
  static std::string types_of(const std::string& file) {
    return table_rows(printed("types", file, {"--count"}));
  }

  TemporaryFolder folder_;
  std::string file_ = folder_.path("a_file");
  std::shared_ptr<::arrow::Table> table_ = table_of(
      {{"n", ::arrow::int16(), "[1, null, 3]"}, {"t", ::arrow::utf8(), R"(["a", "b", null])"}});
};

constexpr const char* kTypes =
    "n | int16 | int16 | int16 | 3 | 1 | 1\n"
    "t | string | string | string | 3 | 1 | 1\n";

constexpr const char* kWayBack =
    "n | int16 | int16 | int16 | 3 | 1 | 1 | equal\n"
    "t | string | string | string | 3 | 1 | 1 | equal as large_string\n";

TEST_F(Formats, ParquetIsKnown) {
  write_parquet(file_, *table_);
  EXPECT_EQ(types_of(file_), kTypes);
  EXPECT_EQ(table_rows(converted(file_)), kWayBack);
}

TEST_F(Formats, AnArrowIpcFileIsKnown) {
  write_ipc(file_, *table_);
  EXPECT_EQ(types_of(file_), kTypes);
  EXPECT_EQ(table_rows(converted(file_)), kWayBack);
}

TEST_F(Formats, AnArrowIpcStreamIsKnown) {
  write_ipc_stream(file_, *table_);
  EXPECT_EQ(types_of(file_), kTypes);
  EXPECT_EQ(table_rows(converted(file_)), kWayBack);
}

TEST_F(Formats, AStreamFromBeforeArrow015IsKnown) {
  write_old_ipc_stream(file_, *table_);
  EXPECT_EQ(read_text(file_).substr(3, 1), std::string(1, '\0'));  // a length, no marker
  EXPECT_EQ(types_of(file_), kTypes);
  EXPECT_EQ(table_rows(converted(file_)), kWayBack);
}

TEST_F(Formats, DictionariesOfAStreamFromBeforeArrow015AreRead) {
  write_old_ipc_stream(file_,
                       *table_of({{"d", ::arrow::dictionary(::arrow::int8(), ::arrow::utf8()),
                                   R"(["a", null, "a"])"}}));
  EXPECT_EQ(
      table_rows(converted(file_)),
      "d | dictionary<values=string, indices=int8, ordered=0> | categorical | categorical | 3 "
      "| 1 | 1 | equal as dictionary<values=large_string, indices=int8, ordered=0>\n");
}

TEST_F(Formats, StreamsWithoutBatchesHaveNoRows) {
  const auto empty = table_->Slice(0, 0);
  for (const auto write : {write_ipc_stream, write_old_ipc_stream}) {
    write(file_, *empty);
    EXPECT_EQ(table_rows(converted(file_)),
              "n | int16 | int16 | int16 | 0 | 0 | 0 | equal\n"
              "t | string | string | string | 0 | 0 | 0 | equal as large_string\n");
  }
}

TEST_F(Formats, CsvIsKnown) {
  write_text(file_, "n,t\n1,a\n,b\n3,\"x,y\"\n");
  EXPECT_EQ(types_of(file_),
            "n | int64 | int64 | int64 | 3 | 1 | 1\n"
            "t | string | string | string | 3 | 1 | 0\n");
  EXPECT_EQ(table_rows(converted(file_)),
            "n | int64 | int64 | int64 | 3 | 1 | 1 | equal\n"
            "t | string | string | string | 3 | 1 | 0 | equal as large_string\n");
}

TEST_F(Formats, ACsvOfItsHeadingAloneHasNoRows) {
  write_text(file_, "n,t\n");
  EXPECT_EQ(table_rows(converted(file_)),
            "n | null | null | double | 0 | 0 | 0 | equal as double\n"
            "t | null | null | double | 0 | 0 | 0 | equal as double\n");
}

TEST_F(Formats, AnEmptyLineOfACsvOfOneColumnIsARow) {
  write_text(file_, "n\n1\n\n3\n");
  EXPECT_EQ(types_of(file_), "n | int64 | int64 | int64 | 3 | 1 | 1\n");
  write_text(file_, "\n\r\nt\nx\n\n\"\"\n");
  EXPECT_EQ(types_of(file_), "t | string | string | string | 3 | 1 | 1\n");
}

TEST_F(Formats, TextsOfACsvHaveNewlinesWhereverABlockEnds) {
  std::string text = "n,t\n";
  while (text.size() < (std::size_t{1} << 20)) text += "1,\"a\nline\n\"\n";
  write_text(file_, text + "2,b\n");
  EXPECT_EQ(types_of(file_),
            "n | int64 | int64 | int64 | 87,382 | 2 | 0\n"
            "t | string | string | string | 87,382 | 2 | 0\n");
}

TEST_F(Formats, ACharacterOfACsvMayBeCutWhereTheProgramStopsLooking) {
  for (const size_t ahead : {0U, 1U, 2U, 3U}) {  // bytes of 𝜆 within the first 64 KiB
    SCOPED_TRACE(ahead);
    write_text(file_, "t\n" + std::string(65534 - ahead, 'x') + "𝜆\n");
    EXPECT_EQ(types_of(file_), "t | string | string | string | 1 | 1 | 0\n");
  }
}

TEST_F(Formats, TextThatIsNotUtf8NeedsTheNameOfItsEncoding) {
  for (const char* text : {"gr\xF6\xDF\x65\n1\n", "a\n\xF0\x9D"}) {
    write_text(file_, text);
    EXPECT_EQ(run_program({"show", file_}).errors,
              "numera-arrow: " + file_ +
                  ": it is text that is not UTF-8, and its encoding was not named\n");
  }
}

TEST_F(Formats, AnythingElseIsNoKnownFormat) {
  const std::pair<const char*, std::string> cases[] = {
      {"NUL in text", std::string("a,b\n1,\0\n", 8)},
      {"UTF-16 without a mark", std::string("n\0\n\0", 4)},
      {"a length, but no schema", std::string("\x08\0\0\0abcdefgh", 12)},
      {"a length beyond the end", std::string("\x09\0\0\0abcdefgh", 12)},
      {"half a length", std::string("\x09\0", 2)},
      {"NUL as the last byte looked at", "a\n" + std::string(65533, 'x') + '\0'},
  };
  for (const auto& [what, text] : cases) {
    SCOPED_TRACE(what);
    write_text(file_, text);
    const Outcome expected{1, "",
                           "numera-arrow: " + file_ +
                               ": it is no table in a known format (Parquet, Arrow IPC, ORC, "
                               "CSV, JSON lines)\n"};
    for (const char* command : {"types", "head", "tail", "show", "summary", "tree", "convert"}) {
      EXPECT_EQ(run_program({command, file_}), expected);
    }
  }
}

TEST_F(Formats, AStreamFromBeforeArrow015OpensWithItsSchema) {
  write_old_ipc_stream(file_, *table_);
  std::string content = read_text(file_);
  std::int32_t length = 0;  // of the schema, which follows it
  std::memcpy(&length, content.data(), sizeof length);
  write_text(file_, content.substr(sizeof length + static_cast<size_t>(length)));
  const Outcome expected{1, "",
                         "numera-arrow: " + file_ +
                             ": it is no table in a known format (Parquet, Arrow IPC, ORC, "
                             "CSV, JSON lines)\n"};
  EXPECT_EQ(run_program({"types", file_}), expected);
}

TEST_F(Formats, TypesCountsChunksAndRowsWithSeparators) {
  std::string json = "[0";
  for (int i = 1; i < 2500; ++i) json += ", null";
  write_parquet(file_, *table_of({{"n", ::arrow::date32(), json + "]"}}), 1000);
  EXPECT_EQ(types_of(file_), "n | date32[day] | datetime | datetime | 2,500 | 3 | 2,499\n");
}

TEST_F(Formats, TypesListsWhatHasNoHostForm) {
  write_ipc(file_, *table_of({{"d", ::arrow::decimal128(5, 2), R"(["1.50"])"}}));
  EXPECT_EQ(types_of(file_), "d | decimal128(5, 2) | - | - | 1 | 1 | 0\n");
}

}  // namespace
}  // namespace numera::testing
