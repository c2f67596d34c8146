// Files of every class that comes back with its type, written here and converted there and back.

#include <arrow/api.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "tests/tools/program.h"
#include "tests/tools/written_files.h"

namespace numera::testing {
namespace {

/// Repeats values up to a length, so that chunks begin and end within a byte of a bitmap.
std::string repeated(const std::vector<std::string>& values, size_t length) {
  std::string json = "[";
  for (size_t i = 0; i < length; ++i) json += (i == 0 ? "" : ",") + values[i % values.size()];
  return json + "]";
}

std::vector<NamedColumn> numeric_columns(size_t length, bool nulls) {
  const std::vector<std::string> numbers = {"0", "1", "127", "3", "5"};
  const std::vector<std::string> truths = {"true", "true", "false", "true", "false"};
  std::vector<NamedColumn> columns;
  for (const auto& type :
       {::arrow::float64(), ::arrow::float32(), ::arrow::int8(), ::arrow::uint8(), ::arrow::int16(),
        ::arrow::uint16(), ::arrow::int32(), ::arrow::uint32(), ::arrow::int64(), ::arrow::uint64(),
        ::arrow::boolean()}) {
    std::vector<std::string> values = type->id() == ::arrow::Type::BOOL ? truths : numbers;
    if (nulls) values[2] = "null";
    columns.push_back({type->name() + "_column", type, repeated(values, length)});
  }
  return columns;
}

class WrittenFiles : public ::testing::Test {
 protected:
  std::string parquet_file(const ::arrow::Table& table, std::int64_t row_group_length = 1024) {
    std::string file = folder_.path("written.parquet");
    write_parquet(file, table, row_group_length);
    return file;
  }

  TemporaryFolder folder_;
};

TEST_F(WrittenFiles, EveryNumericClassAndBooleansReturnEqual) {
  const std::string out = converted(parquet_file(*table_of(numeric_columns(10, false))));
  EXPECT_EQ(table_rows(out),
            "double_column | double | double | double | 10 | 1 | 0 | equal\n"
            "float_column | float | single | single | 10 | 1 | 0 | equal\n"
            "int8_column | int8 | int8 | int8 | 10 | 1 | 0 | equal\n"
            "uint8_column | uint8 | uint8 | uint8 | 10 | 1 | 0 | equal\n"
            "int16_column | int16 | int16 | int16 | 10 | 1 | 0 | equal\n"
            "uint16_column | uint16 | uint16 | uint16 | 10 | 1 | 0 | equal\n"
            "int32_column | int32 | int32 | int32 | 10 | 1 | 0 | equal\n"
            "uint32_column | uint32 | uint32 | uint32 | 10 | 1 | 0 | equal\n"
            "int64_column | int64 | int64 | int64 | 10 | 1 | 0 | equal\n"
            "uint64_column | uint64 | uint64 | uint64 | 10 | 1 | 0 | equal\n"
            "bool_column | bool | logical | logical | 10 | 1 | 0 | equal\n");
}

TEST_F(WrittenFiles, RowGroupsOfOddLengthsWithNullsReturnEqual) {
  const std::string out = converted(parquet_file(*table_of(numeric_columns(1000, true)), 77));
  EXPECT_EQ(table_rows(out),
            "double_column | double | double | double | 1,000 | 13 | 200 | equal\n"
            "float_column | float | single | single | 1,000 | 13 | 200 | equal\n"
            "int8_column | int8 | int8 | int8 | 1,000 | 13 | 200 | equal\n"
            "uint8_column | uint8 | uint8 | uint8 | 1,000 | 13 | 200 | equal\n"
            "int16_column | int16 | int16 | int16 | 1,000 | 13 | 200 | equal\n"
            "uint16_column | uint16 | uint16 | uint16 | 1,000 | 13 | 200 | equal\n"
            "int32_column | int32 | int32 | int32 | 1,000 | 13 | 200 | equal\n"
            "uint32_column | uint32 | uint32 | uint32 | 1,000 | 13 | 200 | equal\n"
            "int64_column | int64 | int64 | int64 | 1,000 | 13 | 200 | equal\n"
            "uint64_column | uint64 | uint64 | uint64 | 1,000 | 13 | 200 | equal\n"
            "bool_column | bool | logical | logical | 1,000 | 13 | 200 | equal\n");
}

TEST_F(WrittenFiles, ATableWithoutRowsReturnsEqual) {
  const std::string out = converted(
      parquet_file(*table_of({{"n", ::arrow::float64(), "[]"}, {"b", ::arrow::boolean(), "[]"}})));
  EXPECT_EQ(table_rows(out),
            "n | double | double | double | 0 | 1 | 0 | equal\n"
            "b | bool | logical | logical | 0 | 1 | 0 | equal\n");
}

TEST_F(WrittenFiles, ATableWithoutColumnsReturnsEqual) {
  const std::string file = folder_.path("no_columns.arrow");
  write_ipc(file, *table_of({}));
  const std::string out = converted(file);
  EXPECT_EQ(table_rows(out), "");
}

TEST_F(WrittenFiles, NamesNeedNotBeAscii) {
  const std::string out = converted(parquet_file(*table_of({{"größe", ::arrow::int8(), "[1]"},
                                                            {"身長", ::arrow::int8(), "[2]"},
                                                            {"𝜆", ::arrow::int8(), "[3]"}})));
  EXPECT_EQ(table_rows(out),
            "größe | int8 | int8 | int8 | 1 | 1 | 0 | equal\n"
            "身長 | int8 | int8 | int8 | 1 | 1 | 0 | equal\n"
            "𝜆 | int8 | int8 | int8 | 1 | 1 | 0 | equal\n");
}

TEST_F(WrittenFiles, ANameWithALineBreakKeepsItsRow) {
  const std::string out =
      converted(parquet_file(*table_of({{"two\nlines", ::arrow::int8(), "[1]"}})));
  EXPECT_EQ(table_rows(out), "two?lines | int8 | int8 | int8 | 1 | 1 | 0 | equal\n");
}

TEST_F(WrittenFiles, NotANumberInfinityAndNegativeZeroReturnEqual) {
  ::arrow::DoubleBuilder builder;
  const double values[] = {std::numeric_limits<double>::quiet_NaN(),
                           -std::numeric_limits<double>::infinity(), -0.0, 0.0,
                           std::numeric_limits<double>::denorm_min()};
  ASSERT_TRUE(builder.AppendValues(values, 5).ok());
  const auto table = ::arrow::Table::Make(
      ::arrow::schema({::arrow::field("special", ::arrow::float64())}), {*builder.Finish()});
  const std::string out = converted(parquet_file(*table));
  EXPECT_EQ(table_rows(out), "special | double | double | double | 5 | 1 | 0 | equal\n");
}

TEST_F(WrittenFiles, BytesOfBothWaysAreTold) {
  const std::string file = folder_.path("numbers.arrow");
  write_ipc(file, *table_of({{"n", ::arrow::int64(), "[1, 2]"}}));
  const std::string out = converted(file);
  EXPECT_THAT(line_that_starts(out, "to the host:"),
              ::testing::MatchesRegex("to the host:  16 bytes in [0-9]+[.][0-9]+ s"));
  EXPECT_THAT(line_that_starts(out, "to Arrow:"),
              ::testing::MatchesRegex("to Arrow:     16 bytes in [0-9]+[.][0-9]+ s"));
}

}  // namespace
}  // namespace numera::testing
