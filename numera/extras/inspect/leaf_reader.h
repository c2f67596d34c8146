#pragma once

/// \file
/// The values that hold no other values: numbers, truth values, chars and texts.

#include <span>

#include "numera/extras/inspect/head_reader.h"
#include "numera/extras/inspect/scanner.h"
#include "numera/host/array.h"

namespace numera::extras::inspect {

/// Makes a char array of any shape; null where a host has none but rows.
using MakeChars = hxArrayPtr (*)(std::span<const size_t> dims, const char16_t* text);

/// Reads `"text"` as a char row.
hxArrayPtr read_char_row(Scanner& scanner);

/// Reads what follows the head of an array of numbers, chars or strings. Nothing is made before all
/// of its elements were read.
hxArrayPtr read_leaf(Scanner& scanner, const Head& head, MakeChars make_chars);

}  // namespace numera::extras::inspect
