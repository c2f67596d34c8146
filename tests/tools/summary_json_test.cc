// summary --json: the figures of each column for other programs.

#include <arrow/array/builder_primitive.h>
#include <gtest/gtest.h>

#include "tests/tools/summary.h"

namespace numera::testing {
namespace {

class SummaryAsJson : public Summary {
 protected:
  /// The members behind the name, the type and the rows of the one column "c".
  std::string figures_of(const std::shared_ptr<::arrow::Array>& values) const {
    write_ipc(file_, *::arrow::Table::Make(::arrow::schema({::arrow::field("c", values->type())}),
                                           {values}));
    const std::string json = printed("summary", file_, {"--json"});
    const size_t start = json.find("\"nulls\"");
    return start == std::string::npos ? json : json.substr(start);
  }
  std::string figures_of(const std::shared_ptr<::arrow::DataType>& type,
                         const std::string& json) const {
    return figures_of(ArrowArray(type, json));
  }
};

TEST_F(SummaryAsJson, IsAnObjectPerColumn) {
  write_ipc(file_, *table_of({{"n", ::arrow::int16(), "[3, 1, null, 4]"},
                              {"s", ::arrow::struct_({}), "[{}, null, {}, {}]"}}));
  EXPECT_EQ(printed("summary", file_, {"--json"}),
            R"({"column":"n","arrow_type":"int16","rows":4,"nulls":1,"distinct":3,"nans":null,)"
            R"("falses":null,"trues":null,"min":1,"max":4,"mean":2.6666666666666665,)"
            R"("quantiles":{"p5":1,"p25":1,"p50":3,"p75":4,"p95":4},"shortest":null,)"
            R"("longest":null,"histogram":{"from":1,"to":4,"counts":[1,0,0,0,0,0,0,0,1,0,0,1]},)"
            R"("approximate":[]})"
            "\n"
            R"({"column":"s","arrow_type":"struct<>","rows":4,"nulls":1,"distinct":null,)"
            R"("nans":null,"falses":null,"trues":null,"min":null,"max":null,"mean":null,)"
            R"("quantiles":null,"shortest":null,"longest":null,"histogram":null,)"
            R"("approximate":[]})"
            "\n");
}

TEST_F(SummaryAsJson, HasTheColumnsAskedFor) {
  write_ipc(file_, *table_of({{"a", ::arrow::boolean(), "[true, true, true, true]"},
                              {"b", ::arrow::boolean(), "[false, true, true, null]"}}));
  EXPECT_EQ(printed("summary", file_, {"--json", "--columns", "b"}),
            R"({"column":"b","arrow_type":"bool","rows":4,"nulls":1,"distinct":2,"nans":null,)"
            R"("falses":1,"trues":2,"min":null,"max":null,"mean":null,"quantiles":null,)"
            R"("shortest":null,"longest":null,"histogram":null,"approximate":[]})"
            "\n");
}

TEST_F(SummaryAsJson, OfFloatingPointNumbersCountsNaNAndHasFiniteBoundsOfTheHistogram) {
  EXPECT_EQ(figures_of(::arrow::float64(), "[NaN, 0.1, -Inf, 0.7, null]"),
            R"("nulls":1,"distinct":4,"nans":1,"falses":null,"trues":null,"min":null,)"
            R"("max":0.7,"mean":null,)"
            R"("quantiles":{"p5":null,"p25":null,"p50":0.1,"p75":0.7,"p95":0.7},)"
            R"("shortest":null,"longest":null,)"
            R"("histogram":{"from":0.1,"to":0.7,"counts":[1,0,0,0,0,0,0,0,0,0,0,1]},)"
            R"("approximate":[]})"
            "\n");
}

TEST_F(SummaryAsJson, OfNaNAloneHasNoFiguresOfNumbers) {
  EXPECT_EQ(figures_of(::arrow::float32(), "[NaN]"),
            R"("nulls":0,"distinct":1,"nans":1,"falses":null,"trues":null,"min":null,"max":null,)"
            R"("mean":null,"quantiles":null,"shortest":null,"longest":null,"histogram":null,)"
            R"("approximate":[]})"
            "\n");
}

TEST_F(SummaryAsJson, OfLargeIntegersHasEveryDigit) {
  EXPECT_EQ(figures_of(::arrow::uint64(), "[18446744073709551615, 9223372036854775808]"),
            R"("nulls":0,"distinct":2,"nans":null,"falses":null,"trues":null,)"
            R"("min":9223372036854775808,"max":18446744073709551615,"mean":13835058055282163712,)"
            R"("quantiles":{"p5":9223372036854775808,"p25":9223372036854775808,)"
            R"("p50":9223372036854775808,"p75":18446744073709551615,"p95":18446744073709551615},)"
            R"("shortest":null,"longest":null,)"
            R"("histogram":{"from":9223372036854775808,"to":18446744073709551615,)"
            R"("counts":[1,0,0,0,0,0,0,0,0,0,0,1]},"approximate":[]})"
            "\n");
}

TEST_F(SummaryAsJson, OfTimesHasValuesOfTheirType) {
  EXPECT_EQ(figures_of(::arrow::date32(), "[0, 3]"),
            R"("nulls":0,"distinct":2,"nans":null,"falses":null,"trues":null,)"
            R"("min":"1970-01-01","max":"1970-01-04","mean":"1970-01-03",)"
            R"("quantiles":{"p5":"1970-01-01","p25":"1970-01-01","p50":"1970-01-01",)"
            R"("p75":"1970-01-04","p95":"1970-01-04"},"shortest":null,"longest":null,)"
            R"("histogram":{"from":"1970-01-01","to":"1970-01-04",)"
            R"("counts":[1,0,0,0,0,0,0,0,0,0,0,1]},"approximate":[]})"
            "\n");
}

TEST_F(SummaryAsJson, OfDurationsIsInTheirUnit) {
  EXPECT_EQ(figures_of(::arrow::duration(::arrow::TimeUnit::SECOND), "[7]"),
            R"("nulls":0,"distinct":1,"nans":null,"falses":null,"trues":null,"min":7,"max":7,)"
            R"("mean":7,"quantiles":{"p5":7,"p25":7,"p50":7,"p75":7,"p95":7},"shortest":null,)"
            R"("longest":null,"histogram":{"from":7,"to":7,)"
            R"("counts":[1,0,0,0,0,0,0,0,0,0,0,0]},"approximate":[]})"
            "\n");
}

TEST_F(SummaryAsJson, OfDecimalsHasTextsAndAMeanThatIsANumber) {
  EXPECT_EQ(figures_of(::arrow::decimal128(5, 2), R"(["1.50", "2.00"])"),
            R"("nulls":0,"distinct":2,"nans":null,"falses":null,"trues":null,"min":"1.50",)"
            R"("max":"2.00","mean":1.75,"quantiles":{"p5":"1.50","p25":"1.50","p50":"1.50",)"
            R"("p75":"2.00","p95":"2.00"},"shortest":null,"longest":null,)"
            R"("histogram":{"from":"1.50","to":"2.00","counts":[1,0,0,0,0,0,0,0,0,0,0,1]},)"
            R"("approximate":[]})"
            "\n");
}

TEST_F(SummaryAsJson, OfTextsHasTheWholeBounds) {
  const std::string long_text(2000, 'x');
  EXPECT_EQ(figures_of(::arrow::utf8(), R"(["", "null", ")" + long_text + R"("])"),
            R"("nulls":0,"distinct":3,"nans":null,"falses":null,"trues":null,"min":"","max":")" +
                long_text +
                R"(","mean":null,"quantiles":null,"shortest":0,"longest":2000,"histogram":null,)"
                R"("approximate":[]})"
                "\n");
}

TEST_F(SummaryAsJson, OfBytesHasThemInHexadecimal) {
  EXPECT_EQ(figures_of(::arrow::binary(), R"(["", "AB"])"),
            R"("nulls":0,"distinct":2,"nans":null,"falses":null,"trues":null,"min":"0x",)"
            R"("max":"0x4142","mean":null,"quantiles":null,"shortest":0,"longest":2,)"
            R"("histogram":null,"approximate":[]})"
            "\n");
}

TEST_F(SummaryAsJson, NamesTheMembersThatAreApproximate) {
  std::shared_ptr<::arrow::Array> numbers;
  ::arrow::Int32Builder builder;
  for (int i = 1; i <= 100'001; ++i) ASSERT_TRUE(builder.Append(i).ok());
  ASSERT_TRUE(builder.Finish(&numbers).ok());
  const std::string figures = figures_of(numbers);
  EXPECT_NE(figures.find(R"("distinct":10000,)"), std::string::npos) << figures;
  EXPECT_NE(figures.find(R"("approximate":["distinct","quantiles","histogram"]})"),
            std::string::npos)
      << figures;
}

TEST_F(SummaryAsJson, OfAFileWithoutColumnsIsEmpty) {
  write_ipc(file_, *::arrow::Table::Make(::arrow::schema({}), ::arrow::ArrayVector{}, 0));
  EXPECT_EQ(printed("summary", file_, {"--json"}), "");
}

}  // namespace
}  // namespace numera::testing
