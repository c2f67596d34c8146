#pragma once

#include <nanobind/nanobind.h>
#include <nanobind/stl/optional.h>
#include <nanobind/stl/string.h>

namespace numera::python {

namespace nb = nanobind;

/// \name Functions that each add a part to the module
/// @{
void bind_host_array(nb::module_& module);
void bind_builders(nb::module_& module);
void bind_to_host(nb::module_& module);
void bind_to_arrow(nb::module_& module);
void bind_make_readable(nb::module_& module);
void bind_file_source(nb::module_& module);
void bind_file_sink(nb::module_& module);
/// @}

}  // namespace numera::python
