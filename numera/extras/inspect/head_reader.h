#pragma once

/// \file
/// How a literal opens: the class of its value and, where it is given, the size.

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "numera/extras/inspect/scanner.h"
#include "numera/extras/inspect/value.h"
#include "numera/host/array.h"

namespace numera::extras::inspect {

using Dims = std::vector<size_t>;

struct Head {
  Content content = Content::kNothing;
  hxClassID class_id = hxClassID::Unknown;
  bool complex = false;
  std::string object_class;  ///< of an object
  std::optional<Dims> dims;
};

/// Reads `complex double 3x1`, `object "Point"`, `cell 0x0`. Fails where this is no class that can
/// be read.
Head read_head(Scanner& scanner);

/// Product of the dimensions. Fails where it leaves 64 bits.
size_t checked_element_count(const Dims& dims, const Scanner& scanner);

}  // namespace numera::extras::inspect
