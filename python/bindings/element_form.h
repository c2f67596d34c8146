#pragma once

/// \file
/// The form of host elements in Python.

#include <nanobind/nanobind.h>

#include <cstddef>
#include <optional>
#include <string_view>

#include "numera/host/array.h"

namespace numera::python {

namespace nb = nanobind;

struct ElementForm {
  const char* format;  ///< format of one element in the buffer protocol; static memory
  nb::object (*read)(const void* elements, size_t index);
};

/// None if Python has no form for the elements: cells, structs, objects, string arrays, complex
/// integers and sparse arrays.
std::optional<ElementForm> element_form(const hxArray* array);

/// The text as a Python string. Keeps lone surrogates.
nb::object python_text(std::u16string_view text);

}  // namespace numera::python
