#pragma once

/// \file
/// How Python sees the elements of host values.

#include <nanobind/nanobind.h>

#include <cstddef>
#include <optional>
#include <string_view>

#include "numera/host/array.h"

namespace numera::python {

namespace nb = nanobind;

struct ElementForm {
  const char* format;  ///< of one element in the buffer protocol; lives forever
  nb::object (*read)(const void* elements, size_t index);
};

/// None where Python has no form for the elements: cells, fields, texts of string arrays, complex
/// integers and what is sparse.
std::optional<ElementForm> element_form(const hxArray* array);

/// Lone surrogates stay.
nb::object python_text(std::u16string_view text);

}  // namespace numera::python
