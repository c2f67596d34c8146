// Every allocation by `operator new` fails in turn, in the library and in Arrow. Excluded are
// allocations in `noexcept` functions of Arrow, whose failure ends the process: making dictionary
// arrays, chunked arrays and copies of arrays.

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "numera/core/to_arrow.h"
#include "numera/core/to_numera.h"
#include "numera/extras/encode/encode.h"
#include "numera/extras/inspect/inspect.h"
#include "numera/extras/own/own.h"
#include "numera/host/memory.h"
#include "numera/unicode/convert_utf16_to_utf8.h"
#include "tests/faults/failing_heap.h"
#include "tests/support/every_type.h"
#include "tests/support/host_builder.h"

namespace numera::testing {
namespace {

using ::arrow::Array;
using io::arrow::core::to_arrow;
using io::arrow::core::to_numera;

// Fewest allocations that fail for all columns together, so that a test fails if it no longer
// injects failures or leaves columns out. In November 2026 there were 4091, 6749 and 4459. They
// depend on Arrow and on the standard library, too.
constexpr size_t kToArrow = 4000;
constexpr size_t kToArrowWithOwnership = 6500;
constexpr size_t kToText = 4000;

/// What a failed conversion must leave as it was.
struct Held {
  size_t blocks = LiveBlocks();
  size_t host_arrays = host::memory::LiveArrays();
  std::int64_t arrow_bytes = ::arrow::default_memory_pool()->bytes_allocated();

  friend bool operator==(const Held&, const Held&) = default;
};

std::ostream& operator<<(std::ostream& out, const Held& held) {
  return out << held.blocks << " blocks, " << held.host_arrays << " host arrays, "
             << held.arrow_bytes << " bytes of Arrow";
}

bool throws_bad_alloc(const std::function<void()>& work) {
  try {
    work();
    return false;
  } catch (const std::bad_alloc&) {
    return true;
  }
}

/// Runs `work` once, so that everything made on first use exists. Then runs it with its first
/// allocation failing, its second, and so on until none fails. Returns the number of failures.
size_t fail_heap(const std::function<void()>& work) {
  work();
  for (size_t site = 0;; ++site) {
    SCOPED_TRACE("allocation " + std::to_string(site) + " fails");
    const Held before;
    FailHeapAfter(site);
    const bool threw = throws_bad_alloc(work);
    const bool failed = EndHeapFailure();
    EXPECT_EQ(Held(), before) << "left behind";
    EXPECT_EQ(threw, failed) << "the failure was " << (failed ? "swallowed" : "not asked for");
    if (!failed || threw != failed) return site;
  }
}

bool holds_dictionary(const ::arrow::DataType& type) {
  if (type.id() == ::arrow::Type::DICTIONARY) return true;
  return std::ranges::any_of(type.fields(),
                             [](const auto& field) { return holds_dictionary(*field->type()); });
}

/// Runs `fail_heap` on the readable form of every type without a dictionary, plain and nested.
size_t fail_for_every_readable_value(const std::function<void(const hxArray*)>& work) {
  size_t sites = 0;
  for (const ColumnType& one : column_types()) {
    if (holds_dictionary(*one.type)) continue;
    std::vector<Chunks> columns = nested_columns(one);
    columns.push_back(plain_column(one));
    for (const Chunks& column : columns) {
      SCOPED_TRACE(column->type()->ToString());
      const hxArrayPtr written = to_numera(column).ValueOrDie();
      const hxArrayPtr readable = extras::make_readable(written.get()).ValueOrDie();
      sites += fail_heap([&] { work(readable.get()); });
    }
  }
  return sites;
}

TEST(HeapFaults, ToArrow) {
  EXPECT_GE(fail_for_every_readable_value([](const hxArray* value) {
              static_cast<void>(to_arrow<Array>(value).ValueOrDie());
            }),
            kToArrow);
}

TEST(HeapFaults, ToArrowWithOwnership) {
  EXPECT_GE(fail_for_every_readable_value([](const hxArray* value) {
              static_cast<void>(extras::own_to_arrow<Array>(hxSharedCopy(value)).ValueOrDie());
            }),
            kToArrowWithOwnership);
}

TEST(HeapFaults, ToText) {
  EXPECT_GE(fail_for_every_readable_value(
                [](const hxArray* value) { static_cast<void>(extras::print(value)); }),
            kToText);
}

TEST(HeapFaults, ThroughTheGateway) {
  const hxArrayPtr cells = Cell({Char("a"), Char(u"Z\u00FCrich")});
  const hxArrayPtr texts = Strings({u"a", std::nullopt, u"Z\u00FCrich"});
  for (const hxArray* value : {cells.get(), texts.get()}) {
    const auto convert = [value] {
      hxArrayPtr outputs[2];
      const hxArray* input = value;
      io::arrow::unicode::convertUTF16ToUTF8(2, outputs, 1, &input);
    };
    EXPECT_GE(fail_heap(convert), 1U);
  }
}

}  // namespace
}  // namespace numera::testing
