#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "numera/extras/encode/encode.h"
#include "tests/support/envelopes.h"

namespace numera::testing {

inline hxArrayPtr Written(std::string_view type, double length, hxArrayPtr data,
                          const std::vector<std::uint8_t>& valid = {}) {
  return WrittenEnvelope("array", type, WrittenValidity(length, valid), std::move(data));
}

inline hxArrayPtr Packed(hxArrayPtr values, hxArrayPtr offsets) {
  return Struct({{"Values", std::move(values)}, {"StartOffsets", std::move(offsets)}});
}

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
