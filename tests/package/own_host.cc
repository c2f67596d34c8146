// The installed libnumera_arrow on a host that this program brings: the recording host.

#include <arrow/json/from_string.h>
#include <arrow/type.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <new>
#include <vector>

#include "numera/core/to_arrow.h"
#include "numera/core/to_numera.h"
#include "tests/support/recording_host.h"

namespace core = numera::io::arrow::core;
namespace recording = numera::testing;

static int failures = 0;

static void expect(bool condition, const char* statement) {
  if (condition) return;
  std::cerr << "not so: " << statement << "\n";
  ++failures;
}

int main() {
  const auto heights =
      arrow::json::ArrayFromJSONString(arrow::float64(), "[1.5, null, 2.5]").ValueOrDie();

  recording::Reset();
  const hxArrayPtr encoded = core::to_numera(heights).ValueOrDie();
  const std::vector<recording::Creation> created = recording::Created();
  expect(std::ranges::count_if(created,
                               [](const recording::Creation& creation) {
                                 return creation.class_id == hxClassID::Double &&
                                        creation.dims == std::vector<size_t>{3, 1};
                               }) == 1,
         "the values are made once, at their size");
  expect(recording::Calls("hxThrowIfInterruptPending") == 0,
         "one array is converted without an interrupt check");

  recording::Reset();
  const auto back = core::to_arrow<arrow::Array>(encoded.get()).ValueOrDie();
  expect(back->Equals(heights), "the array comes back equal");
  expect(recording::Created().empty(), "nothing is made on the host on the way to Arrow");
  expect(recording::Calls("hxGetData const") > 0, "the values are read through the host");
  expect(recording::Calls("hxGetData") == 0, "nothing is opened for writing");

  recording::Reset();
  recording::FailCall(0);
  bool has_thrown = false;
  try {
    (void)core::to_numera(heights);
  } catch (const std::bad_alloc&) {
    has_thrown = true;
  }
  expect(has_thrown, "an exception of the host passes through the library");

  if (failures == 0) std::cout << "The library runs on a host that the program brings.\n";
  return failures == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
