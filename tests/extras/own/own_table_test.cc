#include <arrow/table.h>
#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "numera/core/to_arrow_table.h"
#include "numera/core/util/table_error.h"
#include "numera/extras/own/own.h"
#include "numera/host/memory.h"
#include "tests/support/arrow_values.h"
#include "tests/support/envelopes.h"
#include "tests/support/faults.h"
#include "tests/support/host_builder.h"
#include "tests/support/recording_host.h"

namespace numera::testing {
namespace {

using extras::own_to_arrow_table;
using host::memory::LiveArrays;
using io::arrow::core::to_arrow_table;
using io::arrow::core::util::TableErrorStatusDetail;

hxArrayPtr numbers() { return Numbers<double>({1, 2}); }

/// A table with the columns "a" and "b".
hxArrayPtr table(hxArrayPtr b, hxArrayPtr names = Names({"a", "b"})) {
  return TableEnvelope(std::move(names), StructColumn(kColumnFields, {numbers(), std::move(b)}));
}

hxArrayPtr good_table() { return table(Numbers<std::int8_t>({3, 4}, {0b01})); }

const TableErrorStatusDetail* detail(const ::arrow::Status& status) {
  return dynamic_cast<const TableErrorStatusDetail*>(status.detail().get());
}

class OwnTable : public ::testing::Test {
 protected:
  ~OwnTable() override {
    host::memory::ClearInterrupt();
    host::memory::SetInterruptCheck({});
    Reset();
    EXPECT_EQ(LiveArrays(), before_) << "host arrays left";
  }

 private:
  size_t before_ = LiveArrays();
};

TEST_F(OwnTable, OutlivesTheHandleThatWasGivenAway) {
  const auto made = own_to_arrow_table(good_table()).ValueOrDie();
  ASSERT_TRUE(made->ValidateFull().ok());
  EXPECT_TRUE(made->schema()->Equals(*::arrow::schema(
      {::arrow::field("a", ::arrow::float64()), ::arrow::field("b", ::arrow::int8())})));
  EXPECT_TRUE(SameArray(*made->column(0)->chunk(0), *ArrowArray(::arrow::float64(), "[1, 2]")));
  EXPECT_TRUE(SameArray(*made->column(1)->chunk(0), *ArrowArray(::arrow::int8(), "[3, null]")));
}

TEST_F(OwnTable, LivesThroughOneColumn) {
  const auto column = own_to_arrow_table(good_table()).ValueOrDie()->column(1)->Slice(1);
  EXPECT_TRUE(SameArray(*column->chunk(0), *ArrowArray(::arrow::int8(), "[null]")));
}

TEST_F(OwnTable, FreesTheHostValueWithItsLastColumn) {
  const size_t before = LiveArrays();
  auto made = own_to_arrow_table(good_table()).ValueOrDie();
  auto column = made->column(0);
  made.reset();
  EXPECT_GT(LiveArrays(), before);
  column.reset();
  EXPECT_EQ(LiveArrays(), before);
}

TEST_F(OwnTable, WithoutColumnsIsEmpty) {
  hxArrayPtr empty = TableEnvelope(Names({}), StructColumn(kColumnFields, {}));
  EXPECT_EQ(own_to_arrow_table(std::move(empty)).ValueOrDie()->num_columns(), 0);
}

struct BadColumn {
  const char* what;
  hxArrayPtr (*make)();
  const char* type_id;
};

const BadColumn kBadColumns[] = {
    {"unknown type", [] { return table(Envelope("double", Struct({}))); }, "Internal"},
    {"unknown kind", [] { return table(KindEnvelope("map", "double", Column<double>({1, 2}))); },
     "TypeError"},
    {"complex", [] { return table(Envelope("double", Complex<double>({1, 1}, {{1, 2}}))); },
     "TypeError"},
    {"short bitmap", [] { return table(Numbers<double>(std::vector<double>(9), {1})); },
     "Internal"},
    {"negative length", [] { return table(Envelope("string", TextData("", {}), {1})); },
     "Internal"},
};

TEST_F(OwnTable, NamesTheColumnThatFailsAndKeepsItsStatus) {
  for (const BadColumn& bad : kBadColumns) {
    SCOPED_TRACE(bad.what);
    const hxArrayPtr value = bad.make();
    const ::arrow::Status expected = to_arrow_table(value.get()).status();
    const ::arrow::Status status = own_to_arrow_table(bad.make()).status();
    EXPECT_FALSE(expected.ok());
    EXPECT_EQ(status.code(), expected.code());
    EXPECT_EQ(status.message(), "Column 'b' (index 1): " + expected.message());
    ASSERT_NE(detail(status), nullptr);
    EXPECT_STREQ(detail(status)->type_id(), bad.type_id);
    EXPECT_EQ(detail(status)->column_name(), "b");
    EXPECT_EQ(detail(status)->column_index(), 1);
  }
}

TEST_F(OwnTable, NamesTheColumnThatTheHostThrowsIn) {
  const auto status = own_to_arrow_table(table(WrittenEnvelope("array", "double", Struct({}),
                                                               Column<double>({1, 2}))))
                          .status();
  EXPECT_EQ(status.code(), ::arrow::StatusCode::Invalid);
  EXPECT_EQ(status.message(), "Column 'b' (index 1): Wrong field name.");
  ASSERT_NE(detail(status), nullptr);
  EXPECT_EQ(detail(status)->column_name(), "b");
  EXPECT_EQ(detail(status)->column_index(), 1);
}

TEST_F(OwnTable, NumbersTheColumnWhoseNameCannotBeRead) {
  const auto too_few = own_to_arrow_table(table(numbers(), Names({"a"}))).status();
  EXPECT_EQ(too_few.message(), "Column '' (index 1): Cell index is out of range.");
  ASSERT_NE(detail(too_few), nullptr);
  EXPECT_EQ(detail(too_few)->column_name(), "");
  EXPECT_EQ(detail(too_few)->column_index(), 1);
  const auto surrogate =
      own_to_arrow_table(table(numbers(), Cell({Char("a"), Char(u"\xD800")}))).status();
  ASSERT_NE(detail(surrogate), nullptr);
  EXPECT_EQ(detail(surrogate)->column_index(), 1);
}

TEST_F(OwnTable, RefusesWhatIsNoTableLikeToArrowTable) {
  hxArrayPtr (*const cases[])() = {
      [] { return hxArrayPtr(); },
      [] { return Column<double>({1, 2}); },
      [] { return TableOf(Empty(), Empty(), Empty()); },
      [] { return TableEnvelope(Char("a"), Empty()); },
      [] { return TableEnvelope(Cell({}), Cell({})); },
  };
  for (const auto make : cases) {
    const hxArrayPtr value = make();
    const ::arrow::Status expected = to_arrow_table(value.get()).status();
    EXPECT_FALSE(expected.ok());
    EXPECT_EQ(own_to_arrow_table(make()).status(), expected);
  }
}

TEST_F(OwnTable, PassesExceptionsOfTheTableItselfOn) {
  EXPECT_THROW(static_cast<void>(own_to_arrow_table(Struct({}))), std::invalid_argument);
}

TEST_F(OwnTable, LetsTheInterruptThrough) {
  host::memory::RequestInterrupt();
  EXPECT_THROW(static_cast<void>(own_to_arrow_table(good_table())),
               host::memory::InterruptException);
}

TEST_F(OwnTable, IsInterruptedBeforeEveryColumn) {
  int checks = 0;
  host::memory::SetInterruptCheck([&checks] {
    if (++checks == 2) throw host::memory::InterruptException();
  });
  EXPECT_THROW(static_cast<void>(own_to_arrow_table(good_table())),
               host::memory::InterruptException);
  EXPECT_EQ(checks, 2);
}

TEST_F(OwnTable, LetsTheLackOfMemoryThroughAndLeaksNothing) {
  const hxArrayPtr value = good_table();
  const FaultSites sites =
      FailEverywhere([&value] { return own_to_arrow_table(hxSharedCopy(value.get())).status(); });
  ExpectAtLeast(sites, SitesOfReading(value));
}

}  // namespace
}  // namespace numera::testing
