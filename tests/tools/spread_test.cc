// What a summary is made of: samples, quantiles and histograms.

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <set>

#include "tools/histogram.h"
#include "tools/sample.h"

namespace numera::testing {
namespace {

using tools::bars;
using tools::histogram;
using tools::quantile;
using tools::Sample;

Sample<int> sample_of(int count, size_t most) {
  Sample<int> sample(most);
  for (int i = 0; i < count; ++i) sample.add(i);
  return sample;
}

TEST(SampleOfValues, HasAllValuesWhileTheyFit) {
  const Sample<int> sample = sample_of(4, 4);
  EXPECT_FALSE(sample.is_partial());
  EXPECT_EQ(sample.sorted(std::greater<>()), (std::vector{3, 2, 1, 0}));
}

TEST(SampleOfValues, HasSomeOfMoreValuesAndEachOnce) {
  const Sample<int> sample = sample_of(1000, 10);
  EXPECT_TRUE(sample.is_partial());
  const std::vector<int> values = sample.sorted(std::less<>());
  EXPECT_EQ(values.size(), 10U);
  EXPECT_EQ((std::set<int>(values.begin(), values.end()).size()), 10U);
  EXPECT_LT(values.back(), 1000);
}

TEST(SampleOfValues, IsTheSameForTheSameValues) {
  EXPECT_EQ(sample_of(1000, 10).sorted(std::less<>()), sample_of(1000, 10).sorted(std::less<>()));
}

/// The quantiles of 10,000 out of a million values lie within 2 percent of the rows.
TEST(SampleOfValues, HasAboutTheQuantilesOfAllValues) {
  const std::vector<int> sorted = sample_of(1'000'000, 10'000).sorted(std::less<>());
  for (const size_t percent : {5U, 25U, 50U, 75U, 95U}) {
    EXPECT_NEAR(quantile(sorted, percent), static_cast<double>(percent) * 10'000, 20'000);
  }
}

TEST(Quantile, IsTheSmallestValueThatSoManyPercentDoNotExceed) {
  const std::vector<int> sorted = {10, 20, 30, 40};
  EXPECT_EQ(quantile(sorted, 0), 10);
  EXPECT_EQ(quantile(sorted, 5), 10);
  EXPECT_EQ(quantile(sorted, 25), 10);
  EXPECT_EQ(quantile(sorted, 26), 20);
  EXPECT_EQ(quantile(sorted, 50), 20);
  EXPECT_EQ(quantile(sorted, 75), 30);
  EXPECT_EQ(quantile(sorted, 100), 40);
}

TEST(Histogram, CountsTheNumbersInEachTwelfthOfTheRange) {
  EXPECT_EQ(histogram({0, 1, 2, 2.5, 12}, 0, 12),
            (tools::Histogram{1, 1, 2, 0, 0, 0, 0, 0, 0, 0, 0, 1}));
}

TEST(Histogram, HasABarForEachTwelfthOfTheRange) {
  EXPECT_EQ(bars(histogram({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}, 0, 12)), "▅▅▅▅▅▅▅▅▅▅▅█");
}

TEST(Histogram, DrawsEveryBucketThatIsNotEmpty) {
  std::vector<double> numbers(1000, 0);
  numbers.push_back(12);
  EXPECT_EQ(bars(histogram(numbers, 0, 12)), "█▁▁▁▁▁▁▁▁▁▁▂");
}

TEST(Histogram, OfEqualNumbersIsOneBar) {
  EXPECT_EQ(bars(histogram({7, 7, 7}, 7, 7)), "█▁▁▁▁▁▁▁▁▁▁▁");
}

TEST(Histogram, LeavesOutInfiniteNumbers) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(bars(histogram({-kInfinity, 0, 12, 12, kInfinity}, 0, 12)), "▅▁▁▁▁▁▁▁▁▁▁█");
  EXPECT_EQ(bars(histogram({kInfinity}, 0, 0)), "");
}

TEST(Histogram, OfNothingIsEmpty) { EXPECT_EQ(bars(histogram({}, 0, 0)), ""); }

TEST(Histogram, ReachesAsFarAsDoublesDo) {
  constexpr double kMost = std::numeric_limits<double>::max();
  EXPECT_EQ(bars(histogram({-kMost, 0, kMost}, -kMost, kMost)), "█▁▁▁▁▁█▁▁▁▁█");
  constexpr double kLeast = std::numeric_limits<double>::denorm_min();
  EXPECT_EQ(bars(histogram({0, kLeast}, 0, kLeast)), "█▁▁▁▁▁▁▁▁▁▁▁");
}

}  // namespace
}  // namespace numera::testing
