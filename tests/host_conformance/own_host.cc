#include "examples/own_host/own_array.h"
#include "tests/host_conformance/claims.h"

namespace numera::host_conformance {

const HostUnderTest& host_under_test() {
  static const HostUnderTest host = {.live_arrays = own_host::live_arrays};
  return host;
}

namespace {

struct OwnHost : Claim {};

TEST_F(OwnHost, KeepsTheTextsOfAnArrayThatIsGivenItsOwnContent) {
  auto strings = hxMakeStringArray(Dims{1, 1});
  strings->set(0, u"text");
  const hxArrayPtr array = hxCreateStringArrayFrom(std::move(strings));
  const hxArrayPtr copy = hxSharedCopy(array.get());
  own_host::unshare(copy.get());
  EXPECT_FALSE(hxIsDataShared(copy.get()));
  EXPECT_TRUE(hxIsStringArray(copy.get()));
  EXPECT_EQ(texts_of(hxGetStringArray(copy.get())), Texts({u"text"}));
  EXPECT_EQ(texts_of(hxGetStringArray(array.get())), Texts({u"text"}));
}

}  // namespace

}  // namespace numera::host_conformance
