// Summaries of numbers, times and decimals.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/tools/summary.h"

namespace numera::testing {
namespace {

class SummaryOfNumbers : public Summary {};

TEST_F(SummaryOfNumbers, OfIntegersAbove2To53HasExactBounds) {
  EXPECT_EQ(of(::arrow::int64(), "[9223372036854775807, -9223372036854775808, 9007199254740993]"),
            "                              c\n"
            "                          int64\n"
            "nulls                         0\n"
            "distinct                      3\n"
            "min        -9223372036854775808\n"
            "5 %        -9223372036854775808\n"
            "25 %       -9223372036854775808\n"
            "50 %           9007199254740993\n"
            "75 %        9223372036854775807\n"
            "95 %        9223372036854775807\n"
            "max         9223372036854775807\n"
            "mean                 3.0024e+15\n"
            "histogram          █▁▁▁▁▁█▁▁▁▁█\n"
            "\n"
            "3 rows\n");
}

TEST_F(SummaryOfNumbers, OfUnsignedIntegersHasExactBounds) {
  const std::string printed = of(::arrow::uint64(), "[18446744073709551615, 9223372036854775808]");
  EXPECT_EQ(line_that_starts(printed, "min"), "min         9223372036854775808");
  EXPECT_EQ(line_that_starts(printed, "max"), "max        18446744073709551615");
}

TEST_F(SummaryOfNumbers, CountsNaNApart) {
  EXPECT_EQ(of(::arrow::float64(), "[NaN, 1, NaN, 2.5, null]"),
            "                      c\n"
            "                 double\n"
            "nulls                 1\n"
            "distinct              3\n"
            "NaN                   2\n"
            "min                   1\n"
            "5 %                   1\n"
            "25 %                  1\n"
            "50 %                  1\n"
            "75 %                2.5\n"
            "95 %                2.5\n"
            "max                 2.5\n"
            "mean               1.75\n"
            "histogram  █▁▁▁▁▁▁▁▁▁▁█\n"
            "\n"
            "5 rows\n");
}

TEST_F(SummaryOfNumbers, OfNaNAloneHasNoBounds) {
  EXPECT_EQ(of(::arrow::float32(), "[NaN, NaN]"),
            "               c\n"
            "           float\n"
            "nulls          0\n"
            "distinct       1\n"
            "NaN            2\n"
            "\n"
            "2 rows\n");
}

TEST_F(SummaryOfNumbers, PutsInfinitiesAtTheEndsAndIntoNoBucket) {
  EXPECT_EQ(of(::arrow::float64(), "[Inf, 1, 2, -Inf, 3]"),
            "                      c\n"
            "                 double\n"
            "nulls                 0\n"
            "distinct              5\n"
            "min                -inf\n"
            "5 %                -inf\n"
            "25 %                  1\n"
            "50 %                  2\n"
            "75 %                  3\n"
            "95 %                inf\n"
            "max                 inf\n"
            "mean                NaN\n"
            "histogram  █▁▁▁▁▁█▁▁▁▁█\n"
            "\n"
            "5 rows\n");
}

TEST_F(SummaryOfNumbers, TellsZeroFromMinusZero) {
  const std::string printed = of(::arrow::float64(), "[0.0, -0.0, 0.0]");
  EXPECT_EQ(line_that_starts(printed, "distinct"), "distinct              2");
  EXPECT_EQ(line_that_starts(printed, "min"), "min                  -0");
  EXPECT_EQ(line_that_starts(printed, "max"), "max                   0");
}

TEST_F(SummaryOfNumbers, OfNumbersFarApartDoesNotOverflow) {
  const std::string printed = of(::arrow::float64(), "[1.7e308, -1.7e308, 1.7e308]");
  EXPECT_EQ(line_that_starts(printed, "mean"), "mean       5.66667e+307");
  EXPECT_EQ(line_that_starts(printed, "histogram"), "histogram  ▅▁▁▁▁▁▁▁▁▁▁█");
}

TEST_F(SummaryOfNumbers, OfTimesHasTimes) {
  EXPECT_EQ(of(::arrow::timestamp(::arrow::TimeUnit::MILLI, "UTC"), "[0, 86400000, null, 500]"),
            "                                  c\n"
            "                 timestamp[ms, UTC]\n"
            "nulls                             1\n"
            "distinct                          3\n"
            "min            1970-01-01 00:00:00Z\n"
            "5 %            1970-01-01 00:00:00Z\n"
            "25 %           1970-01-01 00:00:00Z\n"
            "50 %       1970-01-01 00:00:00.500Z\n"
            "75 %           1970-01-02 00:00:00Z\n"
            "95 %           1970-01-02 00:00:00Z\n"
            "max            1970-01-02 00:00:00Z\n"
            "mean       1970-01-01 08:00:00.167Z\n"
            "histogram              █▁▁▁▁▁▁▁▁▁▁▅\n"
            "\n"
            "4 rows\n");
}

TEST_F(SummaryOfNumbers, OfTimesHasAMeanInTheirUnit) {
  const std::pair<std::shared_ptr<::arrow::DataType>, const char*> cases[] = {
      {::arrow::date32(), "mean         1970-01-03"},
      {::arrow::time32(::arrow::TimeUnit::SECOND), "mean           00:00:02"},
      {::arrow::time64(::arrow::TimeUnit::NANO), "mean       00:00:00.000000002"},
      {::arrow::duration(::arrow::TimeUnit::MICRO), "mean               2 us"}};
  for (const auto& [type, mean] : cases) {
    EXPECT_EQ(line_that_starts(of(type, "[1, 2, 4]"), "mean"), mean);
  }
}

TEST_F(SummaryOfNumbers, OfTimesInNanosecondsHasAnExactMean) {
  EXPECT_EQ(line_that_starts(of(::arrow::timestamp(::arrow::TimeUnit::NANO),
                                "[1700000000123456789, 1700000000123456789]"),
                             "mean"),
            "mean       2023-11-14 22:13:20.123456789");
}

TEST_F(SummaryOfNumbers, OfTimesHasAMeanWithinTheirRange) {
  EXPECT_EQ(line_that_starts(of(::arrow::duration(::arrow::TimeUnit::NANO),
                                "[9223372036854775807, 9223372036854775807]"),
                             "mean"),
            "mean       9223372036854775807 ns");
  EXPECT_EQ(line_that_starts(of(::arrow::duration(::arrow::TimeUnit::NANO),
                                "[-9223372036854775808, -9223372036854775808]"),
                             "mean"),
            "mean       -9223372036854775808 ns");
}

TEST_F(SummaryOfNumbers, OfDecimalsHasAllTheirDigits) {
  for (const auto& type : {::arrow::decimal128(38, 2), ::arrow::decimal256(60, 2)}) {
    const std::string printed = of(type, R"(["-99999999999999999999999999.99", "1.25", null])");
    EXPECT_EQ(line_that_starts(printed, "min"), "min        -99999999999999999999999999.99");
    EXPECT_EQ(line_that_starts(printed, "max"), "max                                  1.25");
    EXPECT_EQ(line_that_starts(printed, "distinct"), "distinct                                2");
  }
  for (const auto& type : {::arrow::decimal32(9, 2), ::arrow::decimal64(18, 2)}) {
    EXPECT_THAT(of(type, R"(["-2.50", "1.25"])"), ::testing::HasSubstr("-2.50\n"));
  }
}

}  // namespace
}  // namespace numera::testing
