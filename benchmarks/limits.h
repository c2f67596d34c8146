#pragma once

/// \file
/// What several limits are made of: bytes moved once into memory of the host.

#include <arrow/array.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "numera/host/array.h"

namespace numera::benchmarks {

/// The values of an array of fixed-width values, in bytes.
template <class Array>
std::span<const std::uint8_t> value_bytes(const Array& array) {
  const auto width = sizeof(*array.raw_values());
  return {reinterpret_cast<const std::uint8_t*>(array.raw_values()),
          static_cast<size_t>(array.length()) * width};
}

/// A host column of the given class that is one plain copy of the bytes.
hxArrayPtr copied(std::span<const std::uint8_t> bytes, hxClassID class_id);

/// What a string array of these texts comes to, were all of their bytes ASCII: every byte widened
/// to a code unit, every offset to 64 bits.
std::vector<hxArrayPtr> widened(const ::arrow::StringArray& texts);

/// The way back: every code unit narrowed to a byte, with the offsets of texts of equal length.
std::vector<hxArrayPtr> narrowed(std::u16string_view units, size_t texts);

}  // namespace numera::benchmarks
