#include <gtest/gtest.h>

#include <cstdint>
#include <memory>

#include "numera/core/to_arrow.h"
#include "numera/core/to_numera.h"
#include "tests/support/arrow_values.h"
#include "tests/support/envelopes.h"
#include "tests/support/faults.h"
#include "tests/support/host_builder.h"
#include "tests/support/host_matchers.h"
#include "tests/support/other_device.h"

namespace numera::io::arrow::core {
namespace {

using namespace numera::testing;
using ::arrow::Status;

/// The sites of making the struct, its kind and the bytes. The bytes are looked at to be written,
/// and the struct gets a shared copy of them.
constexpr FaultSites kFewestSites = {.allocations = 4, .calls = 7};

TEST(ToNumeraBuffer, CopiesTheBytes) {
  const hxArrayPtr expected = WrittenBuffer({1, 2, 255});
  const auto buffer = ArrowBuffer({1, 2, 255});
  const hxArrayPtr actual = to_numera(buffer).ValueOrDie();
  EXPECT_TRUE(SameHostValue(actual.get(), expected.get()));
  const hxArray* values = hxGetField(actual.get(), 0, "Values");
  EXPECT_NE(hxGetData(values), buffer->data());
  EXPECT_FALSE(hxIsDataShared(values));
}

TEST(ToNumeraBuffer, TakesNullAsAnEmptyBuffer) {
  const hxArrayPtr expected = WrittenBuffer({});
  for (const auto& buffer : {std::shared_ptr<::arrow::Buffer>(), ArrowBuffer({})}) {
    EXPECT_TRUE(SameHostValue(to_numera(buffer).ValueOrDie().get(), expected.get()));
  }
}

TEST(ToNumeraBuffer, RefusesBytesThatCannotBeRead) {
  const std::uint8_t byte = 0;
  const std::shared_ptr<::arrow::Buffer> buffers[] = {
      BufferOfOtherDevice(4),
      std::make_shared<::arrow::Buffer>(static_cast<const std::uint8_t*>(nullptr), 4),
      std::make_shared<::arrow::Buffer>(&byte, -1)};
  for (const auto& buffer : buffers) {
    EXPECT_EQ(
        to_numera(buffer).status(),
        Status::Invalid("Buffer: found bytes that cannot be read here, expected main memory."));
  }
}

TEST(ToNumeraBuffer, ReadsBackWhatToArrowMade) {
  const hxArrayPtr encoded = BufferEnvelope({9, 8, 7});
  const auto buffer = to_arrow<::arrow::Buffer>(encoded.get()).ValueOrDie();
  const hxArrayPtr expected = WrittenBuffer({9, 8, 7});
  EXPECT_TRUE(SameHostValue(to_numera(buffer).ValueOrDie().get(), expected.get()));
}

TEST(ToNumeraBuffer, LeavesNothingBehindWhereverItFails) {
  const auto buffer = ArrowBuffer({1, 2});
  ExpectAtLeast(FailEverywhere([&buffer] { return to_numera(buffer).status(); }), kFewestSites);
}

}  // namespace
}  // namespace numera::io::arrow::core
