#pragma once

/// \file
/// What a Python `HostArray` holds: a share in a host value, or in a part of one.

#include <cstddef>
#include <memory>
#include <utility>

#include "numera/host/array.h"

namespace numera::python {

/// Never null. Children are parts of the value that they were read from, and keep all of it alive.
struct HostValue {
  std::shared_ptr<const hxArray> array;
  /// Elements may be written through the buffer protocol: while a builder fills a new array.
  bool writable = false;

  const hxArray* get() const { return array.get(); }
};

inline HostValue adopt(hxArrayPtr array) {
  return {std::shared_ptr<const hxArray>(std::move(array))};
}

inline HostValue part_of(const HostValue& whole, const hxArray* part) {
  return {std::shared_ptr<const hxArray>(whole.array, part)};
}

/// A struct, or an object that is no string array.
bool has_fields(const hxArray* array);

/// Element `index` of a struct array as a 1-by-1 struct that shares the memory of all that is in
/// it.
HostValue struct_element(const HostValue& value, size_t index);

}  // namespace numera::python
