// --json: what the commands print for other programs.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>

#include "tests/tools/program.h"

namespace numera::testing {
namespace {

class JsonOutput : public ::testing::Test {
 protected:
  TemporaryFolder folder_;
  std::string file_ = folder_.path("a_file");
};

TEST_F(JsonOutput, OfTypesIsAnObjectPerColumn) {
  write_parquet(file_, *table_of({{"n", ::arrow::int16(), "[1, null, 3]"},
                                  {"l", ::arrow::list(::arrow::int8()), "[[1], null, []]"}}));
  const std::string n =
      R"({"column":"n","arrow_type":"int16","encoded_type":"int16","host_class":"int16",)"
      R"("rows":3,"chunks":1,"nulls":1})";
  const std::string l =
      R"({"column":"l","arrow_type":"list<element: int8>","encoded_type":"list_array",)"
      R"("host_class":"cell","rows":3,"chunks":1,"nulls":)";
  EXPECT_EQ(printed("types", file_, {"--json"}), n + "\n" + l + "null}\n");
  EXPECT_EQ(printed("types", file_, {"--json", "--count"}), n + "\n" + l + "1}\n");
}

TEST_F(JsonOutput, OfTypesHasNullForWhatIsUnknown) {
  write_text(file_, "n\n1\n");
  EXPECT_EQ(printed("types", file_, {"--json"}),
            R"({"column":"n","arrow_type":"int64","encoded_type":"int64","host_class":"int64",)"
            R"("rows":null,"chunks":null,"nulls":null})"
            "\n");
  write_ipc(file_, *table_of({{"d", ::arrow::decimal128(5, 2), R"(["1.50"])"}}));
  EXPECT_EQ(printed("types", file_, {"--json"}),
            R"x({"column":"d","arrow_type":"decimal128(5, 2)","encoded_type":null,)x"
            R"("host_class":null,"rows":1,"chunks":1,"nulls":0})"
            "\n");
}

TEST_F(JsonOutput, OfRowsIsAnObjectPerRow) {
  write_parquet(file_, *table_of({{"n", ::arrow::int16(), "[1, 2, null]"},
                                  {"t", ::arrow::utf8(), R"(["a", null, "c\n"])"},
                                  {"b", ::arrow::binary(), R"(["A", "B", "C"])"}}));
  const std::string first = R"({"n":1,"t":"a","b":"0x41"})";
  const std::string second = R"({"n":2,"t":null,"b":"0x42"})";
  const std::string third = R"({"n":null,"t":"c\n","b":"0x43"})";
  EXPECT_EQ(printed("head", file_, {"--json", "-n", "2"}), first + "\n" + second + "\n");
  EXPECT_EQ(printed("show", file_, {"--json", "-n", "1"}), first + "\n");
  EXPECT_EQ(printed("tail", file_, {"--json", "-n", "2"}), second + "\n" + third + "\n");
  EXPECT_EQ(printed("head", file_, {"--json", "-n", "1", "--columns", "t,n"}),
            "{\"t\":\"a\",\"n\":1}\n");
}

TEST_F(JsonOutput, OfRowsHasEveryColumnWhateverTheWidth) {
  write_parquet(file_, *table_of({{"first", ::arrow::utf8(), R"(["a long text in a column"])"},
                                  {"second", ::arrow::int8(), "[1]"}}));
  EXPECT_EQ(run_on_terminal({"head", file_, "--json"}, 10),
            "{\"first\":\"a long text in a column\",\"second\":1}\r\n");
}

TEST_F(JsonOutput, OfNoRowsIsEmpty) {
  write_parquet(file_, *table_of({{"n", ::arrow::int16(), "[]"}}));
  EXPECT_EQ(printed("head", file_, {"--json"}), "");
}

TEST_F(JsonOutput, IsUtf8WhateverAColumnIsNamed) {
  write_ipc(file_, *table_of({{"a\xFF\"\x1b", ::arrow::int8(), "[1]"}}));
  EXPECT_EQ(printed("head", file_, {"--json"}), "{\"a\\ufffd\\\"\\u001b\":1}\n");
}

TEST_F(JsonOutput, KeepsColumnsOfOneName) {
  write_ipc(file_, *table_of({{"a", ::arrow::int8(), "[1]"}, {"a", ::arrow::utf8(), R"(["x"])"}}));
  EXPECT_EQ(printed("head", file_, {"--json"}), "{\"a\":1,\"a\":\"x\"}\n");
}

/// Replaces seconds, which vary from run to run.
std::string without_seconds(const std::string& json) {
  static const std::regex kSeconds(R"("seconds":[0-9]+[.][0-9]{6})");
  return std::regex_replace(json, kSeconds, R"("seconds":TIME)");
}

TEST_F(JsonOutput, OfConvertIsAnObjectPerColumnAndOneOfTheWays) {
  write_parquet(file_, *table_of({{"n", ::arrow::int64(), "[1, 2, 3]"},
                                  {"d", ::arrow::date32(), "[1, null, 3]"}}));
  EXPECT_EQ(without_seconds(converted(file_, {"--json"})),
            R"({"column":"n","arrow_type":"int64","encoded_type":"int64","host_class":"int64",)"
            R"("rows":3,"chunks":1,"nulls":0,"way_back":"equal","returned_type":"int64",)"
            R"("casts":[],"reason":null})"
            "\n"
            R"({"column":"d","arrow_type":"date32[day]","encoded_type":"datetime",)"
            R"("host_class":"datetime","rows":3,"chunks":1,"nulls":1,"way_back":"equal",)"
            R"("returned_type":"timestamp[s]","casts":[],"reason":null})"
            "\n"
            R"({"to_host":{"bytes":38,"seconds":TIME},"to_arrow":{"bytes":49,"seconds":TIME}})"
            "\n");
}

TEST_F(JsonOutput, OfConvertListsCasts) {
  write_parquet(file_, *table_of({{"d", ::arrow::decimal128(5, 2), R"(["1.50"])"}}));
  EXPECT_EQ(without_seconds(converted(file_, {"--json", "--cast", "--no-check"})),
            R"x({"column":"d","arrow_type":"decimal128(5, 2)","encoded_type":"double",)x"
            R"("host_class":null,"rows":1,"chunks":1,"nulls":0,"way_back":"not checked",)"
            R"("returned_type":"double","casts":["decimal128(5, 2) to double"],"reason":null})"
            "\n"
            R"({"to_host":{"bytes":8,"seconds":TIME},"to_arrow":{"bytes":8,"seconds":TIME}})"
            "\n");
}

TEST_F(JsonOutput, OfConvertSaysWhyAColumnFailed) {
  write_parquet(file_, *table_of({{"d", ::arrow::decimal128(5, 2), R"(["1.50"])"}}));
  Outcome run = run_program({"convert", file_, "--json"});
  run.out = without_seconds(run.out);
  const Outcome expected{
      1,
      R"x({"column":"d","arrow_type":"decimal128(5, 2)","encoded_type":null,"host_class":null,)x"
      R"("rows":1,"chunks":1,"nulls":0,"way_back":"failed","returned_type":null,"casts":[],)"
      R"("reason":"found type decimal128(5, 2), expected one that has a host form; casts were )"
      R"(not asked for."})"
      "\n"
      R"({"to_host":{"bytes":0,"seconds":TIME},"to_arrow":{"bytes":0,"seconds":TIME}})"
      "\n",
      "numera-arrow: " + file_ + ": 1 of 1 columns were refused or came back different\n"};
  EXPECT_EQ(run, expected);
}

TEST_F(JsonOutput, OfAFailureIsNothing) {
  const Outcome expected{1, "", "numera-arrow: " + file_ + ": No such file or directory\n"};
  for (const char* command : {"types", "head", "tail", "show", "summary", "tree", "convert"}) {
    EXPECT_EQ(run_program({command, file_, "--json"}), expected);
  }
}

}  // namespace
}  // namespace numera::testing
