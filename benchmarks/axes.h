#pragma once

/// \file
/// The variants of a row. Each changes one property of the base row.

#include <cstdint>
#include <string>
#include <vector>

#include "benchmarks/arrow_data.h"

namespace numera::benchmarks {

struct Variant {
  std::string suffix;  ///< suffix of the row's name; empty for the base row
  Shape shape;
};

/// The length; with `quick`, a hundredth of it.
std::int64_t base_length(std::int64_t length, bool quick);

/// Lengths from 1 to 10,000,000 without `base`; with `quick`, up to 1,000.
std::vector<std::int64_t> lengths_beside(std::int64_t base, bool quick);

/// The base row first, then variants of length, nulls, chunks and slice.
std::vector<Variant> variants(std::int64_t length, bool quick);

}  // namespace numera::benchmarks
