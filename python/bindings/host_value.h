#pragma once

/// \file
/// The content of a Python `HostArray`: shared ownership of a host value or of a part of one.

#include <cstddef>
#include <memory>
#include <utility>

#include "numera/host/array.h"

namespace numera::python {

/// Never null. A child that was read from a value keeps the whole value alive.
struct HostValue {
  std::shared_ptr<const hxArray> array;
  /// Whether the buffer protocol may write the elements. True while a builder fills a new array.
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

/// Element `index` of a struct array as a 1-by-1 struct. It shares the memory of the field values.
HostValue struct_element(const HostValue& value, size_t index);

}  // namespace numera::python
