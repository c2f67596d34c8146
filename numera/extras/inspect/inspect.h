#pragma once

/// \file
/// Prints a host value as a tree, and compares two host values.
///
/// Both functions only read, through the host interface alone. Any number of threads may read one
/// value at the same time, as long as none writes it. Neither function recurses, so deep nesting
/// cannot exhaust the stack. Indexes count from 0.

#include <cstddef>
#include <optional>
#include <string>

#include "numera/export.h"
#include "numera/host/array.h"

namespace numera::extras {

/// How much of a value is printed. "..." marks what a limit cuts off.
struct PrintOptions {
  /// Levels below the value itself. The elements of a struct array count as a level.
  size_t max_depth = 20;
  /// Elements listed per array, on its line or below it. Fields are always listed.
  size_t max_elements = 20;
  /// Columns per line. A code point takes one. Names and the first element are never left out.
  size_t max_width = 100;
  /// Lines in total.
  size_t max_lines = 1000;
};

/// The value as an indented tree; null gives "<null>". Every line but the last ends in a newline.
///
///     struct 1x1
///       ArrowType: char 1x5 "array"
///       Type: char 1x6 "string"
///       Valid: <empty>
///       Data: string 3x1 ["a" <missing> "b"]
///       Columns: struct 2x1
///         (0):
///           Values: double 2x3 [1 2.5 NaN; -0 1e+20 Inf]
///         (1):
///           Values: int8 100x1 [0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 ... 80 more]
///       Cell: cell 1x2
///         {0}: logical 1x2 [true false]
///         {1}: complex single 1x1 [1+2i]
///
/// - Every value starts with its class and size. The class is "string" for a string array and
///   `object "NAME"` for every other object. It is "class NUMBER" for a class that the interface
///   gives no access to. "sparse ", "complex " or both precede the class of sparse or complex
///   numbers. The elements of a sparse array are not listed.
/// - Elements are listed row by row and page by page. ";" separates rows if there are several rows
///   and several columns. A number is the shortest text that reads back to the same bits, except
///   for NaN, whose bits are not shown.
/// - Texts are UTF-8 in quotes. Escapes are `\"`, `\\`, `\n`, `\t` and, for other control
///   characters and unpaired surrogates, `\uD83D`. A text that is cut ends in `"...`. A char array
///   of one row is one text; any other is a list of its rows.
/// - A field name that is not an identifier is quoted. If it is not UTF-8, its bytes beyond ASCII
///   appear as `\xFF`. A struct array without elements lists its field names and no values.
///
/// Throws `std::bad_alloc`. Cost: grows with the printed text and the number of fields, not with
/// the number of elements or the length of texts.
NUMERA_EXPORT std::string print(const hxArray* value, const PrintOptions& options = {});

/// The first difference between two values, or none if they are equal.
///
/// Equal values have:
/// - the same class, including complexity, sparseness and the class name of an object
/// - the same size, and the same field names in the same order
/// - the same bits in every element: NaN equals NaN of the same bits, -0 differs from 0
/// - the same code units and the same missing texts
/// - the same empty slots, and equal values in all other slots
///
/// Objects are compared like structs. A value equals itself, and two null pointers are equal. Apart
/// from that, sparse arrays and classes that the interface gives no access to count as different,
/// because their elements cannot be read.
///
/// The result is one line. It starts with the path of the part that differs, unless that is the
/// value itself: `.Data.Values(3): 1.5 is not 2.5`, `.Columns(2).Data{4}: <empty> is not cell 0x0`,
/// `.Type: "single" is not "double"`, `.Valid: size 3x1 is not 1x3`. An array with rows and columns
/// is indexed by both: `(1,0)`. An index in parentheses is left out if the array has one element.
/// Values are compared in storage order, each one completely before the next.
///
/// Throws `std::bad_alloc`. Cost: linear in the size of the values up to the difference. Blocks are
/// compared at memory speed; blocks that both values share are not compared.
NUMERA_EXPORT std::optional<std::string> first_difference(const hxArray* a, const hxArray* b);

}  // namespace numera::extras
