// The command types: what a file states, and what is counted.

#include <gtest/gtest.h>

#include "tests/tools/program.h"

namespace numera::testing {
namespace {

class Types : public ::testing::Test {
 protected:
  std::string types(const std::vector<std::string>& options = {}) const {
    return table_rows(printed("types", file_, options));
  }

  TemporaryFolder folder_;
  std::string file_ = folder_.path("a_file");
};

TEST_F(Types, HaveADashForWhatTheFileDoesNotState) {
  write_parquet(file_, *table_of({{"n", ::arrow::int8(), "[1, null]"},
                                  {"l", ::arrow::list(::arrow::int8()), "[[1], null]"}}));
  EXPECT_EQ(types(),
            "n | int8 | int8 | int8 | 2 | 1 | 1\n"
            "l | list<element: int8> | list_array | cell | 2 | 1 | -\n");
  write_text(file_, "n\n1\n");
  EXPECT_EQ(types(), "n | int64 | int64 | int64 | - | - | -\n");
}

TEST_F(Types, AreCountedOnRequest) {
  write_parquet(file_, *table_of({{"l", ::arrow::list(::arrow::int8()), "[[1], null]"}}));
  EXPECT_EQ(types({"--count"}), "l | list<element: int8> | list_array | cell | 2 | 1 | 1\n");
  write_text(file_, "n\n1\n");
  EXPECT_EQ(types({"--count"}), "n | int64 | int64 | int64 | 1 | 1 | 0\n");
}

TEST_F(Types, ReadNoValuesUnlessTheyAreCounted) {
  write_parquet(file_, *table_of({{"t", ::arrow::utf8(), R"(["a text", null])"}}));
  flip_byte(file_, static_cast<std::int64_t>(read_text(file_).find("a text")));
  EXPECT_EQ(types(), "t | string | string | string | 2 | 1 | 1\n");
  const Outcome refused{1, "",
                        "numera-arrow: " + file_ +
                            ": row group 0, column 't': could not verify page integrity, CRC "
                            "checksum verification failed for page_ordinal 0\n"};
  EXPECT_EQ(run_program({"types", file_, "--count"}), refused);
}

}  // namespace
}  // namespace numera::testing
