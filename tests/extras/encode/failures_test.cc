#include <arrow/api.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "numera/core/to_numera.h"
#include "numera/extras/encode/encode.h"
#include "numera/host/memory.h"
#include "tests/support/arrow_values.h"
#include "tests/support/envelopes.h"
#include "tests/support/faults.h"

namespace numera::testing {
namespace {

using extras::make_readable;
using io::arrow::core::to_numera;

/// The ten arrays of packed texts, and the texts while they are packed. In November 2026 there were
/// 14 for a cell and 16 for a string array.
constexpr size_t kAllocationsOfTexts = 12;
/// Half of what was measured in November 2026: the new table, and columns that are encoded anew.
constexpr size_t kAllocationsOfTheTable = 20;

FaultSites fail_encoding(const hxArrayPtr& value) {
  return FailEverywhere([&] { return make_readable(value.get()).status(); });
}

FaultSites fail_encoding(const std::shared_ptr<::arrow::DataType>& type,
                         const std::vector<std::string>& chunks) {
  SCOPED_TRACE(type->ToString());
  return fail_encoding(to_numera(ArrowChunks(type, chunks)).ValueOrDie());
}

TEST(EncodeFailures, EveryFailureOfTheHostLeavesNothingBehind) {
  using namespace ::arrow;  // NOLINT(google-build-using-namespace)
  const struct {
    std::shared_ptr<DataType> type;
    std::vector<std::string> chunks;
    size_t sites;  ///< floor of both; in November 2026, 1.3 to 2.5 times as many allocations
  } rows[] = {
      {float64(), {"[1, null]"}, 8},
      {utf8(), {R"(["a", null, "é"])"}, 12},
      {binary(), {R"(["a", null])"}, 11},
      {date32(), {"[1]"}, 13},
      {timestamp(TimeUnit::SECOND, "é"), {"[1]"}, 12},
      {dictionary(int8(), utf8()), {R"(["a"])"}, 12},
      {null(), {"[null]"}, 9},
      {list(utf8()), {R"([["a"]])", R"([["b"], null])"}, 40},
      {struct_({field("a", boolean()), field("b", time32(TimeUnit::SECOND))}),
       {R"([{"a": true, "b": 1}])", R"([null])"},
       60},
      {map(utf8(), dictionary(int8(), utf8())), {R"([[["a", "x"]]])", R"([[["b", "y"]]])"}, 80},
  };
  for (const auto& row : rows) {
    const FaultSites sites = fail_encoding(row.type, row.chunks);
    EXPECT_GE(sites.allocations, row.sites) << row.type->ToString();
    EXPECT_GE(sites.calls, row.sites) << row.type->ToString();
  }
}

TEST(EncodeFailures, OrdinaryValuesLeaveNothingBehind) {
  const hxArrayPtr strings = Strings({1, 2}, {u"a", std::nullopt});
  EXPECT_GE(fail_encoding(strings).allocations, kAllocationsOfTexts);
  const hxArrayPtr texts = Cell({1, 2}, {Char("a"), Char("é")});
  EXPECT_GE(fail_encoding(texts).allocations, kAllocationsOfTexts);
  const hxArrayPtr bytes = Cell({Column<std::uint8_t>({1})});
  ExpectAtLeast(fail_encoding(bytes), SitesOfMaking(make_readable(bytes.get()).ValueOrDie()));
  const hxArrayPtr truth = Logical({true});
  ExpectAtLeast(fail_encoding(truth), SitesOfMaking(make_readable(truth.get()).ValueOrDie()));
}

TEST(EncodeFailures, TablesLeaveNothingBehind) {
  const auto table = ::arrow::Table::Make(
      ::arrow::schema({::arrow::field("a", ::arrow::int8()), ::arrow::field("b", ::arrow::utf8())}),
      {ArrowArray(::arrow::int8(), "[1]"), ArrowArray(::arrow::utf8(), R"(["x"])")});
  const hxArrayPtr written = to_numera(table).ValueOrDie();
  EXPECT_GE(fail_encoding(written).allocations, kAllocationsOfTheTable);
}

TEST(EncodeFailures, RefusalsLeaveNothingBehind) {
  const hxArrayPtr value =
      to_numera(ArrowChunks(::arrow::list(::arrow::utf8()), {R"([["a"]])", R"([["b"]])"}))
          .ValueOrDie();
  const hxArray* const data = hxGetField(value.get(), 0, "Data");
  hxSetField(const_cast<hxArray*>(data), 1, "StartOffsets", Column<std::int32_t>({0, 9}));
  const size_t before = host::memory::LiveArrays();
  EXPECT_EQ(make_readable(value.get()).status().ToString(),
            "Invalid: .Data(1).StartOffsets: found offset 9 at index 1, expected offsets from 0 to "
            "1 that never decrease.");
  EXPECT_EQ(host::memory::LiveArrays(), before);
}

TEST(EncodeFailures, AnInterruptStopsATableBetweenColumns) {
  const auto column = ArrowArray(::arrow::int8(), "[1]");
  const auto field = [](const char* name) { return ::arrow::field(name, ::arrow::int8()); };
  const auto table = ::arrow::Table::Make(::arrow::schema({field("a"), field("b"), field("c")}),
                                          {column, column, column});
  const hxArrayPtr written = to_numera(table).ValueOrDie();
  size_t checks = 0;
  host::memory::SetInterruptCheck([&] {
    if (++checks == 2) throw host::memory::InterruptException();
  });
  EXPECT_THROW(static_cast<void>(make_readable(written.get())), host::memory::InterruptException);
  host::memory::SetInterruptCheck({});
  EXPECT_EQ(checks, 2U);
}

}  // namespace
}  // namespace numera::testing
