// tree --json: the encoded form of each column for other programs.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/tools/program.h"

namespace numera::testing {
namespace {

using ::testing::HasSubstr;

constexpr const char* kNoNullsOfOne =
    R"("Valid":{"class":"struct","size":[1,1],"values":[{)"
    R"("ArrowType":{"class":"char","size":[1,6],"text":"buffer"},)"
    R"("Values":{"class":"uint8","size":[0,1],"values":[]},)"
    R"("Length":{"class":"double","size":[1,1],"values":[1]}}]})";

class TreeAsJson : public ::testing::Test {
 protected:
  std::string shown(const std::vector<NamedColumn>& columns,
                    std::vector<std::string> options = {}) const {
    write_ipc(file_, *table_of(columns));
    options.emplace_back("--json");
    return printed("tree", file_, options);
  }

  TemporaryFolder folder_;
  std::string file_ = folder_.path("a_file");
};

TEST_F(TreeAsJson, IsAnObjectPerColumn) {
  const std::string array = R"({"ArrowType":{"class":"char","size":[1,5],"text":"array"},)";
  EXPECT_EQ(
      shown({{"n", ::arrow::int64(), "[9007199254740993]"}, {"t", ::arrow::utf8(), R"(["é\n"])"}}),
      R"({"column":"n","arrow_type":"int64","encoded":)" + array +
          R"("Type":{"class":"char","size":[1,5],"text":"int64"},)"
          R"("Data":{"class":"int64","size":[1,1],"values":[9007199254740993]},)" +
          kNoNullsOfOne + "}}\n" + R"({"column":"t","arrow_type":"string","encoded":)" + array +
          R"("Type":{"class":"char","size":[1,6],"text":"string"},)"
          R"("Data":{"class":"string","size":[1,1],"values":["é\n"]},)" +
          kNoNullsOfOne + "}}\n");
}

TEST_F(TreeAsJson, HasTheRowsAskedFor) {
  const std::string json = shown({{"n", ::arrow::int16(), "[1, 2, 3, 4]"}}, {"--rows", "3"});
  EXPECT_THAT(json, HasSubstr(R"("Data":{"class":"int16","size":[3,1],"values":[1,2,3]})"));
}

TEST_F(TreeAsJson, HasEveryValueOfTheseRows) {
  std::string numbers = "1";
  for (int i = 2; i <= 50; ++i) numbers += "," + std::to_string(i);
  const std::string json =
      shown({{"l", ::arrow::list(::arrow::int8()), "[[" + numbers + "], [7]]"}}, {"--rows", "1"});
  EXPECT_THAT(json,
              HasSubstr(R"("Data":{"class":"int8","size":[50,1],"values":[)" + numbers + "]"));
  EXPECT_THAT(json, HasSubstr(R"("StartOffsets":{"class":"int32","size":[2,1],"values":[0,50]})"));
}

TEST_F(TreeAsJson, OfNestedColumnsHasTheEncodedColumnsWithin) {
  const auto type = ::arrow::struct_(
      {::arrow::field("x", ::arrow::float32()), ::arrow::field("y", ::arrow::utf8())});
  const std::string json = shown({{"s", type, R"([{"x": 0.1, "y": null}])"}});
  EXPECT_THAT(json, HasSubstr(R"("FieldData":{"class":"cell","size":[1,2],"values":[)"
                              R"({"class":"struct","size":[1,1],"values":[{"ArrowType")"));
  EXPECT_THAT(json, HasSubstr(R"("Data":{"class":"single","size":[1,1],"values":[0.1]})"));
  EXPECT_THAT(json, HasSubstr(R"("FieldName":{"class":"cell","size":[1,2],"values":[)"
                              R"({"class":"char","size":[1,1],"text":"x"},)"
                              R"({"class":"char","size":[1,1],"text":"y"}]})"));
}

TEST_F(TreeAsJson, HasTruthValuesAsSuch) {
  EXPECT_THAT(
      shown({{"d", ::arrow::dictionary(::arrow::int8(), ::arrow::utf8(), true), R"(["a"])"}}),
      HasSubstr(R"({"class":"logical","size":[1,1],"values":[true]})"));
}

TEST_F(TreeAsJson, HasNullForNaNAndInfinities) {
  EXPECT_THAT(
      shown({{"x", ::arrow::float64(), "[NaN, -Inf, -0.0, 1e300]"}}),
      HasSubstr(R"("Data":{"class":"double","size":[4,1],"values":[null,null,-0,1e+300]})"));
}

TEST_F(TreeAsJson, OfAFileWithoutColumnsIsEmpty) {
  write_ipc(file_, *::arrow::Table::Make(::arrow::schema({}), ::arrow::ArrayVector{}, 0));
  EXPECT_EQ(printed("tree", file_, {"--json"}), "");
}

TEST_F(TreeAsJson, OfAColumnWithoutAHostFormNeedsACast) {
  write_ipc(file_, *table_of({{"n", ::arrow::int8(), "[1]"}, {"h", ::arrow::float16(), "[1.5]"}}));
  const Outcome expected{1, "",
                         "numera-arrow: " + file_ +
                             ": Column 'h' (index 1): found type halffloat, expected one that has "
                             "a host form; casts were not asked for.\n"};
  EXPECT_EQ(run_program({"tree", file_, "--json"}), expected);
  EXPECT_THAT(printed("tree", file_, {"--json", "--cast", "--columns", "h"}),
              HasSubstr(R"({"column":"h","arrow_type":"halffloat","encoded":{)"));
}

}  // namespace
}  // namespace numera::testing
