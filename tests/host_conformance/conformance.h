#pragma once

/// \file
/// The contract of the host interface, claim by claim, as a GoogleTest library.
///
/// Link it with a host, an adapter and a main function of GoogleTest. The adapter is one function,
/// `host_under_test`. It tells what the host offers beyond the interface. Each entry may be null:
/// claims that need it are then skipped and say so.

#include <cstddef>
#include <span>
#include <string>

#include "numera/host/array.h"

namespace numera::host_conformance {

struct HostUnderTest {
  /// The number of arrays that exist now. If set, every claim also checks for leaks.
  size_t (*live_arrays)() = nullptr;
  /// An object (class 18) of the given class name, with empty slots.
  hxArrayPtr (*object_array)(std::string class_name, std::span<const size_t> dims,
                             std::span<const char* const> field_names) = nullptr;
  /// A char array of any shape, in column-major order.
  hxArrayPtr (*char_array)(std::span<const size_t> dims, const char16_t* text) = nullptr;
  /// An array for which `hxIsSparse` returns true.
  hxArrayPtr (*sparse_array)(std::span<const size_t> dims, hxClassID class_id) = nullptr;
  /// Sets and clears a pending interrupt of the calling thread.
  void (*request_interrupt)() = nullptr;
  void (*clear_interrupt)() = nullptr;
  /// Lets `count` allocations of this thread succeed and the next one throw, once; the second entry
  /// cancels that.
  void (*fail_allocation_after)(size_t count) = nullptr;
  void (*clear_allocation_failure)() = nullptr;
};

/// Supplied by the adapter.
const HostUnderTest& host_under_test();

}  // namespace numera::host_conformance
