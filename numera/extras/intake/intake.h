#pragma once

/// \file
/// Prepares Arrow data from outside for `to_numera`.
///
/// `to_numera` trusts its input. It reads validity bits and booleans from the first bit of their
/// buffers, even if a slice has an offset. `take_in` checks the data completely and removes offsets
/// at every depth, in children and dictionaries too. On request it also casts types that
/// `to_numera` refuses. docs/intake.md has the rule of every Arrow type.
///
/// \code
///   ARROW_ASSIGN_OR_RAISE(auto taken, numera::extras::take_in(table, {.cast = true}));
///   for (const auto& cast : taken.casts) std::cerr << numera::extras::to_string(cast) << "\n";
///   return numera::io::arrow::core::to_numera(taken.value);
/// \endcode
///
/// Any number of threads may call `take_in` at the same time, even with the same data.

#include <arrow/array/array_base.h>
#include <arrow/chunked_array.h>
#include <arrow/result.h>
#include <arrow/table.h>
#include <arrow/type.h>

#include <memory>
#include <string>
#include <vector>

#include "numera/arrow_version.h"
#include "numera/export.h"

namespace numera::extras {

/// What `take_in` may change. By default, the type stays as it is.
struct IntakeOptions {
  /// Casts types that `to_numera` refuses, if there is a rule for them.
  bool cast = false;
  /// Casts views of text, bytes and lists to their plain types, even if `cast` is false. No value
  /// changes, only the memory layout.
  bool views = false;
};

/// One cast, at any depth.
struct IntakeCast {
  /// Where it is: the name of the table column (empty for an array or a chunked array), then
  /// ".name" for a field of a struct, "[]" for the elements of a list, "{key}" and "{item}" for the
  /// keys and items of a map, "<dictionary>" for the values of a dictionary, "<values>" for run-end
  /// encoded values and "<storage>" for the storage of an extension type.
  std::string path;
  std::shared_ptr<::arrow::DataType> from;  ///< the type before, with its original children
  std::shared_ptr<::arrow::DataType> to;    ///< the type after
};

/// One readable line: "trips[].fare: decimal128(9, 2) to double". The part "path: " is left out if
/// the path is empty. `from` and `to` must not be null.
NUMERA_EXPORT std::string to_string(const IntakeCast& cast);

/// The result of `take_in` and the casts that were made. `T` is `::arrow::Array`,
/// `::arrow::ChunkedArray` or `::arrow::Table`.
template <class T>
struct Intake {
  /// Never null. Shares buffers with the input and keeps them alive.
  std::shared_ptr<T> value;
  /// In field order, inner casts before outer ones. Each is listed once, whatever the number of
  /// chunks.
  std::vector<IntakeCast> casts;
};

/// The same value, fit for `to_numera`:
/// - it passes `ValidateFull`
/// - offsets are 0 at every depth, and list and map offsets start at 0
/// - bitmaps are no longer than their elements need, and children are cut to the elements in use
/// - null counts are right or unknown (-1)
/// - its type is unchanged, unless `options` allow casts
///
/// Buffers are shared with the input where possible. An array that is already fit keeps all its
/// buffers. Copies are made of:
/// - bitmaps and booleans that do not start at a byte boundary
/// - list and map offsets that do not start at 0
/// - text with invalid UTF-8 in a null slot; all null slots of the array become empty
/// - values that are cast
///
/// A null among the texts of a dictionary is removed, and the slots that refer to it become null. A
/// date64, a time of day or a decimal that full validation refuses becomes 0 if it is hidden: below
/// a null struct, list or map, or not referred to by any list.
///
/// A cast to text, bytes or lists gives 32-bit offsets. If one chunk has too many bytes or elements
/// for them, the whole column gets 64-bit offsets ("large").
///
/// Errors; each message begins with the path, unless the path is empty. For a column of a table the
/// path begins with "Column 'price' (index 1)":
/// - a null pointer, at any depth, in types too: Invalid. For the argument itself the text is
///   "Array: found a null pointer, expected a value." (or "Column: ...", "Table: ...")
/// - a type that `to_numera` refuses and that has no rule or may not be cast: TypeError
/// - nesting deeper than `kMaxNestingLevels`: Invalid
/// - memory of a device other than the CPU: Invalid
/// - a column whose length is not the number of rows of its table: Invalid
/// - whatever else `ValidateFull` finds: its status
/// - a map whose keys become null, or that after a cast has too many entries for 32-bit offsets:
///   Invalid
///
/// Cost: validation reads every element once. Peak memory is what is copied or cast, plus 8 bytes
/// per element of:
/// - a list view or a run-end encoded value
/// - a dictionary array that is cast, or whose dictionary has nulls
/// - a list that is searched for values hidden by nulls, because full validation failed
NUMERA_EXPORT ::arrow::Result<Intake<::arrow::Array>> take_in(
    const std::shared_ptr<::arrow::Array>& array, const IntakeOptions& options = {});

/// Takes in each chunk; all chunks get the same type. A list, struct or map column without chunks
/// gets an empty chunk: without it the host would not know the element types.
NUMERA_EXPORT ::arrow::Result<Intake<::arrow::ChunkedArray>> take_in(
    const std::shared_ptr<::arrow::ChunkedArray>& column, const IntakeOptions& options = {});

/// Takes in each column. Names, nullability and metadata stay. `hxThrowIfInterruptPending` is
/// called before every column; its exception passes through. If a column fails, the status carries
/// a `TableErrorStatusDetail` with its name and index.
NUMERA_EXPORT ::arrow::Result<Intake<::arrow::Table>> take_in(
    const std::shared_ptr<::arrow::Table>& table, const IntakeOptions& options = {});

}  // namespace numera::extras
