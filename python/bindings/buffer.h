#pragma once

#include <nanobind/nanobind.h>

namespace numera::python {

/// The slots of the buffer protocol. A view shows the elements as they are in memory, column-major.
/// It keeps its `HostArray` alive. It is read-only unless a builder is filling the array.
const PyType_Slot* buffer_slots();

}  // namespace numera::python
