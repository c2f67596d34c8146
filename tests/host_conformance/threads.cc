#include <cstdint>
#include <latch>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "numera/host/string_array.h"
#include "numera/host/text_codec.h"
#include "tests/host_conformance/claims.h"

namespace numera::host_conformance {
namespace {

struct Threads : Claim {};

constexpr int kThreads = 4;
constexpr int kRounds = 500;

template <class Work>
void run_on_threads(Work work) {
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) threads.emplace_back([=] { work(i); });
  for (std::thread& thread : threads) thread.join();
}

TEST_F(Threads, WriteTheirOwnSharedCopiesOfOneArray) {
  for (int round = 0; round < kRounds; ++round) {
    std::vector<hxArrayPtr> copies;
    copies.push_back(number(-1));
    for (int i = 1; i < kThreads; ++i) copies.push_back(hxSharedCopy(copies[0].get()));
    run_on_threads([&copies](int i) {
      hxArrayPtr mine = std::move(copies[static_cast<size_t>(i)]);
      EXPECT_EQ(number_in(mine.get()), -1);
      *static_cast<double*>(hxGetData(mine.get())) = i;
      EXPECT_EQ(number_in(mine.get()), i);
    });
  }
}

TEST_F(Threads, WriteTheirOwnSharedCopiesOfOneContainer) {
  for (int round = 0; round < kRounds; ++round) {
    std::vector<hxArrayPtr> copies;
    copies.push_back(hxCreateCellArray(Dims{1, 2}));
    hxSetCell(copies[0].get(), 0, number(-1));
    hxSetCell(copies[0].get(), 1, number(-2));
    for (int i = 1; i < kThreads; ++i) copies.push_back(hxSharedCopy(copies[0].get()));
    run_on_threads([&copies](int i) {
      hxArrayPtr mine = std::move(copies[static_cast<size_t>(i)]);
      hxReplaceCell(mine.get(), 0, number(i));
      EXPECT_EQ(number_in(hxGetCell(mine.get(), 0)), i);
      EXPECT_EQ(number_in(hxGetCell(mine.get(), 1)), -2);
    });
  }
}

TEST_F(Threads, ReadAndCopyOneArrayAtOnce) {
  const hxArrayPtr cell = hxCreateCellArray(Dims{1, 2});
  hxSetCell(cell.get(), 0, number(1));
  auto strings = hxMakeStringArray(Dims{1, 1});
  strings->set(0, u"text");
  hxSetCell(cell.get(), 1, hxCreateStringArrayFrom(std::move(strings)));
  run_on_threads([&cell](int) {
    for (int i = 0; i < kRounds; ++i) {
      const hxArrayPtr copy = hxSharedCopy(cell.get());
      const hxArrayPtr part = hxSharedCopy(hxGetCell(cell.get(), 0));
      EXPECT_EQ(number_in(hxGetCell(copy.get(), 0)), 1);
      EXPECT_EQ(number_in(part.get()), 1);
      EXPECT_EQ(hxGetStringArray(hxGetCell(copy.get(), 1)).element(0), u"text");
    }
  });
}

/// A host may convert texts that were set together on demand. All first reads begin at once, of the
/// array as of its copies.
TEST_F(Threads, ReadTextsAtOnceThatWereSetTogether) {
  constexpr size_t kTexts = 100;
  const std::string cycle[] = {"z\xC3\xBC", "plain", ""};
  std::string bytes;
  std::vector<std::int32_t> offsets{0};
  for (size_t i = 0; i < kTexts; ++i) {
    bytes += cycle[i % 3];
    offsets.push_back(static_cast<std::int32_t>(bytes.size()));
  }
  const std::u16string_view expected[] = {u"z\u00FC", u"plain", u""};
  for (int round = 0; round < kRounds / 10; ++round) {
    auto strings = hxMakeStringArray(Dims{kTexts, 1});
    const auto* const data = reinterpret_cast<const std::uint8_t*>(bytes.data());
    ASSERT_EQ(strings->assign_utf8(0, offsets, data), std::nullopt);
    const hxArrayPtr array = hxCreateStringArrayFrom(std::move(strings));
    std::latch start(kThreads);
    run_on_threads([&](int) {
      const hxArrayPtr copy = hxSharedCopy(array.get());
      start.arrive_and_wait();
      for (size_t i = 0; i < kTexts; ++i) {
        EXPECT_EQ(hxGetStringArray(array.get()).element(i), expected[i % 3]);
        EXPECT_EQ(hxGetStringArray(copy.get()).element(i), expected[i % 3]);
      }
    });
  }
}

TEST_F(Threads, DestroyWhatOthersMade) {
  hxArrayPtr array;
  std::thread([&array] {
    array = hxCreateCellArray(Dims{1, 1000});
    for (size_t i = 0; i < 1000; ++i) hxSetCell(array.get(), i, number(static_cast<double>(i)));
  }).join();
  EXPECT_EQ(number_in(hxGetCell(array.get(), 999)), 999);
  std::thread([&array] { array.reset(); }).join();
}

TEST_F(Threads, ShareOneCodec) {
  const hxUTF8ToUTF16 codec("UTF-8");
  run_on_threads([&codec](int) {
    for (int i = 0; i < kRounds; ++i) EXPECT_EQ(codec.convert("z\xC3\xBC"), u"z\u00FC");
  });
}

}  // namespace
}  // namespace numera::host_conformance
