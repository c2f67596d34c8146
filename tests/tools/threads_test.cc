// The program prints and writes the same with any number of threads.

#include <gtest/gtest.h>

#include "tests/tools/program.h"

namespace numera::testing {
namespace {

TEST(Threads, ChangeNothingOfWhatConvertPrints) {
  for (const char* name : {"penguins.parquet", "countries.arrow", "flights.parquet"}) {
    const std::string file = std::string(NUMERA_EXAMPLE_DATA "/") + name;
    const std::string rows = table_rows(converted(file));
    for (const char* threads : {"1", "2", "5", "0"}) {
      SCOPED_TRACE(file + " on " + threads + " threads");
      EXPECT_EQ(table_rows(converted(file, {"--threads", threads})), rows);
    }
  }
}

TEST(Threads, ChangeNothingOfTheOutput) {
  const TemporaryFolder folder;
  const std::string file = NUMERA_EXAMPLE_DATA "/countries.arrow";
  converted(file, {"--output", folder.path("one.arrow")});
  converted(file, {"--output", folder.path("three.arrow"), "--threads", "3"});
  EXPECT_EQ(read_text(folder.path("three.arrow")), read_text(folder.path("one.arrow")));
}

TEST(Threads, ChangeNoValueOfAParquetOutput) {
  const TemporaryFolder folder;
  const std::string file = NUMERA_EXAMPLE_DATA "/countries.arrow";
  converted(file, {"--output", folder.path("one.parquet")});
  converted(file, {"--output", folder.path("three.parquet"), "--threads", "3"});
  EXPECT_TRUE(read_parquet(folder.path("three.parquet"))
                  ->Equals(*read_parquet(folder.path("one.parquet")), /*check_metadata=*/true));
}

TEST(Threads, ChangeNothingOfARefusal) {
  const TemporaryFolder folder;
  const std::string file = folder.path("refused.arrow");
  write_ipc(file, *table_of({{"a", ::arrow::int8(), "[1]"},
                             {"b", ::arrow::decimal128(9, 2), R"(["1.25"])"},
                             {"\xC3\xBC", ::arrow::utf8(), R"(["x"])"}}));
  const Outcome serial = run_program({"convert", file});
  const Outcome parallel = run_program({"convert", file, "--threads", "3"});
  EXPECT_EQ(parallel.exit_status, 1);
  EXPECT_EQ(table_rows(parallel.out), table_rows(serial.out));
  EXPECT_EQ(parallel.errors, serial.errors);
}

}  // namespace
}  // namespace numera::testing
