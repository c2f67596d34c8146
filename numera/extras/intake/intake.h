#pragma once

/// \file
/// Arrow data from outside made fit for `to_numera`.
///
/// `to_numera` trusts what it is given, and reads validity and truth values from the first bit of
/// their buffers, whatever the offset of a slice. `take_in` checks the data completely and removes
/// offsets at every depth, in children and dictionaries too; on request it also casts what
/// `to_numera` refuses. docs/intake.md has the rule of every Arrow type.
///
/// \code
///   ARROW_ASSIGN_OR_RAISE(auto taken, numera::extras::take_in(table, {.cast = true}));
///   for (const auto& cast : taken.casts) std::cerr << numera::extras::to_string(cast) << "\n";
///   return numera::io::arrow::core::to_numera(taken.value);
/// \endcode
///
/// Any number of threads may take in at a time, the same data too.

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
  /// Casts what `to_numera` refuses, as far as there is a rule for it.
  bool cast = false;
  /// Casts views, of text, bytes and lists, to their plain types even where `cast` is false.
  /// Nothing is lost by that: only the memory is laid out in another way.
  bool views = false;
};

/// One value, at whatever depth, that was cast.
struct IntakeCast {
  /// Where it is: a table's column by its name, and from there (or from the array itself, whose
  /// path is empty) ".name" for a field of a struct, "[]" for the elements of a list, "{key}" and
  /// "{item}" for those of a map, "<dictionary>" for a dictionary, "<values>" for run-end encoded
  /// values and "<storage>" for those of an extension type.
  std::string path;
  std::shared_ptr<::arrow::DataType> from;  ///< as it came in, its children too
  std::shared_ptr<::arrow::DataType> to;    ///< what it became
};

/// A line for a person: "trips[].fare: decimal128(9, 2) to double", and without "path: " where the
/// path is empty. `from` and `to` are not null.
NUMERA_EXPORT std::string to_string(const IntakeCast& cast);

/// What was taken in, and what had to be cast for it. `T` is `::arrow::Array`,
/// `::arrow::ChunkedArray` or `::arrow::Table`.
template <class T>
struct Intake {
  /// Never null. It shares buffers with the input, which it keeps alive.
  std::shared_ptr<T> value;
  /// In the order of fields, the inner value before the one around it; each once, whatever the
  /// number of chunks.
  std::vector<IntakeCast> casts;
};

/// The same value, fit for `to_numera`: valid (`ValidateFull`), offset 0 at every depth, no longer
/// bitmap than its elements need, list and map offsets that start at 0 and children cut to what
/// they use, null counts right or unknown (-1). Without `options.cast` its type is unchanged.
///
/// Buffers are shared with the input wherever they can be, and an array that is fit already keeps
/// all of them: bitmaps and truth values are copied where they do not start at a byte, offsets of
/// lists and maps where the first is not 0, text where a null slot holds no UTF-8 (it becomes
/// empty), and values where they are cast.
///
/// Nulls among the texts of a dictionary move to the slots that point at them. A date64, a time of
/// day or a decimal that full validation refuses becomes 0 where no slot shows it, since a null
/// struct, list or map stands around it.
///
/// A cast to text, bytes or lists gives 32-bit offsets, and 64-bit ones ("large") in the whole
/// column where one chunk has too many bytes or elements for them.
///
/// Errors, all of which begin with the path where it is not empty:
/// - null pointers, at any depth, in types too: Invalid, for the argument itself "Array: found a
/// null
///   pointer, expected a value." ("Column", "Table")
/// - a type that `to_numera` refuses and for which there is no rule, or no leave to cast: TypeError
/// - nesting deeper than `kMaxNestingLevels`: Invalid
/// - memory of another device than the CPU: Invalid
/// - whatever else `ValidateFull` finds: its status
/// - a map whose elements are too many for 32-bit offsets once cast, or whose keys are null then:
///   Invalid
///
/// Cost: validation reads every element once. Peak memory is what is copied or cast, and 8 bytes
/// for each element of a list view, a run-end encoded value or a dictionary that is taken apart or
/// holds nulls, and for each element of a list where validation finds a value that nulls may hide.
NUMERA_EXPORT ::arrow::Result<Intake<::arrow::Array>> take_in(
    const std::shared_ptr<::arrow::Array>& array, const IntakeOptions& options = {});

/// Chunk by chunk; all chunks get the same type. A list, struct or map column without chunks gets
/// an empty one: without it the host would not know the types of its elements.
NUMERA_EXPORT ::arrow::Result<Intake<::arrow::ChunkedArray>> take_in(
    const std::shared_ptr<::arrow::ChunkedArray>& column, const IntakeOptions& options = {});

/// Column by column; names, nullability and metadata stay. Before every column
/// `hxThrowIfInterruptPending` is called; its exception passes through. The status of a column that
/// fails carries a `TableErrorStatusDetail` with its name and index.
NUMERA_EXPORT ::arrow::Result<Intake<::arrow::Table>> take_in(
    const std::shared_ptr<::arrow::Table>& table, const IntakeOptions& options = {});

}  // namespace numera::extras
