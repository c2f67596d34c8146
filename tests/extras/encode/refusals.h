#pragma once

#include <string>

#include "numera/extras/encode/encode.h"
#include "tests/support/envelopes.h"

namespace numera::testing {

/// The text of the status that refuses a value.
inline std::string refusal(const hxArray* value) {
  const auto encoded = extras::make_readable(value);
  return encoded.ok() ? "encoded" : encoded.status().ToString();
}

inline std::string refusal(const hxArrayPtr& value) { return refusal(value.get()); }

struct Refused {
  hxArrayPtr value;
  const char* text;
};

}  // namespace numera::testing
