#pragma once

#include <memory>

#include "numera/core/to_arrow.h"
#include "numera/core/to_numera.h"
#include "tests/support/faults.h"
#include "tests/support/results.h"

namespace numera::testing {

/// Fails every site of `to_numera`. Expects at least those that the result takes.
template <class ArrowValue>
void FailWriting(const std::shared_ptr<ArrowValue>& value) {
  using io::arrow::core::to_numera;
  ExpectAtLeast(FailEverywhere([&] { return to_numera(value).status(); }),
                SitesOfMaking(ValueOf(to_numera(value))));
}

/// Fails every site of `to_arrow`. Expects at least those that the encoded array takes.
inline void FailReading(const hxArrayPtr& encoded) {
  const auto convert = [&] { return io::arrow::core::to_arrow<::arrow::Array>(encoded.get()); };
  ExpectAtLeast(FailEverywhere([&] { return convert().status(); }), SitesOfReading(encoded));
}

}  // namespace numera::testing
