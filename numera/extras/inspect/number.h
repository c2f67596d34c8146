#pragma once

/// \file
/// The texts of numbers and truth values. The arrays hold numbers (`Content::kNumbers`), and the
/// element exists.

#include <cstddef>
#include <string>

#include "numera/host/array.h"

namespace numera::extras::inspect {

/// Bytes from one element to the next. The parts of a complex element lie side by side.
size_t number_size(const hxArray* array);

/// The shortest text that reads back to the same value: "-0", "2.5", "NaN", "1+2i", "true".
std::string number_text(const hxArray* array, size_t element);

/// The bits in hexadecimal, "3FF8000000000000"; a complex element gives those of both parts.
std::string bits_text(const hxArray* array, size_t element);

}  // namespace numera::extras::inspect
