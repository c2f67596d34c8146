// Many threads read one input at the same time. Each must get the result that one thread alone
// gets.

#include <gtest/gtest.h>

#include <array>
#include <optional>
#include <string>

#include "numera/core/to_arrow.h"
#include "numera/core/to_arrow_table.h"
#include "numera/core/to_numera.h"
#include "numera/extras/encode/encode.h"
#include "numera/extras/inspect/inspect.h"
#include "numera/extras/intake/intake.h"
#include "numera/extras/own/own.h"
#include "numera/extras/parallel/parallel.h"
#include "numera/host/memory.h"
#include "numera/unicode/convert_utf16_to_utf8.h"
#include "tests/support/every_type.h"
#include "tests/support/host_builder.h"
#include "tests/support/host_matchers.h"
#include "tests/threads/on_threads.h"

namespace numera::testing {
namespace {

using host::memory::LiveArrays;
using io::arrow::core::to_arrow_table;
using io::arrow::core::to_numera;
using TablePtr = std::shared_ptr<::arrow::Table>;

/// The result of each thread.
template <class T>
using Made = std::array<T, kThreads>;

TablePtr copy_of(const TablePtr& table) { return table->Slice(0); }

/// Tables of every type, and slices of them, with null counts not yet computed.
std::vector<TablePtr> tables() {
  const TablePtr whole = table_of_every_type();
  return {whole, copy_of(whole), whole->Slice(1)};
}

/// A table in the form that `to_arrow_table` reads.
hxArrayPtr readable_table() {
  const hxArrayPtr written = to_numera(table_of_every_type()).ValueOrDie();
  return extras::make_readable(written.get()).ValueOrDie();
}

class SameInput : public ::testing::Test {
 protected:
  ~SameInput() override { EXPECT_EQ(LiveArrays(), before_) << "host arrays left"; }

 private:
  size_t before_ = LiveArrays();
};

TEST_F(SameInput, GoesToTheHostFromAllThreads) {
  for (const TablePtr& table : tables()) {
    Made<hxArrayPtr> made;
    on_threads([&](size_t i) { made[i] = to_numera(table).ValueOrDie(); });
    const hxArrayPtr expected = to_numera(table).ValueOrDie();
    for (const hxArrayPtr& one : made) EXPECT_TRUE(SameHostValue(one.get(), expected.get()));
  }
}

TEST_F(SameInput, GoesToTheHostFromThreadsThatSpreadItsColumns) {
  for (const TablePtr& table : tables()) {
    Made<hxArrayPtr> made;
    on_threads([&](size_t i) { made[i] = extras::parallel_to_numera(table, i + 1).ValueOrDie(); });
    const hxArrayPtr expected = to_numera(table).ValueOrDie();
    for (const hxArrayPtr& one : made) EXPECT_TRUE(SameHostValue(one.get(), expected.get()));
  }
}

TEST_F(SameInput, IsTakenInByAllThreads) {
  for (const TablePtr& table : tables()) {
    Made<TablePtr> made;
    on_threads([&](size_t i) { made[i] = extras::take_in(table).ValueOrDie().value; });
    for (const TablePtr& one : made) EXPECT_TRUE(columns_are_valid(*one));
    for (const TablePtr& one : made) {
      EXPECT_TRUE(
          SameHostValue(to_numera(one).ValueOrDie().get(), to_numera(made[0]).ValueOrDie().get()));
    }
  }
}

TEST_F(SameInput, GoesToArrowFromAllThreads) {
  const hxArrayPtr value = readable_table();
  Made<TablePtr> made;
  on_threads([&](size_t i) { made[i] = to_arrow_table(value.get()).ValueOrDie(); });
  const TablePtr expected = to_arrow_table(value.get()).ValueOrDie();
  const auto nans = ::arrow::EqualOptions::Defaults().nans_equal(true);
  for (const TablePtr& one : made) {
    ASSERT_TRUE(one->schema()->Equals(*expected->schema()));
    for (int i = 0; i < one->num_columns(); ++i) {
      EXPECT_TRUE(one->column(i)->Equals(*expected->column(i), nans)) << "column " << i;
    }
  }
}

TEST_F(SameInput, GoesToArrowAsOwnedSharesFromAllThreads) {
  const hxArrayPtr value = readable_table();
  Made<TablePtr> made;
  on_threads([&](size_t i) {
    made[i] = extras::own_to_arrow_table(hxSharedCopy(value.get())).ValueOrDie();
  });
  for (const TablePtr& one : made) EXPECT_TRUE(columns_are_valid(*one));
}

TEST_F(SameInput, IsEncodedByAllThreads) {
  const hxArrayPtr value = to_numera(table_of_every_type()).ValueOrDie();
  Made<hxArrayPtr> made;
  on_threads([&](size_t i) { made[i] = extras::make_readable(value.get()).ValueOrDie(); });
  const hxArrayPtr expected = extras::make_readable(value.get()).ValueOrDie();
  for (const hxArrayPtr& one : made) EXPECT_TRUE(SameHostValue(one.get(), expected.get()));
}

TEST_F(SameInput, GoesThroughTheGatewayFromAllThreads) {
  const hxArrayPtr texts = Strings({u"a", std::nullopt, u"Z\u00FCrich", u"\U0001F600", u""});
  const hxArrayPtr cells = Cell({Char("a"), Char(u"\u00FC"), Char("")});
  const hxArrayPtr matrix = CharMatrix({2, 2}, u"a\u00FCbc");
  for (const hxArray* value : {texts.get(), cells.get(), matrix.get()}) {
    const auto convert = [value](std::array<hxArrayPtr, 2>& outputs) {
      const hxArray* input = value;
      io::arrow::unicode::convertUTF16ToUTF8(2, outputs.data(), 1, &input);
    };
    Made<std::array<hxArrayPtr, 2>> made;
    on_threads([&](size_t i) { convert(made[i]); });
    std::array<hxArrayPtr, 2> expected;
    convert(expected);
    for (const auto& [bytes, offsets] : made) {
      EXPECT_TRUE(SameHostValue(bytes.get(), expected[0].get()));
      EXPECT_TRUE(SameHostValue(offsets.get(), expected[1].get()));
    }
  }
}

TEST_F(SameInput, IsPrintedAndComparedByAllThreads) {
  const hxArrayPtr value = readable_table();
  Made<std::string> printed;
  Made<std::optional<std::string>> differences;
  on_threads([&](size_t i) {
    printed[i] = extras::print(value.get());
    differences[i] = extras::first_difference(value.get(), value.get());
  });
  for (const std::string& one : printed) EXPECT_EQ(one, printed[0]);
  for (const auto& one : differences) EXPECT_EQ(one, std::nullopt);
}

}  // namespace
}  // namespace numera::testing
