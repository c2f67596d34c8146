#pragma once

/// \file
/// A value on one line: class, size and its first elements, unless these are values themselves.

#include <cstddef>
#include <string>

#include "numera/host/array.h"

namespace numera::extras::inspect {

/// `double 3x1 [1 2.5 NaN]`, `cell 2x1`; null gives `null_text`. Lists at most `max_elements`
/// elements, and no more than fit into `max_columns`. A text, or the first element of a list,
/// always gets at least twelve columns.
std::string one_line(const hxArray* array, const char* null_text, size_t max_elements,
                     size_t max_columns);

}  // namespace numera::extras::inspect
