#include "tests/support/recording_host.h"

#include <gmock/gmock.h>

#include <array>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <utility>

#include "numera/host/string_array.h"
#include "numera/host/text_codec.h"
#include "tests/host/host_test_support.h"

namespace numera::testing {
namespace {

using host::memory::Dims;
using host::memory::LiveArrays;
using host::memory::Names;
using host::memory::number;
using host::memory::thrown;
using host::memory::zeros;
using ::testing::ElementsAre;

struct RecordingHost : ::testing::Test {
  RecordingHost() { Reset(); }
  ~RecordingHost() override { Reset(); }
};

TEST_F(RecordingHost, CountsTheCallsOfEachOperation) {
  {
    const hxArrayPtr array = hxCreateStructArray(Dims{1, 1}, Names{"x"});
    hxSetField(array.get(), 0, "x", number(1));
    hxGetField(array.get(), 0, "x");
    hxGetField(array.get(), 0, "y");
  }
  EXPECT_EQ(Calls("hxCreateStructArray"), 1u);
  EXPECT_EQ(Calls("hxCreateNumericArray"), 1u);
  EXPECT_EQ(Calls("hxGetData"), 1u);
  EXPECT_EQ(Calls("hxGetData const"), 0u);
  EXPECT_EQ(Calls("hxSetField"), 1u);
  EXPECT_EQ(Calls("hxGetField"), 2u);
  EXPECT_EQ(Calls("hxDestroyArray"), 1u);
  EXPECT_EQ(TotalThrowingCalls(), 4u);
  Reset();
  EXPECT_EQ(Calls("hxGetField"), 0u);
  EXPECT_EQ(TotalThrowingCalls(), 0u);
}

TEST_F(RecordingHost, CountsTheCallsOfStringArraysAndCodecs) {
  const auto strings = hxMakeStringArray(Dims{2, 1});
  strings->set(0, u"a");
  strings->set_missing(1);
  EXPECT_EQ(strings->element(0), u"a");
  EXPECT_EQ(strings->element(1), std::nullopt);
  const hxUTF8ToUTF16 codec("UTF-8");
  EXPECT_EQ(codec.convert("a"), u"a");
  EXPECT_EQ(Calls("hxStringArray::set"), 1u);
  EXPECT_EQ(Calls("hxStringArray::set_missing"), 1u);
  EXPECT_EQ(Calls("hxStringArray::element"), 2u);
  EXPECT_EQ(Calls("hxUTF8ToUTF16"), 1u);
  EXPECT_EQ(Calls("hxUTF8ToUTF16::convert"), 1u);
}

TEST_F(RecordingHost, KnowsNoOperationOfAnotherName) {
  EXPECT_EQ(thrown<std::invalid_argument>([] { Calls("hxSetFeild"); }), "no operation hxSetFeild");
}

TEST_F(RecordingHost, ListsTheArraysThatAreMade) {
  const hxArrayPtr column = zeros({3, 1}, hxClassID::Int8);
  const hxArrayPtr copy = hxSharedCopy(column.get());
  const hxArrayPtr strings = hxCreateStringArrayFrom(hxMakeStringArray(Dims{2, 1}));
  EXPECT_THAT(Created(),
              ElementsAre(Creation{"hxCreateNumericArray", hxClassID::Int8, {3, 1}},
                          Creation{"hxSharedCopy", hxClassID::Int8, {3, 1}},
                          Creation{"hxMakeStringArray", hxClassID::Object, {2, 1}},
                          Creation{"hxCreateStringArrayFrom", hxClassID::Object, {2, 1}}));
}

TEST_F(RecordingHost, FailsTheChosenCallOnceAndLosesNothing) {
  const size_t before = LiveArrays();
  const auto build = [] {
    const hxArrayPtr cell = hxCreateCellArray(Dims{1, 1});
    hxSetCell(cell.get(), 0, zeros({1, 1}));
  };
  for (size_t k = 0; k < 3; ++k) {
    FailCall(k);
    EXPECT_FALSE(HasFailed());
    EXPECT_THROW(build(), std::bad_alloc);
    EXPECT_TRUE(HasFailed());
    EXPECT_EQ(LiveArrays(), before);
    EXPECT_NO_THROW(build());
  }
  FailCall(3);
  EXPECT_NO_THROW(build());
  EXPECT_FALSE(HasFailed());
}

TEST_F(RecordingHost, NamesTheCallThatFailed) {
  FailCall(1);
  const hxArrayPtr cell = hxCreateCellArray(Dims{1, 1});
  EXPECT_EQ(FailedCall(), "");
  EXPECT_THROW(hxSetCell(cell.get(), 0, hxArrayPtr()), std::bad_alloc);
  hxGetCellChecked(cell.get(), 0);
  EXPECT_EQ(FailedCall(), "hxSetCell");
}

TEST_F(RecordingHost, TellsThatACallForAllTextsThrew) {
  constexpr std::array<std::int32_t, 2> kOffsets = {0, 1};
  constexpr std::array<std::uint8_t, 1> kBytes = {'a'};
  const auto strings = hxMakeStringArray(Dims{1, 1});
  strings->assign_utf8(0, kOffsets, kBytes.data());
  EXPECT_FALSE(TextsAtOnceThrew());
  FailCall(0);
  EXPECT_THROW(strings->assign_utf8(0, kOffsets, kBytes.data()), std::bad_alloc);
  EXPECT_TRUE(TextsAtOnceThrew());
  Reset();
  EXPECT_FALSE(TextsAtOnceThrew());
}

TEST_F(RecordingHost, LetsStringArraysSetOneElementAfterAnotherOnDemand) {
  constexpr std::array<std::int32_t, 3> kOffsets = {0, 1, 2};
  constexpr std::array<std::uint8_t, 2> kBytes = {'a', 'b'};
  for (const bool at_once : {true, false}) {
    Reset();
    TakeTextsAtOnce(at_once);
    const auto strings = hxMakeStringArray(Dims{2, 1});
    TakeTextsAtOnce(true);
    EXPECT_EQ(strings->assign_utf8(0, kOffsets, kBytes.data()), std::nullopt);
    EXPECT_EQ(strings->element(1), u"b");
    EXPECT_EQ(Calls("hxStringArray::assign_utf8"), 1U);
    EXPECT_EQ(Calls("hxStringArray::set"), at_once ? 0U : 2U);
  }
}

TEST_F(RecordingHost, ThrowsTheGivenError) {
  FailCall(0, std::make_exception_ptr(std::runtime_error("chosen")));
  EXPECT_EQ(thrown<std::runtime_error>([] { hxThrowIfInterruptPending(); }), "chosen");
}

}  // namespace
}  // namespace numera::testing
