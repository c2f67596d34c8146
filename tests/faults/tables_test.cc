// Tables, buffers and texts, in every direction: each host allocation, each host call that may
// throw and each interrupt check fails in turn.

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <utility>
#include <vector>

#include "numera/core/to_arrow.h"
#include "numera/core/to_arrow_table.h"
#include "numera/core/to_numera.h"
#include "numera/extras/encode/encode.h"
#include "numera/extras/inspect/inspect.h"
#include "numera/extras/intake/intake.h"
#include "numera/extras/own/own.h"
#include "numera/extras/parallel/parallel.h"
#include "numera/unicode/convert_utf16_to_utf8.h"
#include "tests/faults/input.h"
#include "tests/support/envelopes.h"
#include "tests/support/every_type.h"
#include "tests/support/faults.h"
#include "tests/support/host_builder.h"

namespace numera::testing {
namespace {

using ::arrow::Buffer;
using ::arrow::Status;
using io::arrow::core::to_arrow;
using io::arrow::core::to_arrow_table;
using io::arrow::core::to_numera;
using TablePtr = std::shared_ptr<::arrow::Table>;

/// Five columns that differ as much as possible, with unknown null counts; some have several
/// chunks.
TablePtr table() {
  const Chunks columns[] = {
      ArrowChunks(::arrow::float64(), {"[1, null]", "[2]"}),
      ArrowChunks(::arrow::utf8(), {R"(["a", "Zürich"])", "[null]"}),
      ArrowChunks(::arrow::dictionary(::arrow::int8(), ::arrow::utf8()),
                  {R"(["a", "b"])", R"(["c"])"}),
      ArrowChunks(::arrow::list(::arrow::binary()), {R"([["x", "y"], null])", "[[]]"}),
      ArrowChunks(::arrow::struct_({::arrow::field("ñ", ::arrow::boolean())}),
                  {R"([{"ñ": true}, null, {"ñ": false}])"}),
  };
  std::vector<Chunks> all;
  for (const Chunks& column : columns) all.push_back(uncounted(*column));
  return table_of(std::move(all));
}
constexpr size_t kColumns = 5;

// Fewest sites of converting that table, a half to four fifths of those in November 2026, which
// leaves room for changes of the library. Then there were
// - to the host: 99 allocations, 212 calls
// - to Arrow: 99 calls, with ownership 118
// - through make_readable: 183 allocations, 412 calls
constexpr FaultSites kToTheHost = {.allocations = 80, .calls = 150};
constexpr FaultSites kToArrow = {.calls = 60};
constexpr FaultSites kToArrowWithOwnership = {.allocations = 1, .calls = 60};
constexpr FaultSites kThroughEncode = {.allocations = 100, .calls = 200, .interrupts = kColumns};
/// Allocated on the thread that calls: the table, its kind, the struct array of columns, the cell
/// of names, and for each name its text in UTF-16 and its array.
constexpr FaultSites kToTheHostOnThreads = {.allocations = 4 + 2 * kColumns, .calls = 150};
/// Those of the char matrix, measured in November 2026; the other texts have more.
constexpr FaultSites kThroughTheGateway = {.allocations = 3, .calls = 6};

hxArrayPtr readable_table() {
  const hxArrayPtr written = to_numera(table()).ValueOrDie();
  return extras::make_readable(written.get()).ValueOrDie();
}

template <class Convert>
FaultSites fail_reading(const hxArray* value, const Convert& convert) {
  return fail_everywhere(convert, [value] { return text_of(value); });
}

TEST(TableFaults, ToTheHost) {
  const TablePtr input = table();
  const FaultSites sites = fail_everywhere([&input] { return to_numera(input); }, input_of(input));
  ExpectAtLeast(sites, kToTheHost);
  EXPECT_EQ(sites.interrupts, kColumns);
}

// Calls of all threads are counted together. Allocations and interrupts are counted on this thread
// alone.
TEST(TableFaults, ToTheHostOnThreads) {
  const TablePtr input = table();
  for (const size_t threads : {1U, 2U, 5U}) {
    SCOPED_TRACE(threads);
    const FaultSites sites = fail_everywhere(
        [&] { return extras::parallel_to_numera(input, threads); }, input_of(input));
    ExpectAtLeast(sites, kToTheHostOnThreads);
    EXPECT_EQ(sites.interrupts, kColumns);
  }
}

TEST(TableFaults, ToArrow) {
  const hxArrayPtr value = readable_table();
  const FaultSites sites =
      fail_reading(value.get(), [&value] { return to_arrow_table(value.get()); });
  ExpectAtLeast(sites, kToArrow);
  EXPECT_EQ(sites.interrupts, kColumns);
}

TEST(TableFaults, ToArrowWithOwnership) {
  const hxArrayPtr value = readable_table();
  const FaultSites sites = fail_reading(
      value.get(), [&value] { return extras::own_to_arrow_table(hxSharedCopy(value.get())); });
  ExpectAtLeast(sites, kToArrowWithOwnership);
  EXPECT_EQ(sites.interrupts, kColumns);
}

TEST(TableFaults, ThroughEncode) {
  const hxArrayPtr value = to_numera(table()).ValueOrDie();
  const FaultSites sites =
      fail_reading(value.get(), [&value] { return extras::make_readable(value.get()); });
  ExpectAtLeast(sites, kThroughEncode);
}

TEST(TableFaults, ThroughTheIntake) {
  const TablePtr input = table()->Slice(1);
  const auto convert = [&input]() -> ::arrow::Result<TablePtr> {
    ARROW_ASSIGN_OR_RAISE(auto taken, extras::take_in(input));
    return std::move(taken.value);
  };
  const FaultSites sites = fail_everywhere(convert, input_of(input));
  EXPECT_EQ(sites.allocations, 0U);
  EXPECT_EQ(sites.calls, kColumns) << "nothing is asked of the host but to check for interrupts";
  EXPECT_EQ(sites.interrupts, kColumns);
}

TEST(BufferFaults, ToTheHost) {
  const auto buffer = ArrowBuffer({1, 2, 3});
  const FaultSites sites = fail_everywhere([&buffer] { return to_numera(buffer); },
                                           [&buffer] { return buffer->ToString(); });
  ExpectAtLeast(sites, SitesOfMaking(to_numera(buffer).ValueOrDie()));
}

TEST(BufferFaults, ToArrow) {
  const hxArrayPtr value = BufferEnvelope({1, 2, 3});
  const FaultSites borrowed =
      fail_reading(value.get(), [&value] { return to_arrow<Buffer>(value.get()); });
  ExpectAtLeast(borrowed, SitesOfReading(value));
  const FaultSites owned = fail_reading(
      value.get(), [&value] { return extras::own_to_arrow<Buffer>(hxSharedCopy(value.get())); });
  const FaultSites reading = SitesOfReading(value);
  ExpectAtLeast(owned, {.allocations = 1, .calls = reading.calls + 1});  // and the shared copy
}

TEST(GatewayFaults, LeaveTheOutputsAsTheyWere) {
  const struct {
    const char* what;
    hxArrayPtr value;
  } cases[] = {
      {"string array", Strings({u"a", std::nullopt, u"Z\u00FCrich"})},
      {"cells", Cell({Char("a"), Char(u"Z\u00FCrich")})},
      {"char matrix", CharMatrix({2, 2}, u"a\u00FCbc")},
  };
  for (const auto& [what, value] : cases) {
    SCOPED_TRACE(what);
    // A successful run replaces the outputs of the run before.
    std::array<hxArrayPtr, 2> outputs = {Scalar<double>(1), Scalar<double>(2)};
    const auto convert = [&outputs, input = value.get()] {
      const std::array<const hxArray*, 2> before = {outputs[0].get(), outputs[1].get()};
      const hxArray* inputs = input;
      try {
        io::arrow::unicode::convertUTF16ToUTF8(2, outputs.data(), 1, &inputs);
      } catch (...) {
        EXPECT_NE(before[0], nullptr);
        EXPECT_NE(before[1], nullptr);
        EXPECT_EQ(outputs[0].get(), before[0]);
        EXPECT_EQ(outputs[1].get(), before[1]);
        throw;
      }
      return Status::OK();
    };
    const auto result = [&convert, &outputs] {
      return convert().ToString() + text_of(outputs[0]) + text_of(outputs[1]);
    };
    const FaultSites sites = FailEverywhere(convert, [&value] { return text_of(value); }, result);
    ExpectAtLeast(sites, kThroughTheGateway);
  }
}

TEST(InspectFaults, OfPrintingAndComparing) {
  const hxArrayPtr value = to_numera(table()).ValueOrDie();
  const hxArrayPtr equal = to_numera(table()).ValueOrDie();
  const auto input = [&value] { return text_of(value); };
  const FaultSites printing = FailEverywhere(
      [&value] {
        static_cast<void>(extras::print(value.get()));
        return Status::OK();
      },
      input);
  EXPECT_GE(printing.calls, 1U);
  const FaultSites comparing = FailEverywhere(
      [&value, &equal] {
        const auto difference = extras::first_difference(value.get(), equal.get());
        return difference ? Status::Invalid(*difference) : Status::OK();
      },
      input);
  EXPECT_GE(comparing.calls, 1U);
}

}  // namespace
}  // namespace numera::testing
