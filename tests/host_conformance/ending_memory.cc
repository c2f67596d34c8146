#include <cstdint>
#include <new>
#include <optional>
#include <string_view>
#include <utility>

#include "numera/host/string_array.h"
#include "tests/host_conformance/claims.h"

namespace numera::host_conformance {
namespace {

/// Fails each allocation of a call in turn. No partial result may be left, and existing values must
/// not change.
struct EndingMemory : Claim {
  void SetUp() override {
    if (host_under_test().fail_allocation_after == nullptr) {
      GTEST_SKIP() << "the host gives no way to fail an allocation";
    }
  }
  ~EndingMemory() override {
    if (host_under_test().clear_allocation_failure != nullptr) {
      host_under_test().clear_allocation_failure();
    }
  }
};

struct Creation {
  const char* name;
  hxArrayPtr (*make)();
};

hxArrayPtr make_texts() {
  auto strings = hxMakeStringArray(Dims{2, 1});
  strings->set(0, u"a text that is longer than what fits into a small object of some kind");
  strings->set_missing(1);
  return hxCreateStringArrayFrom(std::move(strings));
}

constexpr Creation kCreations[] = {
    {"numbers", [] { return zeros({3, 1}); }},
    {"many numbers", [] { return zeros({100000, 1}); }},
    {"unwritten numbers",
     [] {
       return hxCreateUninitNumericArray(Dims{3, 1}, hxClassID::Single, hxComplexity::Complex);
     }},
    {"cells", [] { return hxCreateCellArray(Dims{2, 2}); }},
    {"a struct", [] { return hxCreateStructArray(Dims{2, 1}, Names{"x", "y"}); }},
    {"narrow text", [] { return hxCreateCharArray("text", 4); }},
    {"wide text", [] { return hxCreateCharArray(u"text", 4); }},
    {"texts", make_texts},
};

TEST_F(EndingMemory, LeavesNothingOfWhatIsMade) {
  const HostUnderTest& host = host_under_test();
  for (const Creation& creation : kCreations) {
    SCOPED_TRACE(creation.name);
    const size_t before = live_arrays();
    size_t failures = 0;
    for (bool made = false; !made; failures += made ? 0 : 1) {
      ASSERT_LT(failures, 1000U);
      host.fail_allocation_after(failures);
      try {
        made = creation.make() != nullptr;
      } catch (const std::bad_alloc&) {
        expect_live_arrays(before);
      }
      host.clear_allocation_failure();
    }
    EXPECT_GE(failures, 1U);
  }
}

TEST_F(EndingMemory, LeavesASharedContainerAsItWasAndDestroysTheValue) {
  const HostUnderTest& host = host_under_test();
  const hxArrayPtr cell = hxCreateCellArray(Dims{1, 2});
  hxSetCell(cell.get(), 0, number(1));
  const hxArrayPtr copy = hxSharedCopy(cell.get());
  const size_t before = live_arrays();
  for (size_t failures = 0;; ++failures) {
    ASSERT_LT(failures, 1000U);
    hxArrayPtr value = number(2);
    host.fail_allocation_after(failures);
    try {
      hxReplaceCell(copy.get(), 0, std::move(value));
      host.clear_allocation_failure();
      break;
    } catch (const std::bad_alloc&) {
      host.clear_allocation_failure();
      expect_live_arrays(before);
      EXPECT_EQ(number_in(hxGetCell(copy.get(), 0)), 1);
      EXPECT_EQ(number_in(hxGetCell(cell.get(), 0)), 1);
    }
  }
  EXPECT_EQ(number_in(hxGetCell(copy.get(), 0)), 2);
  EXPECT_EQ(number_in(hxGetCell(cell.get(), 0)), 1);
}

TEST_F(EndingMemory, IsNotWhatReadingNeeds) {
  const HostUnderTest& host = host_under_test();
  const hxArrayPtr point = hxCreateStructArray(Dims{1, 1}, Names{"x"});
  hxSetField(point.get(), 0, "x", number(1));
  const hxArrayPtr texts = make_texts();
  host.fail_allocation_after(0);
  EXPECT_EQ(number_in(hxGetFieldChecked(point.get(), 0, "x")), 1);
  EXPECT_EQ(hxGetFieldNumber(point.get(), "x"), 0);
  EXPECT_EQ(hxGetDimensions(point.get()).size(), 2U);
  EXPECT_EQ(hxGetStringArray(texts.get()).element(1), std::nullopt);
  host.clear_allocation_failure();
}

TEST_F(EndingMemory, LetsATextBeReadAgain) {
  const HostUnderTest& host = host_under_test();
  constexpr std::int32_t kOffsets[] = {0, 3, 8};
  const std::u16string_view expected[] = {u"z\u00FC", u"plain"};
  const auto* const bytes = reinterpret_cast<const std::uint8_t*>("z\xC3\xBCplain");
  for (size_t i = 0; i < 2; ++i) {
    for (size_t count = 0; count < 3; ++count) {
      auto strings = hxMakeStringArray(Dims{2, 1});
      ASSERT_EQ(strings->assign_utf8(0, kOffsets, bytes), std::nullopt);
      const hxArrayPtr array = hxCreateStringArrayFrom(std::move(strings));
      host.fail_allocation_after(count);
      try {
        EXPECT_EQ(hxGetStringArray(array.get()).element(i), expected[i]);
      } catch (const std::bad_alloc&) {  // a host that converts on demand
      }
      host.clear_allocation_failure();
      EXPECT_EQ(texts_of(hxGetStringArray(array.get())), Texts({u"z\u00FC", u"plain"}));
    }
  }
}

TEST_F(EndingMemory, IsAFailureOnceOnly) {
  host_under_test().fail_allocation_after(0);
  EXPECT_THROW(zeros({1, 1}), std::bad_alloc);
  EXPECT_NO_THROW(zeros({1, 1}));
}

}  // namespace
}  // namespace numera::host_conformance
