#pragma once

/// \file
/// Host values as text, both ways.
///
///     const hxArrayPtr value = parse(R"(
///       struct(ArrowType="array", Type="double",
///              Valid=struct(ArrowType="buffer", Values=uint8 0x1 [], Length=double [3]),
///              Data=double [1; 2.5; NaN])
///     )");
///
/// A literal opens with a class and a size, as `print` shows them, and the content follows:
///
/// - numbers, truth values: `double 3x1 [1 2.5 NaN]`, `logical [true; false]`,
///   `complex single [1+2i 0-1i]`
/// - char row: `"text"`
/// - any other char array: `char ["two" "row"]`, `char 2x0 ""`
/// - string array: `string 3x1 ["a" <missing> ""]`
/// - cell: `cell 1x2 {"a", double [1]}`, `cell {"a", "b"; "c", "d"}`
/// - struct: `struct(Name="Ada", "two words"=<empty>)`
/// - object: `object "Point"(X=double [1])`
/// - struct array: `struct 2x1 {(Name="Ada"), (Name="Jo")}`, without elements `struct 0x1(Name)`
/// - empty slot: `<empty>`
///
/// Without a size, the content gives it: its rows, set apart by ";", and their columns; nothing is
/// 0x0, and a struct in parentheses 1x1. Elements are listed row after row and page after page, and
/// with a size ";" may be left out. Texts are UTF-8 and escaped as `print` does. The content of
/// numbers, chars and strings may also stand in parentheses: `double([1 2.5 NaN])`. White space and
/// line ends are free between brackets.
///
/// What `print` writes is a literal too, as long as nothing of it is cut. One-line literals may
/// stand in its lines.
///
/// Any number of threads may write and read literals at a time.

#include <span>
#include <string>
#include <string_view>

#include "numera/export.h"
#include "numera/host/array.h"
#include "numera/host/memory.h"

namespace numera::extras {

/// The value as a literal on one line; null gives `<null>`.
///
/// `parse` gives a value back that `first_difference` finds equal, but for the bits of a NaN, which
/// are not shown, and for the values of a second field of one name. Throws `std::invalid_argument`
/// for a value that holds a sparse array or a class that the interface gives no access to, and
/// `std::bad_alloc`. Cost: linear in the size of the value.
NUMERA_EXPORT std::string literal(const hxArray* value);

/// What the host interface does not make, and each host in its own way. Either may be null: then
/// `parse` refuses what needs it.
struct LiteralMakers {
  /// An object with empty slots. What it throws passes through, as for the other.
  hxArrayPtr (*object)(std::string class_name, std::span<const size_t> dims,
                       std::span<const char* const> field_names);
  /// A char array of any shape from as many code units, column-major, which it copies.
  hxArrayPtr (*chars)(std::span<const size_t> dims, const char16_t* text);
};

/// The value of a literal or of a printed tree, owned by the caller; null for `<null>`.
///
/// Throws `std::invalid_argument` that says where the text is no literal, what stands there and
/// what was expected: `line 2, column 9: found "1.5", expected a number of class int8.` Columns are
/// code points from 1. Throws `std::bad_alloc`. Any text may be given: nesting is limited by memory
/// alone, and no array is made before the text has given all of its elements. NaN is the quiet NaN
/// without a payload. Cost: linear in the length of the text.
NUMERA_EXPORT hxArrayPtr parse(std::string_view text, const LiteralMakers& makers);

/// The same on the in-memory host, which the program then has to be linked with.
inline hxArrayPtr parse(std::string_view text) {
  return parse(text, {host::memory::CreateObjectArray, host::memory::CreateCharArray});
}

}  // namespace numera::extras
