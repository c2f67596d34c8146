#pragma once

/// \file
/// Runs one row: the product, its limit and a raw copy. The repetitions are shuffled, so that other
/// work on the machine affects all three alike.

#include <optional>
#include <string>
#include <vector>

#include "benchmarks/rows.h"

namespace numera::benchmarks {

/// One entry per repetition, in milliseconds. Processor time, including system calls and all
/// threads, or wall-clock time if the row says so.
using Times = std::vector<double>;

struct Measurement {
  std::string name;
  std::int64_t elements;
  std::int64_t bytes;
  Times ours;
  Times limit;      ///< empty if the row has no limit
  Times warm_copy;  ///< copy of as many bytes between two blocks already in use
  Times freeing;    ///< destruction of results; measured only if asked for
};

Measurement measure(const Row& row, bool with_freeing);

/// The median; of two middle values the lower one.
double median(Times times);
double minimum(const Times& times);

}  // namespace numera::benchmarks
