#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <tuple>

#include "tests/tools/program.h"
#include "tests/tools/written_files.h"

namespace numera::testing {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;

std::string thousand_numbers() {
  std::string json = "[0";
  for (int i = 1; i < 1000; ++i) json += "," + std::to_string(i);
  return json + "]";
}

class BadFiles : public ::testing::Test {
 protected:
  std::string parquet_file() {
    std::string file = folder_.path("numbers.parquet");
    write_parquet(file, *table_of({{"n", ::arrow::int64(), thousand_numbers()}}));
    return file;
  }

  std::string ipc_file() {
    std::string file = folder_.path("numbers.arrow");
    write_ipc(file, *table_of({{"n", ::arrow::int64(), thousand_numbers()}}));
    return file;
  }

  TemporaryFolder folder_;
};

TEST_F(BadFiles, AMissingFileIsNamed) {
  expect_refusal(folder_.path("missing.parquet"), "No such file or directory");
}

TEST_F(BadFiles, AFolderMayBeEmpty) {
  expect_refusal(folder_.path(""), "it is a folder without files");
}

TEST_F(BadFiles, AnEmptyFileIsCalledEmpty) {
  const std::string file = folder_.path("empty.parquet");
  write_text(file, "");
  expect_refusal(file, "it is empty");
}

TEST_F(BadFiles, ADeviceIsNoFile) {
  expect_refusal("/dev/zero", "it is neither a regular file nor a pipe");
}

TEST_F(BadFiles, AFileThatMayNotBeReadIsNamed) {
  const std::string file = parquet_file();
  std::filesystem::permissions(file, std::filesystem::perms(0));
  expect_refusal(file, "Permission denied", {.unprivileged = true});
}

TEST_F(BadFiles, ANameThatIsNotPrintableStaysOnOneLine) {
  const std::string file = folder_.path("a\nb\x1b[1m\xFF");
  const Outcome expected{
      1, "", "numera-arrow: " + folder_.path("a?b?[1m?") + ": No such file or directory\n"};
  EXPECT_EQ(run_program({"convert", file}), expected);
}

TEST_F(BadFiles, ANameNeverCommandsATerminal) {
  const std::pair<const char*, const char*> cases[] = {
      {"c1 \xC2\x9B 31m", "c1 ?? 31m"},  // the one-character form of ESC [
      {"\xC2\xA0 \xC3\xA4", "\xC2\xA0 \xC3\xA4"},
      {"lone \x9B", "lone ?"},
      {"surrogate \xED\xA0\x80", "surrogate ???"},
      {"cut \xF0\x9F\x98", "cut ???"},
      {"face \xF0\x9F\x98\x80", "face \xF0\x9F\x98\x80"}};
  for (const auto& [name, shown] : cases) {
    const Outcome expected{
        1, "", "numera-arrow: " + folder_.path(shown) + ": No such file or directory\n"};
    EXPECT_EQ(run_program({"convert", folder_.path(name)}), expected);
  }
}

TEST_F(BadFiles, ANameThatOpensWithADashIsReadBehindTwo) {
  EXPECT_EQ(run_program({"convert", "-x"}).exit_status, 2);
  const Outcome expected{1, "", "numera-arrow: -x: No such file or directory\n"};
  EXPECT_EQ(run_program({"convert", "--", "-x"}), expected);
}

TEST_F(BadFiles, ANameOfAnyBytesIsRead) {
  const std::string file = folder_.path("a\nb \x1b[1m\xFF");
  write_text(file, "a\n1\n");
  EXPECT_EQ(table_rows(converted(file)), "a | int64 | int64 | int64 | 1 | 1 | 0 | equal\n");
}

TEST_F(BadFiles, AFileOfItsFirstBytesAloneIsTooShort) {
  const std::string file = folder_.path("start");
  write_text(file, "PAR1");
  expect_refusal(file, "smaller than the minimum file footer");
  write_text(file, "ARROW1");
  expect_refusal(file, "too small");
}

TEST_F(BadFiles, ATruncatedParquetFileIsRefused) {
  const std::string file = parquet_file();
  const auto whole = static_cast<std::int64_t>(std::filesystem::file_size(file));
  for (const std::int64_t size : {whole - 1, whole - 8, whole / 2, std::int64_t{12}}) {
    SCOPED_TRACE(size);
    std::filesystem::resize_file(file, static_cast<std::uintmax_t>(size));
    expect_refusal(file, "Parquet magic bytes not found in footer");
  }
}

TEST_F(BadFiles, ATruncatedIpcFileIsRefused) {
  const std::string file = ipc_file();
  const auto whole = static_cast<std::int64_t>(std::filesystem::file_size(file));
  for (const std::int64_t size : {whole - 1, whole - 8, whole / 2, std::int64_t{64}}) {
    SCOPED_TRACE(size);
    std::filesystem::resize_file(file, static_cast<std::uintmax_t>(size));
    expect_refusal(file, "Not an Arrow file");
  }
}

TEST_F(BadFiles, AChangedLengthOfAParquetFooterIsNoticed) {
  const std::string file = parquet_file();
  flip_byte(file, -5);  // the highest byte of the length
  expect_refusal(file, "footer");
}

TEST_F(BadFiles, AChangedFirstByteOfAParquetFooterIsNoticed) {
  const std::string file = parquet_file();
  const std::string content = read_text(file);
  std::uint32_t footer_length = 0;  // it is before the magic bytes at the end
  std::memcpy(&footer_length, content.data() + content.size() - 8, 4);
  flip_byte(file, -8 - std::int64_t{footer_length});
  expect_refusal(file, "thrift");
}

TEST_F(BadFiles, AChangedPageIsNoticedByItsChecksum) {
  const std::string file = parquet_file();
  flip_byte(file, 200);  // among the values, the largest part of the file
  expect_refusal(file, "CRC checksum verification failed");
}

TEST_F(BadFiles, AChangedPageHeaderIsNoticed) {
  const std::string file = parquet_file();
  flip_byte(file, 4);
  expect_refusal(file, "Couldn't deserialize thrift");
}

TEST_F(BadFiles, ATruncatedIpcStreamIsRefused) {
  const std::string file = folder_.path("numbers.stream");
  write_ipc_stream(file, *table_of({{"n", ::arrow::int64(), thousand_numbers()}}));
  const auto whole = static_cast<std::int64_t>(std::filesystem::file_size(file));
  const std::pair<std::int64_t, const char*> cases[] = {
      {whole - 16, "Expected to be able to read 8000 bytes for message body"},
      {whole / 2, "Expected to be able to read 8000 bytes for message body"},
      {64, "Expected to read"},
      {6, "Corrupted metadata length, only 2 bytes available"}};
  for (const auto& [size, reason] : cases) {
    SCOPED_TRACE(size);
    std::filesystem::resize_file(file, static_cast<std::uintmax_t>(size));
    expect_refusal(file, reason);
  }
}

TEST_F(BadFiles, AnIpcStreamThatIsCutBetweenTwoMessagesIsRefused) {
  constexpr std::uintmax_t kMarker = 8;
  constexpr std::uintmax_t kOldMarker = 4;
  const std::tuple<decltype(&write_ipc_stream), std::uintmax_t, const char*> cases[] = {
      {write_ipc_stream, kMarker, "[1, 2]"},
      {write_ipc_stream, kMarker, "[-1, 0]"},  // values with the bytes of a marker
      {write_ipc_stream, kMarker, "[]"},
      {write_old_ipc_stream, kOldMarker, "[1, 2]"},
      {write_old_ipc_stream, kOldMarker, "[1, 0]"}};
  for (const auto& [write, marker, json] : cases) {
    SCOPED_TRACE(json);
    const std::string file = folder_.path("numbers.stream");
    write(file, *table_of({{"n", ::arrow::int32(), json}}));
    std::filesystem::resize_file(file, std::filesystem::file_size(file) - marker);
    expect_refusal(file, "the stream is truncated: the marker of its end is missing");
  }
}

TEST_F(BadFiles, AStreamFromBeforeArrow015ThatIsTruncatedIsRefused) {
  const std::string file = folder_.path("numbers.stream");
  write_old_ipc_stream(file, *table_of({{"n", ::arrow::int64(), thousand_numbers()}}));
  const auto whole = static_cast<std::int64_t>(std::filesystem::file_size(file));
  const std::pair<std::int64_t, const char*> cases[] = {
      {whole - 1, "Corrupted message, only 3 bytes available"},
      {whole - 5, "Expected to be able to read 8000 bytes for message body, got 7999"},
      {whole / 2, "Expected to be able to read 8000 bytes for message body"},
      {64, "it is no table in a known format"}};
  for (const auto& [size, reason] : cases) {
    SCOPED_TRACE(size);
    std::filesystem::resize_file(file, static_cast<std::uintmax_t>(size));
    expect_refusal(file, reason);
  }
}

TEST_F(BadFiles, RowsOfACsvThatHaveOtherColumnsAreNamed) {
  const std::string file = folder_.path("rows.csv");
  write_text(file, "a,b\n1,2\n3\n");
  expect_refusal(file, "CSV parse error: Row #3: Expected 2 columns, got 1: 3");
}

TEST_F(BadFiles, ACsvWithoutAWholeLineHasNoHeading) {
  const std::string file = folder_.path("line.csv");
  for (const char* text : {"\n", "\n\n", "a,b", "\"", "\xEF\xBB\xBF"}) {
    write_text(file, text);
    expect_refusal(file,
                   "read as CSV, it has no heading: no line with text ends with a line break");
  }
}

TEST_F(BadFiles, AReasonAsLongAsAValueIsCutInItsMiddle) {
  std::string text = "a\n";
  for (int i = 0; i < 600000; ++i) text += "1\n";  // more rows than the types are guessed from
  const std::string file = folder_.path("a_value.csv");
  write_text(file, text + std::string(5000, 'x') + "\n");
  expect_refusal(file, "CSV conversion error to int64: invalid value 'xxx");
  const Outcome run = run_program({"convert", file});
  EXPECT_THAT(run.errors, HasSubstr("xxx ... xxx"));
  EXPECT_THAT(run.errors, EndsWith("xxx'\n"));
  EXPECT_EQ(run.errors.size(), ("numera-arrow: " + file + ": \n").size() + 400 + 5 + 200);
}

/// Flips every `step`-th byte by itself. The file must convert, or be refused by one line.
void expect_answer_for_every_flip(const std::string& file, std::int64_t step) {
  const auto size = static_cast<std::int64_t>(std::filesystem::file_size(file));
  for (std::int64_t at = 0; at < size; at += step) {
    SCOPED_TRACE(at);
    flip_byte(file, at);
    const Outcome run = run_program({"convert", file});
    // A sanitizer adds a message of its own about allocations that are too large.
    const bool told = !line_that_starts(run.errors, "numera-arrow: " + file + ": ").empty();
    EXPECT_TRUE((run.exit_status == 0 && run.errors.empty()) || (run.exit_status == 1 && told))
        << ::testing::PrintToString(run);
    flip_byte(file, at);
  }
}

std::shared_ptr<::arrow::Table> small_table() {
  return table_of({{"n", ::arrow::int64(), "[1, null]"},
                   {"t", ::arrow::utf8(), R"(["text", null])"},
                   {"l", ::arrow::list(::arrow::int8()), "[[1, 2], [3]]"}});
}

TEST_F(BadFiles, AnyChangedByteOfAnIpcFileIsAnswered) {
  const std::string file = folder_.path("small.arrow");
  write_ipc(file, *small_table());
  expect_answer_for_every_flip(file, 41);
}

TEST_F(BadFiles, AnyChangedByteOfAnIpcStreamIsAnswered) {
  const std::string file = folder_.path("small.stream");
  write_ipc_stream(file, *small_table());
  expect_answer_for_every_flip(file, 31);
}

TEST_F(BadFiles, AnyChangedByteOfAStreamFromBeforeArrow015IsAnswered) {
  const std::string file = folder_.path("small.stream");
  write_old_ipc_stream(file, *small_table());
  expect_answer_for_every_flip(file, 31);
}

TEST_F(BadFiles, AnyChangedByteOfAParquetFileIsAnswered) {
  const std::string file = folder_.path("small.parquet");
  write_parquet(file, *small_table());
  expect_answer_for_every_flip(file, 47);
}

TEST_F(BadFiles, ValuesThatAreNoValidTextAreNoticed) {
  const std::string file = folder_.path("texts.arrow");
  write_ipc(file, *table_of({{"t", ::arrow::utf8(), R"(["abcdefgh"])"}}));
  overwrite(file, "abcdefgh",
            "abc\xFF"
            "efgh");
  const Outcome run = run_program({"convert", file});
  EXPECT_EQ(run.exit_status, 1);
  EXPECT_EQ(table_rows(run.out),
            "t | string | - | string | 1 | 1 | 0 | Invalid UTF8 sequence at string index 0\n");
}

}  // namespace
}  // namespace numera::testing
