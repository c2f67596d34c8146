#pragma once

/// \file
/// Counts the heap allocations of the program and the bytes it holds. A program that links
/// `numera_allocation_meter` has its allocation functions replaced; not for use with a sanitizer,
/// which replaces them itself.

#include <cstddef>

namespace numera::testing {

/// What one piece of work took from the heap.
struct HeapUse {
  size_t allocations = 0;
  size_t peak_bytes = 0;  ///< the most held at a time, beyond what was held at the start
  size_t held_bytes = 0;  ///< what is held at the end, beyond the same
};

/// Begins to count. One piece of work is measured at a time, on one thread.
void StartMeter();
HeapUse StopMeter();

}  // namespace numera::testing
