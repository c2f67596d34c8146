// Tables and blocks of values, and how they fit a width.

#include "tools/value_table.h"

#include <arrow/api.h>
#include <gtest/gtest.h>

#include <sstream>

#include "tests/tools/written_files.h"

namespace numera::testing {
namespace {

using tools::Layout;
using Print = void (*)(const ::arrow::Schema&, const ::arrow::RecordBatchVector&, const Layout&,
                       std::ostream&);

std::string printed(const Print print, const std::vector<NamedColumn>& columns,
                    const Layout& layout = {}) {
  const auto table = table_of(columns);
  const auto batches = ::arrow::TableBatchReader(*table).ToRecordBatches().ValueOrDie();
  std::ostringstream out;
  print(*table->schema(), batches, layout, out);
  return out.str();
}

const std::vector<NamedColumn> kColumns = {{"name", ::arrow::utf8(), R"(["tea", "milk", null])"},
                                           {"n", ::arrow::int16(), "[7, null, -100]"},
                                           {"fine", ::arrow::boolean(), "[true, false, true]"},
                                           {"where", ::arrow::utf8(), R"(["東京", "Köln", ""])"}};

TEST(ValueTable, AlignsNumbersToTheRightAndTextsToTheLeft) {
  EXPECT_EQ(printed(tools::print_table, kColumns),
            "name        n  fine   where\n"
            "string  int16  bool   string\n"
            "tea         7  true   東京\n"
            "milk     null  false  Köln\n"
            "null     -100  true\n");
}

TEST(ValueTable, LeavesOutAtTheRightWhatDoesNotFit) {
  const std::string two =
      "name        n\n"
      "string  int16\n"
      "tea         7\n"
      "milk     null\n"
      "null     -100\n"
      "2 more columns: fine, …; --columns or --vertical show them\n";
  EXPECT_EQ(printed(tools::print_table, kColumns, {.width = 19}), two);
  EXPECT_EQ(printed(tools::print_table, kColumns, {.width = 13}), two);
  EXPECT_EQ(printed(tools::print_table, kColumns, {.width = 28}),
            printed(tools::print_table, kColumns));
  EXPECT_EQ(printed(tools::print_table, kColumns, {.width = 27}),
            "name        n  fine\n"
            "string  int16  bool\n"
            "tea         7  true\n"
            "milk     null  false\n"
            "null     -100  true\n"
            "1 more column: where; --columns or --vertical show it\n");
}

TEST(ValueTable, CutsTheFirstColumnToTheWidth) {
  const std::vector<NamedColumn> columns = {
      {"long_name", ::arrow::list(::arrow::int8()), "[[1, 2, 3, 4]]"},
      {"b", ::arrow::int8(), "[1]"}};
  EXPECT_EQ(printed(tools::print_table, columns, {.width = 8}),
            "long_na…\n"
            "list<in…\n"
            "[1, …]\n"
            "1 more column: b; --columns or --vertical show it\n");
}

TEST(ValueTable, CutsNamesValuesAndTypesEvenIfThereIsNoWidth) {
  const std::string text(50, 'x');
  const std::vector<NamedColumn> columns = {
      {text, ::arrow::utf8(), "[\"" + text + "\"]"},
      {"s", ::arrow::struct_({::arrow::field("latitude", ::arrow::float64())}),
       R"([{"latitude": 1}])"}};
  const std::string cut = std::string(39, 'x') + "…";
  EXPECT_EQ(printed(tools::print_table, columns), cut + "  s\n" + "string" + std::string(36, ' ') +
                                                      "struct<latitude: do…\n" + cut +
                                                      "  {latitude: 1}\n");
}

TEST(ValueTable, HasAStyleForEachKindOfCell) {
  EXPECT_EQ(printed(tools::print_table, {{"n", ::arrow::int8(), "[1, null]"}}, {.colour = true}),
            "   \x1b[1mn\x1b[0m\n"
            "\x1b[2mint8\x1b[0m\n"
            "   1\n"
            "\x1b[2mnull\x1b[0m\n");
}

TEST(ValueTable, HasItsHeadingWithoutRows) {
  EXPECT_EQ(printed(tools::print_table, {{"n", ::arrow::int8(), "[]"}}), "   n\nint8\n");
}

TEST(ValueTable, IsEmptyWithoutColumns) { EXPECT_EQ(printed(tools::print_table, {}), ""); }

TEST(ValueTable, NeverCommandsATerminal) {
  EXPECT_EQ(printed(tools::print_table, {{"a\nb", ::arrow::utf8(), "[\"\\u001b[1m\"]"}}),
            "a?b\nstring\n?[1m\n");
}

TEST(ValueBlocks, HaveALinePerColumn) {
  EXPECT_EQ(printed(tools::print_blocks, kColumns),
            "name:  tea\n"
            "n:     7\n"
            "fine:  true\n"
            "where: 東京\n"
            "\n"
            "name:  milk\n"
            "n:     null\n"
            "fine:  false\n"
            "where: Köln\n"
            "\n"
            "name:  null\n"
            "n:     -100\n"
            "fine:  true\n"
            "where:\n");
}

TEST(ValueBlocks, CutValuesToTheWidthAlone) {
  const std::vector<NamedColumn> columns = {
      {"text", ::arrow::utf8(), "[\"" + std::string(100, 'x') + "\"]"}};
  EXPECT_EQ(printed(tools::print_blocks, columns), "text: " + std::string(100, 'x') + "\n");
  EXPECT_EQ(printed(tools::print_blocks, columns, {.width = 20}),
            "text: " + std::string(13, 'x') + "…\n");
  EXPECT_EQ(printed(tools::print_blocks, columns, {.width = 1}),
            "text: " + std::string(9, 'x') + "…\n");
}

}  // namespace
}  // namespace numera::testing
