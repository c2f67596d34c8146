// Columns of every type, and one of each converter in every nesting: each host allocation and each
// host call that may throw fails in turn, in every direction that a column can take.

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "numera/core/arrow_types.h"
#include "numera/core/to_arrow.h"
#include "numera/core/to_numera.h"
#include "numera/extras/encode/encode.h"
#include "numera/extras/intake/intake.h"
#include "numera/extras/own/own.h"
#include "tests/faults/input.h"
#include "tests/support/every_type.h"
#include "tests/support/faults.h"

namespace numera::testing {
namespace {

using ::arrow::Array;
using io::arrow::core::to_arrow;
using io::arrow::core::to_numera;

/// The sites of all columns together, and the fewest sites of one column.
struct Reached {
  FaultSites total;
  FaultSites least = {1'000'000, 1'000'000, 1'000'000};

  void add(const FaultSites& sites) {
    total.allocations += sites.allocations;
    total.calls += sites.calls;
    total.interrupts += sites.interrupts;
    least.allocations = std::min(least.allocations, sites.allocations);
    least.calls = std::min(least.calls, sites.calls);
  }
};

// What each direction has to reach, so that a test fails if it no longer injects failures or
// leaves columns out. Measured in November 2026 with 80 columns:
//
//                          allocations: least, total    calls: least, total
//   to the host                          8     2615               18   5597
//   to Arrow                             3      530                9   1933
//   to Arrow with ownership              4      610               10   2013
//   through make_readable               13     6087               21  13909
//   through the intake                   8     2605               18   5582
//
// The least of a column to the host are its eight arrays: the envelope, its four values and the
// three of "Valid". A call creates each, and a call stores each but the envelope. The other floors
// leave room for changes: a third to a half of the measured least, about four fifths of the totals.
constexpr Reached kColumnsToTheHost = {.total = {2000, 4500}, .least = {8, 15}};
constexpr Reached kColumnsToArrow = {.total = {0, 1500}, .least = {0, 5}};
constexpr Reached kColumnsToArrowWithOwnership = {.total = {0, 1600}, .least = {1, 5}};
constexpr Reached kColumnsThroughEncode = {.total = {5000, 12000}, .least = {5, 8}};
constexpr Reached kColumnsThroughTheIntake = kColumnsToTheHost;

void expect_at_least(const Reached& reached, const Reached& floor) {
  ExpectAtLeast(reached.least, floor.least);
  ExpectAtLeast(reached.total, floor.total);
  EXPECT_EQ(reached.total.interrupts, 0U);
}

/// Whether the type is tested in nested types too: one type per converter.
bool is_nested_too(const ::arrow::DataType& type) {
  switch (type.id()) {
    case ::arrow::Type::NA:
    case ::arrow::Type::BOOL:
    case ::arrow::Type::INT32:
    case ::arrow::Type::STRING:
    case ::arrow::Type::BINARY:
    case ::arrow::Type::DATE32:
    case ::arrow::Type::TIMESTAMP:
    case ::arrow::Type::DICTIONARY:
    case ::arrow::Type::STRUCT:
      return true;
    default:
      return false;
  }
}

template <class Visit>
Reached for_every_column(const Visit& visit) {
  Reached reached;
  std::set<::arrow::Type::type> nested;
  for (const ColumnType& one : column_types()) {
    std::vector<Chunks> columns = {plain_column(one)};
    if (is_nested_too(*one.type) && nested.insert(one.type->id()).second) {
      for (Chunks& column : nested_columns(one)) columns.push_back(std::move(column));
    }
    for (const Chunks& column : columns) {
      SCOPED_TRACE(column->type()->ToString());
      reached.add(visit(uncounted(*column)));
    }
  }
  return reached;
}

template <class Visit>
Reached for_every_readable_value(const Visit& visit) {
  return for_every_column([&visit](const Chunks& column) {
    const hxArrayPtr written = to_numera(column).ValueOrDie();
    const hxArrayPtr readable = extras::make_readable(written.get()).ValueOrDie();
    return visit(readable.get());
  });
}

TEST(ColumnFaults, AreTriedOnEveryTypeThatReachesTheHost) {
  std::set<::arrow::Type::type> tried;
  for (const ColumnType& one : column_types()) tried.insert(one.type->id());
  for (int id = 0; id < ::arrow::Type::MAX_ID; ++id) {
    const auto type = static_cast<::arrow::Type::type>(id);
    EXPECT_EQ(tried.contains(type), io::arrow::core::arrow_type_row(type).writer != nullptr) << id;
  }
}

TEST(ColumnFaults, ToTheHost) {
  const Reached reached = for_every_column([](const Chunks& column) {
    return fail_everywhere([&column] { return to_numera(column); }, input_of(column));
  });
  expect_at_least(reached, kColumnsToTheHost);
}

TEST(ColumnFaults, ToArrow) {
  const Reached reached = for_every_readable_value([](const hxArray* value) {
    return fail_everywhere([value] { return to_arrow<Array>(value); },
                           [value] { return text_of(value); });
  });
  expect_at_least(reached, kColumnsToArrow);
}

TEST(ColumnFaults, ToArrowWithOwnership) {
  const Reached reached = for_every_readable_value([](const hxArray* value) {
    return fail_everywhere([value] { return extras::own_to_arrow<Array>(hxSharedCopy(value)); },
                           [value] { return text_of(value); });
  });
  expect_at_least(reached, kColumnsToArrowWithOwnership);
}

TEST(ColumnFaults, ThroughEncode) {
  const Reached reached = for_every_column([](const Chunks& column) {
    const hxArrayPtr written = to_numera(column).ValueOrDie();
    return fail_everywhere([&written] { return extras::make_readable(written.get()); },
                           [&written] { return text_of(written.get()); });
  });
  expect_at_least(reached, kColumnsThroughEncode);
}

TEST(ColumnFaults, ThroughTheIntakeToTheHost) {
  const Reached reached = for_every_column([](const Chunks& whole) {
    const Chunks column = whole->Slice(1);
    const auto convert = [&column]() -> ::arrow::Result<hxArrayPtr> {
      ARROW_ASSIGN_OR_RAISE(const auto taken, extras::take_in(column));
      return to_numera(taken.value);
    };
    return fail_everywhere(convert, input_of(column));
  });
  expect_at_least(reached, kColumnsThroughTheIntake);
}

}  // namespace
}  // namespace numera::testing
