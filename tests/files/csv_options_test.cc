// CSV files that are read with options, and the encodings of text.

#include <gtest/gtest.h>

#include "tests/files/tables.h"
#include "tests/files/written.h"

namespace numera::testing {
namespace {

class CsvOptions : public ::testing::Test {
 protected:
  void expect(const std::string& text, const std::vector<NamedColumn>& columns,
              const files::ReadOptions& options = {}) {
    write_text(file_, text);
    expect_table(file_, *table_of(columns), options);
  }

  void refuse(const std::string& text, const std::string& status,
              const files::ReadOptions& options = {}) {
    write_text(file_, text);
    expect_refused(file_, status, options);
  }

  TemporaryFolder folder_;
  std::string file_ = folder_.path("table.csv");
};

TEST_F(CsvOptions, NameColumnsByTheirPlaceWithoutAHeading) {
  expect("1,a\n2,b\n", {{"f0", kInts, "[1, 2]"}, {"f1", kTexts, R"(["a", "b"])"}},
         {.csv_heading = false});
  expect("\n7\n\n8", {{"f0", kInts, "[7, null, 8]"}}, {.csv_heading = false});
}

TEST_F(CsvOptions, SelectColumnsWithoutAHeading) {
  expect("1,a\n2,b\n", {{"f1", kTexts, R"(["a", "b"])"}},
         {.columns = {"f1"}, .csv_heading = false});
}

TEST_F(CsvOptions, AddTextsThatAreNull) {
  expect("n,t\n1,-\n-999,x\n,\"-\"\n",
         {{"n", kInts, "[1, null, null]"}, {"t", kTexts, R"([null, "x", "-"])"}},
         {.csv_nulls = {"-999", "-"}});
}

TEST_F(CsvOptions, ReadOtherEncodings) {
  const std::pair<const char*, std::string> cases[] = {
      {"latin1", "t\nna\xEFve\n"},
      {"WINDOWS-1252", "t\nna\xEFve\n"},
      {"UTF-16LE", std::string("t\0\n\0n\0a\0\xEF\0v\0e\0\n\0", 16)},
      {"UTF-8", "t\nna\xC3\xAFve\n"},
  };
  for (const auto& [encoding, text] : cases) {
    SCOPED_TRACE(encoding);
    expect(text, {{"t", kTexts, R"(["naïve"])"}}, {.csv_encoding = encoding});
  }
}

TEST_F(CsvOptions, AreNotNeededForUtf16WithAMarkOfTheByteOrder) {
  expect(std::string("\xFF\xFEn\0\n\0\x31\0\n\0", 10), {{"n", kInts, "[1]"}});
  expect(std::string("\xFE\xFF\0n\0\n\0\x31\0\n", 10), {{"n", kInts, "[1]"}});
}

TEST_F(CsvOptions, ReadOtherEncodingsInsideCompressedFiles) {
  write_text(file_, "t\n\xC3\xA9\n");
  ASSERT_TRUE(
      write_batches(folder_.path("t.csv.gz"), {batch_of({{"t", kTexts, R"(["é"])"}})}).ok());
  expect_table(folder_.path("t.csv.gz"), *table_of({{"t", kTexts, R"(["Ã©"])"}}),
               {.csv_encoding = "latin1"});
}

TEST_F(CsvOptions, KeepCharactersThatTheEndOfAPieceCuts) {
  std::string text = "t\n";
  std::string utf16(text.size() * 2, '\0');
  for (size_t i = 0; i < text.size(); ++i) utf16[2 * i] = text[i];
  // U+1F600 has four bytes. Lines of 6 bytes put it over the end of every piece somewhere.
  for (int i = 0; i < 500'000; ++i) utf16 += std::string("\x3D\xD8\x00\xDE\n\0", 6);
  write_text(file_, utf16);
  const auto table = read_table(file_, {.csv_encoding = "UTF-16LE"});
  ASSERT_TRUE(table.ok()) << table.status();
  EXPECT_EQ((*table)->num_rows(), 500'000);
  EXPECT_TRUE((*table)->ValidateFull().ok());
  const auto last = (*table)->column(0)->GetScalar(499'999).ValueOrDie();
  EXPECT_EQ(last->ToString(), "\xF0\x9F\x98\x80");
}

TEST_F(CsvOptions, RefuseWhatIsNoTextOfTheEncoding) {
  refuse("t\n\xC3\x28\n", "Invalid: byte 2 is no text in UTF-8", {.csv_encoding = "UTF-8"});
  refuse(std::string("t\0\n\0x", 5), "Invalid: it ends within a character of UTF-16LE",
         {.csv_encoding = "UTF-16LE"});
}

TEST_F(CsvOptions, RefuseAnEncodingThatDoesNotExist) {
  refuse("t\nx\n", "Invalid: csv_encoding: there is no encoding 'utf-99'",
         {.csv_encoding = "utf-99"});
}

TEST_F(CsvOptions, AreMissedWhereTextIsNotUtf8) {
  refuse("t\nna\xEFve\n", "Invalid: it is text that is not UTF-8, and its encoding was not named");
}

/// A first MiB of one field, then the others.
std::string late(const std::string& first, const std::string& others) {
  std::string text = "a\n";
  while (text.size() < (std::size_t{1} << 20)) text += first + "\n";
  return text + others;
}

TEST_F(CsvOptions, LetAllRowsDecideTheTypes) {
  struct Case {
    const char* first;
    const char* later;
    std::shared_ptr<::arrow::DataType> type;
  };
  const auto times = [](::arrow::TimeUnit::type unit, const char* zone = "") {
    return ::arrow::timestamp(unit, zone);
  };
  const Case cases[] = {
      {"1", "2", kInts},
      {"", "2", kInts},
      {"2", "", kInts},
      {"1", "2.5", ::arrow::float64()},
      {"2.5", "1", ::arrow::float64()},
      {"1", "x", kTexts},
      {"true", "x", kTexts},
      {"true", "12:00:00", kTexts},
      {"1", "2024-02-29", kTexts},
      {"2024-02-29", "2024-02-29 12:00:00", times(::arrow::TimeUnit::SECOND)},
      {"2024-02-29 12:00:00", "2024-02-29 12:00:00.5", times(::arrow::TimeUnit::NANO)},
      {"2024-02-29 12:00:00Z", "2024-02-29 12:00:00.5Z", times(::arrow::TimeUnit::NANO, "UTC")},
      {"2024-02-29 12:00:00Z", "2024-02-29 12:00:00", kTexts},
      {"x", "\xFF", ::arrow::binary()},
      {"1", "\xFF", ::arrow::binary()},
  };
  for (const Case& one : cases) {
    SCOPED_TRACE(std::string(one.first) + " and " + one.later);
    write_text(file_, late(one.first, std::string(one.later) + "\n"));
    const auto table = read_table(file_, {.csv_types_of_all_rows = true});
    ASSERT_TRUE(table.ok()) << table.status();
    EXPECT_EQ(*(*table)->schema()->field(0)->type(), *one.type);
    EXPECT_EQ((*table)->column(0)->null_count() == 0, *one.first != 0 && *one.later != 0);
  }
}

TEST_F(CsvOptions, LeaveTheTypesToTheFirstMiBOtherwise) {
  refuse(
      late("1", "x\n"),
      "Invalid: In CSV column #0: Row #524289: CSV conversion error to int64: invalid value 'x'");
}

}  // namespace
}  // namespace numera::testing
