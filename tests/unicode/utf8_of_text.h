#pragma once

#include <utility>

#include "numera/host/array.h"
#include "numera/unicode/convert_utf16_to_utf8.h"

namespace numera::testing {

struct Utf8 {
  hxArrayPtr bytes;
  hxArrayPtr offsets;
};

/// Both outputs of the conversion of a host value.
inline Utf8 Convert(const hxArrayPtr& text) {
  hxArrayPtr outputs[2];
  const hxArray* inputs[] = {text.get()};
  io::arrow::unicode::convertUTF16ToUTF8(2, outputs, 1, inputs);
  return {std::move(outputs[0]), std::move(outputs[1])};
}

}  // namespace numera::testing
