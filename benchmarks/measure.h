#pragma once

/// \file
/// Runs one row: the product, its limit and a raw copy, in repetitions that are shuffled, so that
/// whatever else the machine does meets all of them alike.

#include <optional>
#include <string>
#include <vector>

#include "benchmarks/rows.h"

namespace numera::benchmarks {

/// Milliseconds of processor time, system calls and all threads included, or by the clock where the
/// row says so; one entry a repetition.
using Times = std::vector<double>;

struct Measurement {
  std::string name;
  std::int64_t elements;
  std::int64_t bytes;
  Times ours;
  Times limit;      ///< empty where there is none
  Times warm_copy;  ///< as many bytes copied between two blocks that are in use already
  Times freeing;    ///< of results; measured only where asked for
};

Measurement measure(const Row& row, bool with_freeing);

/// The lower middle one of those there are.
double median(Times times);
double minimum(const Times& times);

}  // namespace numera::benchmarks
