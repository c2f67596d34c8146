#pragma once

#include <nanobind/nanobind.h>

namespace numera::python {

/// The slots of the buffer protocol, which give the elements as they lie in memory, column-major.
/// A view keeps its `HostArray` alive, and is read-only but for an array that a builder fills.
const PyType_Slot* buffer_slots();

}  // namespace numera::python
