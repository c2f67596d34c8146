#pragma once

/// \file
/// Counts the heap allocations of the program and the bytes that it holds. Linking
/// `numera_allocation_meter` replaces the program's allocation functions. Do not combine it with a
/// sanitizer, which replaces them too.

#include <cstddef>

namespace numera::testing {

/// The heap use of one piece of work.
struct HeapUse {
  size_t allocations = 0;
  size_t peak_bytes = 0;  ///< the maximum held at any time, relative to the start
  size_t held_bytes = 0;  ///< held at the end, relative to the start
};

/// Starts counting. Measure one piece of work at a time, on one thread.
void StartMeter();
HeapUse StopMeter();

}  // namespace numera::testing
