#include "numera/extras/parallel/parallel.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "numera/core/to_numera.h"
#include "numera/core/util/table_error.h"
#include "numera/host/memory.h"
#include "numera/host/text_codec.h"
#include "tests/support/arrow_values.h"
#include "tests/support/every_type.h"
#include "tests/support/faults.h"
#include "tests/support/host_matchers.h"
#include "tests/support/recording_host.h"

namespace numera::testing {
namespace {

using ::arrow::Status;
using extras::parallel_to_numera;
using host::memory::LiveArrays;
using io::arrow::core::to_numera;
using io::arrow::core::util::TableErrorStatusDetail;
using TablePtr = std::shared_ptr<::arrow::Table>;
using Columns = std::vector<Chunks>;

constexpr size_t kThreadCounts[] = {0, 1, 2, 3, 7};

Chunks good() { return ArrowChunks(::arrow::int32(), {"[1, 2]"}); }
Chunks bad() { return ArrowChunks(::arrow::float16(), {}); }
Chunks text() { return ArrowChunks(::arrow::utf8(), {R"(["a", null])", R"(["Zürich"])"}); }

class Parallel : public ::testing::Test {
 protected:
  ~Parallel() override {
    host::memory::SetInterruptCheck({});
    host::memory::ClearInterrupt();
    Reset();
    EXPECT_EQ(LiveArrays(), before_) << "host arrays left";
  }

 private:
  size_t before_ = LiveArrays();
};

TEST_F(Parallel, MakesWhatTheSerialCallMakes) {
  const struct {
    const char* what;
    TablePtr table;
  } cases[] = {
      {"no columns", table_of({})},
      {"one column", table_of({text()})},
      {"no rows", table_of({ArrowChunks(::arrow::utf8(), {}), ArrowChunks(::arrow::int8(), {})})},
      {"one column ten times", table_of(Columns(10, text()))},
      {"a thousand columns", table_of(Columns(1000, good()))},
      {"every type, plain and nested", table_of_every_type()},
  };
  for (const auto& [what, table] : cases) {
    const hxArrayPtr serial = to_numera(table).ValueOrDie();
    for (const size_t threads : kThreadCounts) {
      SCOPED_TRACE(std::string(what) + " on " + std::to_string(threads) + " threads");
      const hxArrayPtr parallel = parallel_to_numera(table, threads).ValueOrDie();
      EXPECT_TRUE(SameHostValue(parallel.get(), serial.get()));
    }
  }
}

TEST_F(Parallel, RefusesWhatIsNoTableLikeTheSerialCall) {
  const auto one_column = ::arrow::schema({::arrow::field("a", ::arrow::int8())});
  const TablePtr cases[] = {
      nullptr,
      ::arrow::Table::Make(nullptr, Columns(), 0),
      ::arrow::Table::Make(one_column, Columns(), 0),
  };
  for (const TablePtr& table : cases) {
    const Status expected = to_numera(table).status();
    EXPECT_FALSE(expected.ok());
    for (const size_t threads : kThreadCounts) {
      EXPECT_EQ(parallel_to_numera(table, threads).status(), expected);
    }
  }
}

TEST_F(Parallel, ReportsTheLowestOfTheColumnsThatFail) {
  const auto short_column =
      std::make_shared<::arrow::ChunkedArray>(std::make_shared<::arrow::Int8Array>(2, nullptr));
  const TablePtr table = table_of({good(), good(), short_column, bad(), short_column, bad()});
  for (const size_t threads : kThreadCounts) {
    SCOPED_TRACE(threads);
    const Status status = parallel_to_numera(table, threads).status();
    EXPECT_EQ(status.code(), ::arrow::StatusCode::Invalid);
    EXPECT_EQ(
        status.message(),
        "Column 'c2' (index 2): Values buffer: found 0 bytes, expected enough for 2 elements.");
    const auto* detail = dynamic_cast<const TableErrorStatusDetail*>(status.detail().get());
    ASSERT_NE(detail, nullptr);
    EXPECT_EQ(detail->column_index(), 2);
    EXPECT_EQ(detail->column_name(), "c2");
    EXPECT_STREQ(detail->type_id(), "Internal");
  }
}

TEST_F(Parallel, PassesTheExceptionOfAColumnOn) {
  const auto unnamed =
      ArrowChunks(::arrow::struct_({::arrow::field("\xFF", ::arrow::int8())}), {"[null, null]"});
  for (const size_t threads : kThreadCounts) {
    EXPECT_THROW(static_cast<void>(parallel_to_numera(table_of({good(), unnamed, bad()}), threads)),
                 hxCodecError);
    EXPECT_FALSE(parallel_to_numera(table_of({good(), bad(), unnamed}), threads).ok());
  }
}

TEST_F(Parallel, ChecksForInterruptsOnceAColumnOnTheCallingThread) {
  for (const size_t threads : kThreadCounts) {
    for (const size_t count : {0U, 1U, 5U}) {
      SCOPED_TRACE(std::to_string(count) + " columns on " + std::to_string(threads) + " threads");
      size_t checks = 0;  // the check is set on this thread; checks on other threads do not count
      host::memory::SetInterruptCheck([&checks] { ++checks; });
      Reset();
      ASSERT_TRUE(parallel_to_numera(table_of(Columns(count, text())), threads).ok());
      EXPECT_EQ(checks, count);
      EXPECT_EQ(Calls("hxThrowIfInterruptPending"), count);
    }
  }
}

TEST_F(Parallel, StopsBeforeEachColumnInTurn) {
  const TablePtr table = table_of(Columns(4, text()));
  for (const size_t threads : kThreadCounts) {
    for (size_t stop = 0; stop < 4; ++stop) {
      SCOPED_TRACE(std::to_string(threads) + " threads, before " + std::to_string(stop));
      size_t checks = 0;
      host::memory::SetInterruptCheck([&checks, stop] {
        if (checks++ == stop) throw std::string("stopped");
      });
      EXPECT_THROW(static_cast<void>(parallel_to_numera(table, threads)), std::string);
      EXPECT_EQ(checks, stop + 1);
    }
  }
}

TEST_F(Parallel, HeedsAnInterruptThatTheProgramRequests) {
  host::memory::RequestInterrupt();
  EXPECT_THROW(static_cast<void>(parallel_to_numera(table_of({good(), good()}), 2)),
               host::memory::InterruptException);
}

TEST_F(Parallel, ReportsAFailureBeforeTheInterruptThatFollowsIt) {
  for (const size_t threads : kThreadCounts) {
    size_t checks = 0;
    host::memory::SetInterruptCheck([&checks] {
      if (++checks == 2) throw std::string("stopped");
    });
    EXPECT_EQ(parallel_to_numera(table_of({bad(), good()}), threads).status().code(),
              ::arrow::StatusCode::TypeError);
  }
}

// Every host allocation of the workers is inside a host call that may throw. Calls are counted on
// all threads together, allocations on the calling thread alone.
TEST_F(Parallel, LeavesNothingBehindWhereverItFails) {
  // Allocated by the calling thread: the table, its kind, the struct array of columns, the cell of
  // names and its four names. Calls of all threads: 97 in November 2026.
  constexpr FaultSites kFewestSites = {.allocations = 8, .calls = 80};
  const TablePtr table = table_of({text(), good(), text(), good()});
  for (const size_t threads : {2U, 4U}) {
    SCOPED_TRACE(threads);
    const FaultSites sites =
        FailEverywhere([&] { return parallel_to_numera(table, threads).status(); });
    ExpectAtLeast(sites, kFewestSites);
  }
}

}  // namespace
}  // namespace numera::testing
