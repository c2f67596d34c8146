#pragma once

/// \file
/// The axes along which a row is varied: each alone, from the row that is measured first.

#include <cstdint>
#include <string>
#include <vector>

#include "benchmarks/arrow_data.h"

namespace numera::benchmarks {

struct Variant {
  std::string suffix;  ///< of the row's name; none for the row that is measured first
  Shape shape;
};

/// With `quick`, a hundredth.
std::int64_t base_length(std::int64_t length, bool quick);

/// Lengths from 1 to 10,000,000 but the base's own; with `quick`, to 1,000.
std::vector<std::int64_t> lengths_beside(std::int64_t base, bool quick);

/// The base first, then length, nulls, chunks and a slice.
std::vector<Variant> variants(std::int64_t length, bool quick);

}  // namespace numera::benchmarks
