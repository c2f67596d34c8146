// The line that shows how far a command is.

#include "tools/progress.h"

#include <gtest/gtest.h>

#include <chrono>
#include <limits>
#include <vector>

namespace numera::testing {
namespace {

using tools::progress_text;

TEST(Progress, TellsRowsAndBytes) {
  EXPECT_EQ(progress_text({.rows = 2, .all_rows = 4, .bytes = 120, .all_bytes = 512}),
            "2 of 4 rows (50 %), 120 of 512 B");
}

TEST(Progress, TellsTheShareOfTheBytesWhereTheRowsAreUnknown) {
  EXPECT_EQ(progress_text({.rows = 1234, .bytes = 250'000, .all_bytes = 1'000'000}),
            "1,234 rows (25 %), 0.2 of 1.0 MB");
}

TEST(Progress, TellsWhatIsKnown) {
  EXPECT_EQ(progress_text({.rows = 7}), "7 rows");
  EXPECT_EQ(progress_text({.rows = 0, .all_rows = 0, .bytes = 0, .all_bytes = 0}),
            "0 of 0 rows, 0 of 0 B");
}

TEST(Progress, TellsTheRateAndTheTimeLeftAfterASecond) {
  EXPECT_EQ(progress_text({.rows = 1000,
                           .all_rows = 5000,
                           .bytes = 300'000'000,
                           .all_bytes = 1'600'000'000,
                           .seconds = 2.5}),
            "1,000 of 5,000 rows (20 %), 0.3 of 1.6 GB, 120.0 MB/s, 10 s left");
}

TEST(Progress, TellsNeitherBeforeThereWasAnyWork) {
  EXPECT_EQ(progress_text({.rows = 0, .all_rows = 9, .bytes = 0, .all_bytes = 90, .seconds = 60}),
            "0 of 9 rows (0 %), 0 of 90 B");
}

TEST(Progress, TellsMinutesAndHours) {
  const auto left = [](std::int64_t all) {
    const std::string text = progress_text({.rows = 1, .all_rows = all, .seconds = 1});
    return text.substr(text.find("%), ") + 4);
  };
  EXPECT_EQ(left(60), "59 s left");
  EXPECT_EQ(left(61), "1 min 0 s left");
  EXPECT_EQ(left(3600), "59 min 59 s left");
  EXPECT_EQ(left(3601), "1 h 0 min left");
  EXPECT_EQ(left(100'000), "27 h 46 min left");
}

TEST(Progress, NeverTellsMoreThanTheWhole) {
  EXPECT_EQ(progress_text({.rows = 9, .all_rows = 4, .seconds = 3}),
            "9 of 4 rows (100 %), 0 s left");
}

TEST(Progress, TakesNumbersOfAnySize) {
  constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();
  EXPECT_EQ(progress_text({.rows = 1, .all_rows = kMost, .seconds = 1e9}),
            "1 of 9,223,372,036,854,775,807 rows (0 %)");
}

TEST(Progress, IsShownAtMostTenTimesASecond) {
  tools::Pace pace;
  const tools::Pace::Time start{};
  std::vector<int> shown;
  for (const int milliseconds : {0, 1, 99, 100, 101, 199, 250, 349, 350}) {
    if (pace.is_due(start + std::chrono::milliseconds(milliseconds))) shown.push_back(milliseconds);
  }
  EXPECT_EQ(shown, (std::vector<int>{0, 100, 250, 350}));
}

}  // namespace
}  // namespace numera::testing
