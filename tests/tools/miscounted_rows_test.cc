// Parquet files whose pages and footer disagree about the number of rows.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <stdexcept>
#include <tuple>

#include "tests/tools/program.h"

namespace numera::testing {
namespace {

using ::testing::ElementsAre;

constexpr std::uint32_t kRowsHeld = 1000;

/// A count in the encoding of Parquet: zigzag, seven bits per byte.
std::string counted(std::uint32_t count) {
  std::string bytes;
  for (count *= 2; count > 127; count >>= 7) bytes += static_cast<char>(count | 128);
  return bytes + static_cast<char>(count);
}

size_t footer_of(const std::string& content) {
  std::uint32_t length = 0;  // it is before the magic bytes at the end
  std::memcpy(&length, content.data() + content.size() - 8, 4);
  return content.size() - 8 - length;
}

/// The positions from `begin` to `end` at which `kRowsHeld` follows the byte `type`.
std::vector<size_t> places_of_rows(const std::string& content, char type, size_t begin,
                                   size_t end) {
  const std::string found = type + counted(kRowsHeld);
  std::vector<size_t> places;
  for (size_t at = content.find(found, begin); at < end; at = content.find(found, at + 1)) {
    places.push_back(at + 1);
  }
  return places;
}

void write_count(const std::string& path, std::string content, size_t place, std::uint32_t count) {
  const std::string bytes = counted(count);
  if (bytes.size() != counted(kRowsHeld).size())
    throw std::logic_error("a count of another length");
  write_text(path, content.replace(place, bytes.size(), bytes));
}

/// Writes another number of rows into the header of a page.
void recount_page(const std::string& path, size_t page, std::uint32_t rows) {
  const std::string content = read_text(path);
  write_count(path, content, places_of_rows(content, '\x15', 0, footer_of(content)).at(page), rows);
}

/// The indices of the counts in a footer. The rows of the file come first, then the values per
/// column.
constexpr size_t kRowsOfFile = 0;
constexpr size_t kValuesOfN = 1;

void recount_footer(const std::string& path, size_t which, std::uint32_t count) {
  const std::string content = read_text(path);
  const auto places = places_of_rows(content, '\x16', footer_of(content), content.size());
  write_count(path, content, places.at(which), count);
}

/// A JSON array of `rows` equal values.
std::string repeated(const std::string& json, std::uint32_t rows) {
  std::string all = "[" + json;
  for (std::uint32_t i = 1; i < rows; ++i) all += "," + json;
  return all + "]";
}

/// Three columns. Every row group has four pages.
class MiscountedRows : public ::testing::Test {
 protected:
  void write(std::uint32_t rows = kRowsHeld) {
    const auto xy = ::arrow::struct_(
        {::arrow::field("x", ::arrow::int8()), ::arrow::field("y", ::arrow::utf8())});
    write_parquet(file_,
                  *table_of({{"n", ::arrow::int64(), repeated("7", rows)},
                             {"l", ::arrow::list(::arrow::int16()), repeated("[7]", rows)},
                             {"s", xy, repeated(R"({"x": 7, "y": "seven"})", rows)}}),
                  kRowsHeld);
  }

  void expect_refused(const std::vector<std::string>& arguments, const std::string& reason) {
    const Outcome expected{1, "", "numera-arrow: " + file_ + ": " + reason + "\n"};
    EXPECT_EQ(run_program(arguments), expected);
  }

  TemporaryFolder folder_;
  std::string file_ = folder_.path("rows.parquet");
};

TEST_F(MiscountedRows, AColumnWithFewerRowsThanTheFooterIsNamed) {
  const std::tuple<size_t, const char*, const char*> cases[] = {
      {0, "n", "found 400 rows, expected 1000, as the footer states"},
      {1, "l", "found 400 rows, expected 1000, as the footer states"},
      {2, "s", "found 400 rows, expected 1000, as the footer states"},
      {3, "s",
       "Struct child array #1 has length smaller than expected for struct array (400 < 1000)"}};
  for (const auto& [page, column, found] : cases) {
    SCOPED_TRACE(page);
    write();
    recount_page(file_, page, 400);
    const std::string reason = std::string("row group 0, column '") + column + "': " + found;
    expect_refused({"convert", file_}, reason);
    expect_refused({"convert", file_, "--columns", column}, reason);
    expect_refused({"types", file_, "--count"}, reason);
  }
}

TEST_F(MiscountedRows, ColumnsThatAllHaveFewerRowsAreRefusedAndNothingIsWritten) {
  write();
  for (const size_t page : {3U, 2U, 1U, 0U}) recount_page(file_, page, 400);
  expect_refused({"convert", file_, "--cast", "--output", folder_.path("back.arrow")},
                 "row group 0, column 'n': found 400 rows, expected 1000, as the footer states");
  EXPECT_THAT(folder_.names(), ElementsAre("rows.parquet"));
}

TEST_F(MiscountedRows, AColumnThatEndsWithABatchIsNamed) {
  write();
  recount_page(file_, 1, 400);
  expect_refused({"convert", file_, "--batch-rows", "200"},
                 "row group 0, column 'l': found 400 rows, expected 1000, as the footer states");
}

TEST_F(MiscountedRows, TheRowGroupIsNamed) {
  write(2 * kRowsHeld);
  recount_page(file_, 4, 400);
  expect_refused({"convert", file_},
                 "row group 1, column 'n': found 400 rows, expected 1000, as the footer states");
}

TEST_F(MiscountedRows, ColumnsThatAreNotAskedForAreNotRead) {
  write();
  recount_page(file_, 0, 400);
  recount_footer(file_, kValuesOfN, 1400);
  EXPECT_EQ(table_rows(converted(file_, {"--columns", "l"})),
            "l | list<element: int16> | list_array | cell | 1,000 | 1 | 0 | equal as "
            "large_list<item: int16>\n");
}

TEST_F(MiscountedRows, AColumnOfMoreValuesThanRowsIsNamed) {
  write();
  recount_footer(file_, kValuesOfN, 1400);
  expect_refused({"convert", file_},
                 "row group 0, column 'n': found 1400 values, expected 1000, as the footer states");
}

TEST_F(MiscountedRows, ListsMayHaveMoreValuesThanRows) {
  write_parquet(file_, *table_of({{"l", ::arrow::list(::arrow::int16()), "[[1, 2], [3, 4, 5]]"}}));
  EXPECT_EQ(table_rows(converted(file_)),
            "l | list<element: int16> | list_array | cell | 2 | 1 | 0 | equal as "
            "large_list<item: int16>\n");
}

TEST_F(MiscountedRows, RowGroupsThatHaveOtherRowsThanTheFileAreRefused) {
  for (const std::uint32_t rows : {400U, 1400U}) {
    write();
    recount_footer(file_, kRowsOfFile, rows);
    expect_refused({"convert", file_}, "found 1000 rows in the row groups, expected " +
                                           std::to_string(rows) + ", as the footer states");
  }
}

TEST_F(MiscountedRows, AChangedPageNamesItsColumn) {
  write();
  flip_byte(file_, static_cast<std::int64_t>(read_text(file_).find("seven")));
  expect_refused({"convert", file_, "--columns", "s"},
                 "row group 0, column 's': could not verify page integrity, CRC checksum "
                 "verification failed for page_ordinal 0");
}

}  // namespace
}  // namespace numera::testing
