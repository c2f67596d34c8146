#pragma once

/// \file
/// Host values taken apart: trees in which every part can be damaged before they are built again.

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "numera/host/array.h"
#include "tests/gauntlet/memory.h"

namespace numera::gauntlet::reading {

using Dims = std::vector<size_t>;

struct Draft;
/// Null means an empty slot.
using DraftPtr = std::unique_ptr<Draft>;

struct Draft {
  hxClassID class_id = hxClassID::Cell;
  Dims dims = {1, 1};
  bool complex = false;
  bool sparse = false;
  Bytes bytes;                      ///< of numbers; padded with zeros
  std::u16string text;              ///< of a char array; one unit per element
  std::string object_name;          ///< of an object; "string" means a string array
  std::vector<std::string> fields;  ///< of a struct or object
  std::vector<DraftPtr> slots;      ///< of a cell array, or of a struct, element by element

  size_t count() const;
  bool is_numeric() const;
  bool is_struct() const;  ///< true for an object too, unless it is a string array
};

/// The draft of a value that is neither complex nor sparse.
DraftPtr draft_of(const hxArray* value);

hxArrayPtr build(const Draft* draft);

}  // namespace numera::gauntlet::reading
