#pragma once

#include <nanobind/nanobind.h>

#include "numera/host/array.h"

namespace numera::python {

/// The format of the elements in the language of Python's `struct` module and NumPy's "Zd", "Zf";
/// null where Python has no form for them or there is no block of elements.
const char* element_format(const hxArray* array);

/// The slots of the buffer protocol, which give the elements as they lie in memory, column-major.
/// A view keeps its `HostArray` alive, and is read-only but for an array that a builder fills.
const PyType_Slot* buffer_slots();

}  // namespace numera::python
