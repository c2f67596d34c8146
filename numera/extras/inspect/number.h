#pragma once

/// \file
/// The texts of numbers and truth values. The arrays must hold numbers (`Content::kNumbers`), and
/// the element must exist.

#include <cstddef>
#include <string>

#include "numera/host/array.h"

namespace numera::extras::inspect {

/// Bytes per element. The two parts of a complex element are adjacent.
size_t number_size(const hxArray* array);

/// The shortest text that reads back to the same value: "-0", "2.5", "NaN", "1+2i", "true".
std::string number_text(const hxArray* array, size_t element);

/// The bits in hexadecimal: "3FF8000000000000". A complex element gives the bits of both parts.
std::string bits_text(const hxArray* array, size_t element);

}  // namespace numera::extras::inspect
