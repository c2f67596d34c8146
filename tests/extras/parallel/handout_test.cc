#include "numera/extras/parallel/handout.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace numera::extras::parallel {
namespace {

using ::arrow::Status;

Failure exception_of(const char* text) {
  return {Status::OK(), std::make_exception_ptr(std::runtime_error(text))};
}

TEST(Handout, GivesPiecesInOrder) {
  Handout handout(2);
  handout.give();
  handout.give();
  EXPECT_EQ(handout.take(), 0U);
  EXPECT_EQ(handout.take(), 1U);
}

TEST(Handout, LetsEverythingBeTakenThatWasGivenBeforeItCloses) {
  Handout handout(2);
  handout.give();
  handout.close();
  EXPECT_EQ(handout.take(), 0U);
  EXPECT_EQ(handout.take(), std::nullopt);
}

TEST(Handout, WantsNothingMoreAfterAFailure) {
  Handout handout(2);
  handout.give();
  handout.give();
  EXPECT_TRUE(handout.take());
  handout.fail(0, {Status::Invalid("0"), nullptr});
  EXPECT_FALSE(handout.wait_for_room());
  EXPECT_EQ(handout.take(), std::nullopt);
}

TEST(Handout, StillGivesWhatComesBeforeTheFailure) {
  Handout handout(2);
  handout.give();
  handout.give();
  handout.fail(1, {Status::Invalid("1"), nullptr});
  EXPECT_EQ(handout.take(), 0U);
  EXPECT_EQ(handout.take(), std::nullopt);
}

TEST(Handout, KeepsTheFailureOfTheLowestPiece) {
  const auto failure = [](size_t piece) {
    return Failure{Status::Invalid(std::to_string(piece)), nullptr};
  };
  for (const auto& [first, second] : {std::pair<size_t, size_t>{2, 5}, {5, 2}}) {
    Handout handout(1);
    handout.fail(first, failure(first));
    handout.fail(second, failure(second));
    EXPECT_EQ(handout.outcome(), Status::Invalid("2"));
  }
}

TEST(Handout, ThrowsTheExceptionOfTheLowestPiece) {
  Handout handout(1);
  handout.fail(3, {Status::Invalid("3"), nullptr});
  handout.fail(1, exception_of("1"));
  handout.fail(2, exception_of("2"));
  EXPECT_THROW(
      {
        try {
          static_cast<void>(handout.outcome());
        } catch (const std::runtime_error& error) {
          EXPECT_STREQ(error.what(), "1");
          throw;
        }
      },
      std::runtime_error);
}

TEST(Handout, PrefersALowerStatusToAnException) {
  Handout handout(1);
  handout.fail(3, exception_of("3"));
  handout.fail(1, {Status::Invalid("1"), nullptr});
  EXPECT_EQ(handout.outcome(), Status::Invalid("1"));
}

TEST(Handout, OfWhatSucceededIsOk) {
  Handout handout(1);
  handout.give();
  EXPECT_TRUE(handout.take());
  EXPECT_EQ(handout.outcome(), Status::OK());
}

}  // namespace
}  // namespace numera::extras::parallel
