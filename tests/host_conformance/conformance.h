#pragma once

/// \file
/// The contract of the host interface, claim by claim, as a GoogleTest library.
///
/// Link it with a host, an adapter and a main function of GoogleTest: the adapter is one function,
/// `host_under_test`, which says what the host offers beyond the interface. Each entry may be null:
/// claims that need it are then skipped and say so.

#include <cstddef>
#include <span>
#include <string>

#include "numera/host/array.h"

namespace numera::host_conformance {

struct HostUnderTest {
  /// Arrays that exist now. With it, every claim also says that nothing leaks.
  size_t (*live_arrays)() = nullptr;
  /// An object (class 18) of a class name, with empty slots.
  hxArrayPtr (*object_array)(std::string class_name, std::span<const size_t> dims,
                             std::span<const char* const> field_names) = nullptr;
  /// A char array of any shape, in column-major order.
  hxArrayPtr (*char_array)(std::span<const size_t> dims, const char16_t* text) = nullptr;
  /// An array that answers `hxIsSparse`.
  hxArrayPtr (*sparse_array)(std::span<const size_t> dims, hxClassID class_id) = nullptr;
  /// Makes an interrupt of the calling thread pending, and not pending.
  void (*request_interrupt)() = nullptr;
  void (*clear_interrupt)() = nullptr;
  /// Lets this many allocations of this thread succeed and the next one throw, once; and not.
  void (*fail_allocation_after)(size_t count) = nullptr;
  void (*clear_allocation_failure)() = nullptr;
};

/// Supplied by the adapter.
const HostUnderTest& host_under_test();

}  // namespace numera::host_conformance
