#pragma once

/// \file
/// A host value made visible: printed as a tree, and compared with another one.
///
/// Both read the value through the host interface alone and change nothing: any number of threads
/// may look at one value at a time, as long as none writes it. Both work without recursion, so that
/// no depth of nesting exhausts the stack. Indexes count from 0.

#include <cstddef>
#include <optional>
#include <string>

#include "numera/export.h"
#include "numera/host/array.h"

namespace numera::extras {

/// How much of a value is printed. What a limit cuts off is marked with "...".
struct PrintOptions {
  /// Levels below the value itself. The elements of a struct array take a level of their own.
  size_t max_depth = 20;
  /// Elements listed of each array, on its line or below it. Fields are always listed.
  size_t max_elements = 20;
  /// Columns of a line, a code point taking one. Names and the first element are never left out.
  size_t max_width = 100;
  /// Lines in all.
  size_t max_lines = 1000;
};

/// The value as an indented tree; null gives "<null>". Lines end in a newline, but the last one.
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
/// - Every value opens with its class and its size: "string" for a string array, `object "NAME"`
///   for every other object, "class NUMBER" for a class that the interface gives no access to,
///   "complex " or "sparse " or both before the class of such numbers. The elements of a sparse
///   array are not listed.
/// - Elements are listed row after row and page after page; rows are set apart by ";" where there
///   are several rows and several columns. Numbers are the shortest that read back to the same
///   bits, but for NaN, whose bits are not shown.
/// - Texts are UTF-8 in quotes; `\"`, `\\`, `\n`, `\t` and, for other control characters and
///   unpaired surrogates, `\uD83D`. A cut one ends in `"...`. A char array of one row is one text,
///   any other a list of its rows.
/// - A field name that is no identifier stands in quotes, its bytes that are no UTF-8 as `\xFF`. A
///   struct array without elements lists its field names and no values.
///
/// Throws `std::bad_alloc`. Cost: grows with what is printed and with the number of fields, not
/// with the number of elements or the length of texts.
NUMERA_EXPORT std::string print(const hxArray* value, const PrintOptions& options = {});

/// The first difference between two values, or none where they are equal.
///
/// Equal values have the same class (complexity, sparseness and name of an object included), the
/// same size, the same field names in the same order, the same bits in every element (NaN equals
/// NaN of the same bits, -0 differs from 0), the same code units and the same missing texts; so do
/// the values in their slots, and the same slots are empty. Objects are compared like structs. A
/// value equals itself, and two null pointers are equal; apart from that, sparse arrays and classes
/// that the interface gives no access to count as different, since their elements cannot be read.
///
/// The difference is one line that opens with the path of the place, unless that is the value
/// itself: `.Data.Values(3): 1.5 is not 2.5`, `.Columns(2).Data{4}: <empty> is not cell 0x0`,
/// `.Type: "single" is not "double"`, `.Valid: size 3x1 is not 1x3`. An array with rows and columns
/// is indexed by both: `(1,0)`; one element alone takes no index. Values are compared in storage
/// order, each one wholly before the next.
///
/// Throws `std::bad_alloc`. Cost: linear in the size of the values up to the difference; blocks are
/// compared at the speed of memory, and those that both values share not at all.
NUMERA_EXPORT std::optional<std::string> first_difference(const hxArray* a, const hxArray* b);

}  // namespace numera::extras
