#pragma once

#include <memory>

#include "numera/core/to_numera.h"
#include "tests/support/results.h"

namespace numera::testing {

/// "Data" of the envelope that `to_numera` writes. Throws if the conversion fails.
template <class ArrowValue>
hxArrayPtr DataOf(const std::shared_ptr<ArrowValue>& value) {
  const hxArrayPtr envelope = ValueOf(io::arrow::core::to_numera(value));
  return hxSharedCopy(hxGetField(envelope.get(), 0, "Data"));
}

}  // namespace numera::testing
