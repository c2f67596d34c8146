#pragma once

/// \file
/// The elements of host values as Python objects.

#include <nanobind/nanobind.h>

#include "python/bindings/host_value.h"

namespace numera::python {

namespace nb = nanobind;

/// The value in a slot of `whole`; None if the slot is empty.
nb::object slot(const HostValue& whole, const hxArray* part);

/// The element at `position` in storage order; a negative position counts from the end. Raises
/// IndexError.
nb::object get_element(const HostValue& value, Py_ssize_t position);

/// All texts of a string array in storage order.
nb::list texts(const HostValue& value);

/// All code units of a char array. Keeps lone surrogates. `std::invalid_argument` for other
/// classes.
nb::object text(const HostValue& value);

}  // namespace numera::python
