// A host whose string arrays set one element after another. A failure inside an element becomes the
// message of that row. The conversion recovers from a failure before the first element. A failure
// around the elements comes out as the exception itself.
//
// And the other way round: a host may convert each text when it is read, so that reading fails.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <exception>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "numera/core/to_numera.h"
#include "numera/extras/encode/encode.h"
#include "numera/extras/inspect/inspect.h"
#include "numera/host/memory.h"
#include "tests/faults/input.h"
#include "tests/support/every_type.h"
#include "tests/support/faults.h"
#include "tests/support/host_builder.h"
#include "tests/support/recording_host.h"

namespace numera::testing {
namespace {

using io::arrow::core::to_numera;

struct Fault {};

class TextsOneByOne : public ::testing::TestWithParam<std::shared_ptr<::arrow::DataType>> {
 protected:
  TextsOneByOne() { TakeTextsAtOnce(false); }
  ~TextsOneByOne() override {
    TakeTextsAtOnce(true);
    Reset();
    EXPECT_EQ(host::memory::LiveArrays(), before_) << "host arrays left";
  }

 private:
  size_t before_ = host::memory::LiveArrays();
};

/// Fails call number `site` of a conversion. Returns the name of the call and the outcome, or an
/// empty text if there is no such call.
std::string outcome_of(const Chunks& column, size_t site) {
  Reset();
  FailCall(site, std::make_exception_ptr(Fault()));
  std::string outcome = "exception";
  try {
    const auto converted = to_numera(column);
    if (converted.ok() && !HasFailed()) return "";
    outcome = converted.ok() ? "made up for" : converted.status().message();
  } catch (const Fault&) {
  }
  return std::string(FailedCall()) + ": " + outcome;
}

TEST_P(TextsOneByOne, FailByRowInsideAnElementAndByExceptionElsewhere) {
  const Chunks column = ArrowChunks(GetParam(), {R"(["a", "é"])", R"(["b"])"});
  ASSERT_TRUE(to_numera(column).ok());  // creates the codec of the process
  std::vector<std::string> outcomes;
  for (size_t site = 0;; ++site) {
    std::string outcome = outcome_of(column, site);
    if (outcome.empty()) break;
    // Calls after the texts fail as for every type.
    if (outcomes.empty() || outcomes.back() != "hxCreateStringArrayFrom: exception") {
      outcomes.push_back(std::move(outcome));
    } else {
      EXPECT_TRUE(outcome.ends_with(": exception")) << outcome;
    }
  }

  const std::string row_0 = "Could not convert string in row 0 to UTF-16 string.\n";
  const std::string row_1 = "Could not convert string in row 1 to UTF-16 string.\n";
  EXPECT_THAT(outcomes, ::testing::ElementsAre("hxMakeStringArray: exception",             //
                                               "hxStringArray::assign_utf8: made up for",  //
                                               "hxUTF8ToUTF16::convert: " + row_0,         //
                                               "hxStringArray::set: " + row_0,             //
                                               "hxUTF8ToUTF16::convert: " + row_1,         //
                                               "hxStringArray::set: " + row_1,             //
                                               "hxStringArray::assign_utf8: made up for",  //
                                               "hxUTF8ToUTF16::convert: " + row_0,         //
                                               "hxStringArray::set: " + row_0,             //
                                               "hxCreateStringArrayFrom: exception"));
  Reset();
  EXPECT_TRUE(to_numera(column).ok());
}

INSTANTIATE_TEST_SUITE_P(Faults, TextsOneByOne,
                         ::testing::Values(::arrow::utf8(), ::arrow::large_utf8()),
                         [](const auto& type) { return type.param->name(); });

// Each text is read at least once, so each reader has at least this many calls that may throw.
constexpr FaultSites kFourReads = {.calls = 4};

class TextsRead : public ::testing::Test {
 protected:
  const hxArrayPtr texts_ = Strings({2, 2}, {u"a", u"\u00E9", std::nullopt, u"b"});
  const hxArrayPtr equal_ = Strings({2, 2}, {u"a", u"\u00E9", std::nullopt, u"b"});

  FaultSites fail_everywhere(const std::function<void(const hxArray*)>& read) const {
    const auto convert = [&] {
      read(texts_.get());
      return ::arrow::Status::OK();
    };
    return FailEverywhere(convert, [this] { return text_of(texts_.get()); });
  }
};

TEST_F(TextsRead, ArePackedAfterAFailedRead) {
  ExpectAtLeast(
      fail_everywhere([](const hxArray* texts) { EXPECT_TRUE(extras::make_readable(texts).ok()); }),
      kFourReads);
}

TEST_F(TextsRead, ArePrintedAfterAFailedRead) {
  ExpectAtLeast(fail_everywhere([](const hxArray* texts) {
                  EXPECT_EQ(extras::print(texts), "string 2x2 [\"a\" <missing>; \"\u00E9\" \"b\"]");
                }),
                kFourReads);
}

TEST_F(TextsRead, AreComparedAfterAFailedRead) {
  ExpectAtLeast(fail_everywhere([this](const hxArray* texts) {
                  EXPECT_EQ(extras::first_difference(texts, equal_.get()), std::nullopt);
                }),
                kFourReads);
}

}  // namespace
}  // namespace numera::testing
