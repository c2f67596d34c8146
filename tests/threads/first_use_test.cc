// Objects that are created on first use, by many threads at once. Each test runs in a process of
// its own, in which nothing has been used yet.

#include <gtest/gtest.h>

#include <cstdlib>

#include "numera/core/to_numera.h"
#include "numera/extras/encode/encode.h"
#include "numera/extras/inspect/inspect.h"
#include "numera/extras/intake/intake.h"
#include "numera/extras/parallel/parallel.h"
#include "numera/unicode/convert_utf16_to_utf8.h"
#include "tests/support/arrow_values.h"
#include "tests/support/every_type.h"
#include "tests/support/host_builder.h"
#include "tests/threads/on_threads.h"

namespace numera::testing {
namespace {

using io::arrow::core::to_numera;

class FirstUse : public ::testing::Test {
 protected:
  FirstUse() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }

  /// Runs `work` on all threads, then exits: with status 1 if an expectation failed.
  template <class Work>
  [[noreturn]] static void race(const Work& work) {
    on_threads([&work](size_t) { work(); });
    std::exit(HasFailure() ? 1 : 0);
  }
};

TEST_F(FirstUse, OfTheCodecIsRaced) {
  const auto names =
      ::arrow::MakeArrayOfNull(::arrow::struct_({::arrow::field("\xC3\xBC", ::arrow::int8())}), 1)
          .ValueOrDie();
  EXPECT_EXIT(race([&names] { EXPECT_TRUE(to_numera(names).ok()); }), ::testing::ExitedWithCode(0),
              "");
}

TEST_F(FirstUse, OfAStringArrayIsRaced) {
  const auto texts = ArrowArray(::arrow::utf8(), R"(["a", null, "Zürich"])");
  EXPECT_EXIT(race([&texts] { EXPECT_TRUE(to_numera(texts).ok()); }), ::testing::ExitedWithCode(0),
              "");
}

TEST_F(FirstUse, OfTheGatewayIsRaced) {
  EXPECT_EXIT(race([] {
                const hxArrayPtr text = Strings({u"Z\u00FCrich"});
                const hxArray* input = text.get();
                hxArrayPtr outputs[2];
                io::arrow::unicode::convertUTF16ToUTF8(2, outputs, 1, &input);
              }),
              ::testing::ExitedWithCode(0), "");
}

TEST_F(FirstUse, OfEverythingElseIsRaced) {
  const auto table = table_of_every_type();
  EXPECT_EXIT(race([&table] {
                const auto taken = extras::take_in(table).ValueOrDie();
                const hxArrayPtr host = extras::parallel_to_numera(taken.value, 2).ValueOrDie();
                const hxArrayPtr readable = extras::make_readable(host.get()).ValueOrDie();
                EXPECT_FALSE(extras::print(readable.get()).empty());
              }),
              ::testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace numera::testing
