#include <gtest/gtest.h>

#include "tests/tools/program.h"

namespace numera::testing {
namespace {

TEST(NoCheck, WritesWhatComesBackAndDoesNotSayThatItIsEqual) {
  const TemporaryFolder folder;
  const std::string file = folder.path("table.parquet");
  const auto table = table_of({{"n", ::arrow::int16(), "[1, null, 3]"},
                               {"t", ::arrow::large_utf8(), R"(["a", "b", null])"}});
  write_parquet(file, *table);
  const std::string output = folder.path("back.arrow");
  EXPECT_EQ(table_rows(converted(file, {"--no-check", "--output", output})),
            "n | int16 | int16 | int16 | 3 | 1 | 1 | not checked\n"
            "t | large_string | string | string | 3 | 1 | 1 | not checked\n");
  EXPECT_TRUE(read_ipc(output)->Equals(*table));
}

TEST(NoCheck, SaysAsWhichTypeAColumnReturns) {
  const TemporaryFolder folder;
  const std::string file = folder.path("table.parquet");
  write_parquet(file, *table_of({{"t", ::arrow::utf8(), R"(["a"])"}}));
  EXPECT_EQ(table_rows(converted(file, {"--no-check"})),
            "t | string | string | string | 1 | 1 | 0 | not checked as large_string\n");
}

}  // namespace
}  // namespace numera::testing
